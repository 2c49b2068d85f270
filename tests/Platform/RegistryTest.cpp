#include <gtest/gtest.h>

#include <cstring>

#include "Platform/Registry.h"
#include "Support/ScratchDirectory.h"

namespace {

class RegistryTest : public testing::Test {
protected:
    void SetUp() override {
        platform::LoadHiveFromText(
            "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n\"ID_DLL\"=\"OTDR-7\"\n\"Count\"=dword:2a\n",
            hive);
    }
    void TearDown() override { RegCloseKey(key); }
    LONG Open(const wchar_t* path = L"Software\\Tavix") {
        RegCloseKey(key);
        key = nullptr;
        return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_ALL_ACCESS, &key);
    }
    LONG Query(const wchar_t* name, void* data, DWORD& size, DWORD* type = nullptr) {
        return RegQueryValueExW(key, name, nullptr, type, static_cast<LPBYTE>(data), &size);
    }
    LONG Set(const wchar_t* name, const std::wstring& text) {
        return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                              static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)));
    }
    ScratchDirectory dir;
    std::string hive = dir.Path("registry.reg");
    HKEY key = nullptr;
};

TEST_F(RegistryTest, OpensKeysTheHiveHasAndQueriesSizeThenData) {
    EXPECT_EQ(Open(L"Software\\Other"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(L"SOFTWARE"), ERROR_SUCCESS);
    ASSERT_EQ(Open(L"software\\tavix"), ERROR_SUCCESS);
    WCHAR text[8];
    DWORD size = 0, type = 0, number = 0;
    EXPECT_EQ(Query(L"id_dll", nullptr, size, &type), ERROR_SUCCESS);
    EXPECT_EQ(size, 7 * sizeof(WCHAR));
    EXPECT_EQ(type, REG_SZ);
    size = 6 * sizeof(WCHAR);
    EXPECT_EQ(Query(L"ID_DLL", text, size), ERROR_MORE_DATA);
    EXPECT_EQ(Query(L"ID_DLL", text, size), ERROR_SUCCESS);
    EXPECT_STREQ(text, L"OTDR-7");
    EXPECT_EQ(Query(L"Missing", text, size), ERROR_FILE_NOT_FOUND);
    size = sizeof number;
    EXPECT_EQ(Query(L"Count", &number, size, &type), ERROR_SUCCESS);
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(number, 42u);
}

TEST_F(RegistryTest, FlushWritesTheHiveThatALoadReadsBack) {
    ASSERT_EQ(Open(), ERROR_SUCCESS);
    ASSERT_EQ(Set(L"Name", L"with \"quotes\" and \\ and ünïcode"), ERROR_SUCCESS);
    ASSERT_EQ(Set(L"ID_DLL", L"new"), ERROR_SUCCESS);
    ASSERT_EQ(RegFlushKey(key), ERROR_SUCCESS);
    platform::LoadHiveFromText("");
    ASSERT_TRUE(platform::LoadHive(hive));
    EXPECT_EQ(platform::HiveAsText(),
              "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
              "\"ID_DLL\"=\"new\"\n\"Count\"=dword:0000002a\n"
              "\"Name\"=\"with \\\"quotes\\\" and \\\\ and ünïcode\"\n");
    // Keys come from the hive only: a deleted one takes no values.
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
