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

// A value line is written back in canonical form; one that does not parse
// leaves the key without a value and is written back verbatim, line end and all.
TEST(RegistryHiveTest, ValueLinesAreRewrittenOrKeptVerbatim) {
    const struct {
        const char* line;
        const char* written;  // null: rejected
    } cases[] = {
        {"\"a\"=\"C:\\\\x \\\"y\\\"\\nz\"", "\"a\"=\"C:\\\\x \\\"y\\\"\\nz\""},
        {"@=\"d\"", "@=\"d\""},
        {"\"a\"=dword:0a9AfF00", "\"a\"=dword:0a9aff00"},
        {"\"a\"=dword:9", "\"a\"=dword:00000009"},
        {"\"a\"=\"\xc3\xa9\"", "\"a\"=\"\xc3\xa9\""},
        {"\"a\"=dword:123456789", nullptr},
        {"\"a\"=dword:", nullptr},
        {"\"a\"=dword:0g", nullptr},
        {"\"a\"=hex:01,02", nullptr},
        {"\"a\"=\"x\\qy\"", nullptr},
        {"\"a\"=\"x\\", nullptr},
        {"\"a\"=\"x", nullptr},
        {"\"a\"=\"x\" junk", nullptr},
        {"\"a\"", nullptr},
        {"\"a\"x\"y\"", nullptr},
        {"\"a=\"x\"", nullptr},
        {"\"a\"=\"\xff\"", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        std::vector<int> rejected;
        const RegistryHive hive = Parse(kKey + c.line + "\r\n", rejected);
        EXPECT_EQ(rejected, c.written ? std::vector<int>{} : std::vector<int>{2});
        EXPECT_EQ(
            hive.Serialize(),
            kVersion + "\n" + kKey + (c.written ? c.written : c.line + std::string("\r")) + "\n");
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
    EXPECT_EQ(hive.FindKey(L"HKEY_LOCAL_MACHINE\\K")->values[1].text, L"7");
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
    EXPECT_EQ(hive.Serialize(), kVersion + "\n[HKEY_LOCAL_MACHINE\\AB]\n");
}

}  // namespace
