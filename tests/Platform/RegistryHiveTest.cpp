#include <gtest/gtest.h>

#include <vector>

#include "Platform/RegistryHive.h"

namespace {

using platform::RegistryHive;

struct Rejected {
    int number;
    std::string line;
};

RegistryHive ParseCollecting(const std::string& text, std::vector<Rejected>& rejected) {
    return RegistryHive::Parse(text, [&](int number, const std::string& line) {
        rejected.push_back({number, line});
    });
}

TEST(RegistryHiveTest, SkipsEveryMalformedLineAndKeepsTheRest) {
    const std::string text =
        "Windows Registry Editor Version 5.00\r\n"
        "\"Orphan\"=\"before any key\"\n"  // 2
        "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
        "\"Good\"=\"1\"\n"
        "\"Unterminated=\"x\"\n"                  // 5
        "\"BadEscape\"=\"a\\qb\"\n"               // 6
        "\"Dword\"=dword:zz\n"                    // 7
        "no equals sign\n"                        // 8
        "[HKEY_LOCAL_MACHINE\\Missing bracket\n"  // 9
        "; a comment\n"
        "\"Trailing\"=\"x\" junk\n"  // 11
        "\"Last\"=\"2\"";
    std::vector<Rejected> rejected;
    RegistryHive hive = ParseCollecting(text, rejected);

    std::vector<int> numbers;
    for (const Rejected& r : rejected) numbers.push_back(r.number);
    EXPECT_EQ(numbers, (std::vector<int>{2, 5, 6, 7, 8, 9, 11}));

    auto* key = hive.FindKey(L"hkey_local_machine\\software\\tavix");
    ASSERT_NE(key, nullptr);
    ASSERT_EQ(key->values.size(), 2u);
    EXPECT_EQ(key->values[0].text, L"1");
    EXPECT_EQ(key->values[1].text, L"2");
}

TEST(RegistryHiveTest, SerializeRoundTripsEveryValueKind) {
    const std::string text =
        "Windows Registry Editor Version 5.00\n"
        "\n"
        "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\OLT1]\n"
        "\"Dll\"=\"olt1.dll\"\n"
        "\"Index\"=dword:00000001\n"
        "@=\"default\"\n"
        "\n"
        "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
        "\"Path\"=\"C:\\\\data \\\"x\\\"\\nnext\"\n";
    std::vector<Rejected> rejected;
    RegistryHive hive = ParseCollecting(text, rejected);
    EXPECT_TRUE(rejected.empty());
    EXPECT_EQ(hive.Serialize(), text);
    EXPECT_EQ(hive.FindKey(L"HKEY_LOCAL_MACHINE\\Software\\Tavix")->values[0].text,
              L"C:\\data \"x\"\nnext");
}

TEST(RegistryHiveTest, RepeatedKeysAndValuesMerge) {
    std::vector<Rejected> rejected;
    RegistryHive hive = ParseCollecting(
        "[HKEY_LOCAL_MACHINE\\A]\n\"v\"=\"1\"\n[HKEY_LOCAL_MACHINE\\a]\n\"V\"=\"2\"\n", rejected);
    auto* key = hive.FindKey(L"HKEY_LOCAL_MACHINE\\A");
    ASSERT_NE(key, nullptr);
    ASSERT_EQ(key->values.size(), 1u);
    EXPECT_EQ(key->values[0].text, L"2");
    EXPECT_TRUE(hive.KeyExists(L"HKEY_LOCAL_MACHINE"));
    EXPECT_FALSE(hive.KeyExists(L"HKEY_LOCAL_MACHINE\\A\\B"));
    hive.DeleteKey(L"HKEY_LOCAL_MACHINE");
    EXPECT_FALSE(hive.KeyExists(L"HKEY_LOCAL_MACHINE\\A"));
}

}  // namespace
