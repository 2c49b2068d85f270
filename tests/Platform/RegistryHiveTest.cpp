#include <gtest/gtest.h>

#include <vector>

#include "Platform/RegistryHive.h"

namespace {

using platform::RegistryHive;

const std::string kVersion = "Windows Registry Editor Version 5.00\n";
const std::string kKey = "[HKEY_LOCAL_MACHINE\\K]\n";

RegistryHive Parse(const std::string& text, std::vector<int>& rejected) {
    return RegistryHive::Parse(text,
                               [&](int number, const std::string&) { rejected.push_back(number); });
}

TEST(RegistryHiveTest, SerializeRoundTripsEveryValueKind) {
    const std::string text = kVersion +
                             "\n[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\OLT1]\n"
                             "\"Dll\"=\"olt1.dll\"\n\"Index\"=dword:00000001\n@=\"default\"\n"
                             "\n[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
                             "\"Path\"=\"C:\\\\data \\\"x\\\"\\nnext\"\n";
    std::vector<int> rejected;
    RegistryHive hive = Parse(text, rejected);
    EXPECT_TRUE(rejected.empty());
    EXPECT_EQ(hive.Serialize(), text);
    EXPECT_EQ(hive.FindKey(L"HKEY_LOCAL_MACHINE\\Software\\Tavix")->values[0].text,
              L"C:\\data \"x\"\nnext");
}

struct ValueLine {
    const char* line;
    DWORD type;  // 0: rejected
    const wchar_t* text;
    DWORD number;
};

// A rejected line leaves the key without a value and is written back verbatim.
TEST(RegistryHiveTest, ValueLinesParseOrAreKeptVerbatim) {
    const ValueLine cases[] = {
        {"\"a\"=\"x\\\\y\"", 1, L"x\\y", 0},
        {"@=\"d\"", 1, L"d", 0},
        {"\"a\"=dword:0a9AfF00", 4, L"", 0x0a9aff00},
        {"\"a\"=dword:09", 4, L"", 9},
        {"\"a\"=dword:123456789", 0, L"", 0},
        {"\"a\"=dword:", 0, L"", 0},
        {"\"a\"=dword:0g", 0, L"", 0},
        {"\"a\"=hex:01,02", 0, L"", 0},
        {"\"a\"=\"x\\qy\"", 0, L"", 0},
        {"\"a\"=\"x\\", 0, L"", 0},
        {"\"a\"=\"x", 0, L"", 0},
        {"\"a\"=\"x\" junk", 0, L"", 0},
        {"\"a\"", 0, L"", 0},
        {"\"a\"x\"y\"", 0, L"", 0},
        {"\"a=\"x\"", 0, L"", 0},
        {"\"a\"=\"\xff\"", 0, L"", 0},
        {"\"a\"=\"\xc3\xa9\"", 1, L"\u00e9", 0},
    };
    for (const ValueLine& c : cases) {
        SCOPED_TRACE(c.line);
        std::vector<int> rejected;
        RegistryHive hive = Parse(kKey + c.line + "\r\n", rejected);
        const auto& values = hive.FindKey(L"HKEY_LOCAL_MACHINE\\K")->values;
        EXPECT_EQ(rejected, c.type == 0 ? std::vector<int>{2} : std::vector<int>{});
        ASSERT_EQ(values.size(), c.type == 0 ? 0u : 1u);
        if (c.type == 0) {
            EXPECT_EQ(hive.Serialize(), kVersion + "\n" + kKey + c.line + "\r\n");
            continue;
        }
        EXPECT_EQ(values[0].type, c.type);
        EXPECT_EQ(values[0].text, c.text);
        EXPECT_EQ(values[0].number, c.number);
        EXPECT_EQ(values[0].name, c.line[0] == '@' ? L"" : L"a");
    }
}

// Values under a header that does not parse belong to no key: they neither
// merge into the key above nor vanish from the file.
TEST(RegistryHiveTest, RejectedHeadersKeepTheirLinesApart) {
    const std::string text = kVersion + "\"Orphan\"=\"1\"\n" + kKey + "\"v\"=\"1\"\n; note\n" +
                             "[HKEY_LOCAL_MACHINE\\K] \n\"v\"=\"2\"\n\n" +
                             "[-HKEY_LOCAL_MACHINE\\K]\n\"v\"=\"3\"\n[]\n" +
                             "[HKEY_LOCAL_MACHINE\\L\n\"w\"=\"4\"\n" +
                             "[HKEY_LOCAL_MACHINE\\k]\n\"x\"=\"6\"\n\"X\"=\"7\"\n";
    std::vector<int> rejected;
    RegistryHive hive = Parse(text, rejected);
    EXPECT_EQ(rejected, (std::vector<int>{2, 6, 7, 9, 10, 11, 12, 13}));
    const auto& values = hive.FindKey(L"HKEY_LOCAL_MACHINE\\K")->values;
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0].text, L"1");
    EXPECT_EQ(values[1].text, L"7");
    EXPECT_EQ(hive.FindKey(L"HKEY_LOCAL_MACHINE\\L"), nullptr);
    EXPECT_EQ(hive.Serialize(), kVersion + "\n\"Orphan\"=\"1\"\n\n" + kKey +
                                    "\"v\"=\"1\"\n\"X\"=\"7\"\n" +
                                    "\n[HKEY_LOCAL_MACHINE\\K] \n\"v\"=\"2\"\n" +
                                    "\n[-HKEY_LOCAL_MACHINE\\K]\n\"v\"=\"3\"\n" + "\n[]\n" +
                                    "\n[HKEY_LOCAL_MACHINE\\L\n\"w\"=\"4\"\n");
}

TEST(RegistryHiveTest, KeysExistWithTheirChildrenButNotTheirNamesakes) {
    std::vector<int> rejected;
    RegistryHive hive = Parse("[HKEY_LOCAL_MACHINE\\A\\B]\n[HKEY_LOCAL_MACHINE\\AB]\n", rejected);
    EXPECT_TRUE(hive.KeyExists(L"hkey_local_machine\\a"));
    EXPECT_FALSE(hive.KeyExists(L"HKEY_LOCAL_MACHINE\\A\\B\\C"));
    EXPECT_FALSE(hive.KeyExists(L"HKEY_LOCAL_MACHINE\\A\\"));
    EXPECT_EQ(hive.FindKey(L"HKEY_LOCAL_MACHINE\\A"), nullptr);
    EXPECT_EQ(&hive.AddKey(L"hkey_local_machine\\ab"), hive.FindKey(L"HKEY_LOCAL_MACHINE\\AB"));
    hive.DeleteKey(L"HKEY_LOCAL_MACHINE\\A");
    EXPECT_FALSE(hive.KeyExists(L"HKEY_LOCAL_MACHINE\\A\\B"));
    EXPECT_TRUE(hive.KeyExists(L"HKEY_LOCAL_MACHINE\\AB"));
    EXPECT_EQ(hive.Serialize(), kVersion + "\n[HKEY_LOCAL_MACHINE\\AB]\n");
}

}  // namespace
