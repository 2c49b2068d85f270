#include <gtest/gtest.h>

#include <cstring>

#include "Platform/Registry.h"
#include "Support/ScratchDirectory.h"

namespace {

class RegistryTest : public testing::Test {
protected:
    void SetUp() override {
        platform::LoadHiveFromText("[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n\"ID_DLL\"=\"OTDR-7\"\n",
                                   hive);
    }
    void TearDown() override { RegCloseKey(key); }
    LONG Open(const wchar_t* path = L"Software\\Tavix") {
        RegCloseKey(key);
        key = nullptr;
        return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_ALL_ACCESS, &key);
    }
    LONG Set(const wchar_t* name, const std::wstring& text) {
        return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                              static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)));
    }
    ScratchDirectory dir;
    std::string hive = dir.Path("registry.reg");
    HKEY key = nullptr;
};

// Keys come from the hive only; a query gives the size, terminator included, then the data.
TEST_F(RegistryTest, SetFlushAndLoadBackThroughKeysTheHiveHas) {
    EXPECT_EQ(Open(L"Software\\Other"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(L"SOFTWARE"), ERROR_SUCCESS);
    ASSERT_EQ(Open(L"software\\tavix"), ERROR_SUCCESS);
    ASSERT_EQ(Set(L"Name", L"with \"quotes\" and \\ and ünïcode"), ERROR_SUCCESS);
    ASSERT_EQ(RegFlushKey(key), ERROR_SUCCESS);
    platform::LoadHiveFromText("");
    ASSERT_TRUE(platform::LoadHive(hive));
    ASSERT_EQ(Open(), ERROR_SUCCESS);
    WCHAR text[8];
    DWORD size = 6 * sizeof(WCHAR);
    EXPECT_EQ(RegQueryValueExW(key, L"id_dll", nullptr, nullptr, (LPBYTE)text, &size),
              ERROR_MORE_DATA);
    EXPECT_EQ(RegQueryValueExW(key, L"id_dll", nullptr, nullptr, (LPBYTE)text, &size), 0);
    EXPECT_STREQ(text, L"OTDR-7");
    EXPECT_EQ(RegQueryValueExW(key, L"Name", nullptr, nullptr, nullptr, &size), 0);
    EXPECT_EQ(size, 32 * sizeof(WCHAR));
    EXPECT_NE(
        platform::HiveAsText().find("\"Name\"=\"with \\\"quotes\\\" and \\\\ and ünïcode\"\n"),
        std::string::npos);
    platform::DeleteRegistryKey(L"HKEY_LOCAL_MACHINE\\Software\\Tavix");
    EXPECT_EQ(Set(L"Name", L"x"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(), ERROR_FILE_NOT_FOUND);
}

// An empty registry shows up later as a missing resource; say here which file and why.
TEST_F(RegistryTest, AHiveThatCannotBeReadIsNamedOnTheDebugOutput) {
    for (const auto& [path, error] : {std::pair{hive + ".none", ENOENT}, {dir.Path(""), EISDIR}}) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(platform::LoadHive(path), error == ENOENT);
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_NE(said.find(path + ": " + std::strerror(error)), std::string::npos) << said;
        EXPECT_EQ(Open(), ERROR_FILE_NOT_FOUND);
    }
}

}  // namespace
