#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "Platform/Registry.h"

namespace {

constexpr const char* kHive =
    "Windows Registry Editor Version 5.00\n"
    "\n"
    "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
    "\"ID_DLL\"=\"OTDR-7\"\n"
    "\"Count\"=dword:0000002a\n";

std::wstring ReadString(HKEY key, const wchar_t* name, LONG* result = nullptr) {
    DWORD size = 0;
    DWORD type = 0;
    LONG r = RegQueryValueExW(key, name, nullptr, &type, nullptr, &size);
    if (r == ERROR_SUCCESS) {
        std::wstring text(size / sizeof(WCHAR), L'\0');
        r = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<LPBYTE>(text.data()),
                             &size);
        text.resize(wcslen(text.c_str()));
        if (result) *result = r;
        return text;
    }
    if (result) *result = r;
    return {};
}

class RegistryTest : public ::testing::Test {
protected:
    void SetUp() override {
        platform::InjectRegistryFaults() = {};
        platform::LoadHiveFromText(kHive);
    }
    HKEY Open(const wchar_t* path = L"Software\\Tavix") {
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_ALL_ACCESS, &key), ERROR_SUCCESS);
        return key;
    }
};

TEST_F(RegistryTest, OpensOnlyKeysTheHiveHas) {
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Other", 0, KEY_ALL_ACCESS, &key),
              ERROR_FILE_NOT_FOUND);
    // A parent of a listed key exists, and names compare without case.
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE", 0, KEY_ALL_ACCESS, &key),
              ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

TEST_F(RegistryTest, QueryReportsSizeWithTerminatorThenData) {
    HKEY key = Open();
    DWORD size = 0;
    DWORD type = 0;
    ASSERT_EQ(RegQueryValueExW(key, L"ID_DLL", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(size, 7 * sizeof(WCHAR));
    EXPECT_EQ(ReadString(key, L"id_dll"), L"OTDR-7");

    DWORD small = 2 * sizeof(WCHAR);
    WCHAR buffer[2];
    EXPECT_EQ(
        RegQueryValueExW(key, L"ID_DLL", nullptr, &type, reinterpret_cast<LPBYTE>(buffer), &small),
        ERROR_MORE_DATA);
    EXPECT_EQ(small, size);

    DWORD number = 0;
    DWORD numberSize = sizeof number;
    ASSERT_EQ(RegQueryValueExW(key, L"Count", nullptr, &type, reinterpret_cast<LPBYTE>(&number),
                               &numberSize),
              ERROR_SUCCESS);
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(number, 42u);

    LONG result = 0;
    ReadString(key, L"Missing", &result);
    EXPECT_EQ(result, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

TEST_F(RegistryTest, SetReplacesOrAppendsAndNeverCreatesKeys) {
    HKEY key = Open();
    const std::wstring text = L"new value";
    ASSERT_EQ(RegSetValueExW(key, L"ID_DLL", 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR))),
              ERROR_SUCCESS);
    EXPECT_EQ(ReadString(key, L"ID_DLL"), text);
    RegCloseKey(key);

    platform::DeleteRegistryKey(L"HKEY_LOCAL_MACHINE\\Software\\Tavix");
    HKEY gone = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Tavix", 0, KEY_ALL_ACCESS, &gone),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(platform::HiveAsText().find("Tavix"), std::string::npos);
}

TEST_F(RegistryTest, FaultsFireOnceEach) {
    platform::InjectRegistryFaults().nullHandleOnNextOpen = true;
    HKEY key = reinterpret_cast<HKEY>(1);
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Tavix", 0, KEY_ALL_ACCESS, &key),
              ERROR_SUCCESS);
    EXPECT_EQ(key, nullptr);

    key = Open();
    platform::InjectRegistryFaults().shortNextRead = true;
    DWORD size = 0;
    RegQueryValueExW(key, L"ID_DLL", nullptr, nullptr, nullptr, &size);
    std::wstring text(size / sizeof(WCHAR), L'x');
    DWORD delivered = size;
    EXPECT_EQ(RegQueryValueExW(key, L"ID_DLL", nullptr, nullptr,
                               reinterpret_cast<LPBYTE>(text.data()), &delivered),
              ERROR_SUCCESS);
    EXPECT_EQ(delivered, size - sizeof(WCHAR));
    EXPECT_EQ(ReadString(key, L"ID_DLL"), L"OTDR-7");

    platform::InjectRegistryFaults().failNextClose = true;
    EXPECT_NE(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(Open()), ERROR_SUCCESS);
}

TEST_F(RegistryTest, FlushPersistsTheHiveAndReloadsIt) {
    const std::string path =
        (std::filesystem::temp_directory_path() / ("hive-" + std::to_string(getpid()) + ".reg"))
            .string();
    platform::LoadHiveFromText(kHive, path);
    HKEY key = Open();
    const std::wstring text = L"with \"quotes\" and \\ and ünïcode";
    RegSetValueExW(key, L"Name", 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)));
    ASSERT_EQ(RegFlushKey(HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
    RegCloseKey(key);

    platform::LoadHiveFromText("");
    ASSERT_TRUE(platform::LoadHive(path));
    key = Open();
    EXPECT_EQ(ReadString(key, L"Name"), text);
    EXPECT_EQ(ReadString(key, L"ID_DLL"), L"OTDR-7");
    RegCloseKey(key);

    platform::InjectRegistryFaults().failNextFlush = true;
    EXPECT_NE(RegFlushKey(HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
    std::filesystem::remove(path);
}

TEST_F(RegistryTest, MissingHiveFileGivesAnEmptyRegistry) {
    EXPECT_TRUE(platform::LoadHive("/nonexistent-dir/registry.reg"));
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Tavix", 0, KEY_ALL_ACCESS, &key),
              ERROR_FILE_NOT_FOUND);
}

}  // namespace
