#include <gtest/gtest.h>

#include <cstring>

#include "Platform/Registry.h"
#include "Support/ScratchDirectory.h"

namespace {

constexpr const char* kHive =
    "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
    "\"ID_DLL\"=\"OTDR-7\"\n\"Count\"=dword:0000002a\n";

class RegistryTest : public testing::Test {
protected:
    void SetUp() override { platform::LoadHiveFromText(kHive, dir.Path("registry.reg")); }
    void TearDown() override { RegCloseKey(key); }
    LONG Open(const wchar_t* path = L"Software\\Tavix") {
        RegCloseKey(key);
        key = nullptr;
        return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_ALL_ACCESS, &key);
    }
    LONG Read(const wchar_t* name, std::wstring& text) {
        DWORD size = 0;
        if (LONG r = RegQueryValueExW(key, name, nullptr, nullptr, nullptr, &size)) return r;
        text.assign(size / sizeof(WCHAR), L'?');
        const LONG r = RegQueryValueExW(key, name, nullptr, nullptr,
                                        reinterpret_cast<LPBYTE>(text.data()), &size);
        text.resize(size / sizeof(WCHAR) - 1);
        return r;
    }
    LONG Set(const wchar_t* name, const std::wstring& text) {
        return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                              static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)));
    }
    ScratchDirectory dir;
    HKEY key = nullptr;
};

TEST_F(RegistryTest, OpensOnlyKeysTheHiveHasOrLiesAbove) {
    EXPECT_EQ(Open(L"Software\\Other"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(L"SOFTWARE"), ERROR_SUCCESS);
    EXPECT_EQ(Open(L"software\\tavix"), ERROR_SUCCESS);
}

TEST_F(RegistryTest, QueriesGiveSizeWithTerminatorThenData) {
    ASSERT_EQ(Open(), ERROR_SUCCESS);
    std::wstring text;
    EXPECT_EQ(Read(L"id_dll", text), ERROR_SUCCESS);
    EXPECT_EQ(text, L"OTDR-7");
    EXPECT_EQ(Read(L"Missing", text), ERROR_FILE_NOT_FOUND);
    DWORD type = 0, size = 2 * sizeof(WCHAR), number = 0;
    WCHAR small[2];
    EXPECT_EQ(
        RegQueryValueExW(key, L"ID_DLL", nullptr, &type, reinterpret_cast<LPBYTE>(small), &size),
        ERROR_MORE_DATA);
    EXPECT_EQ(size, 7 * sizeof(WCHAR));
    size = sizeof number;
    EXPECT_EQ(
        RegQueryValueExW(key, L"Count", nullptr, &type, reinterpret_cast<LPBYTE>(&number), &size),
        ERROR_SUCCESS);
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(number, 42u);
}

TEST_F(RegistryTest, FlushWritesTheHiveThatALoadReadsBack) {
    ASSERT_EQ(Open(), ERROR_SUCCESS);
    const std::wstring text = L"with \"quotes\" and \\ and ünïcode";
    ASSERT_EQ(Set(L"Name", text), ERROR_SUCCESS);
    ASSERT_EQ(Set(L"ID_DLL", L"new"), ERROR_SUCCESS);
    ASSERT_EQ(RegFlushKey(key), ERROR_SUCCESS);
    platform::LoadHiveFromText("");
    ASSERT_TRUE(platform::LoadHive(dir.Path("registry.reg")));
    ASSERT_EQ(Open(), ERROR_SUCCESS);
    std::wstring read;
    EXPECT_EQ(Read(L"Name", read), ERROR_SUCCESS);
    EXPECT_EQ(read, text);
    EXPECT_EQ(Read(L"ID_DLL", read), ERROR_SUCCESS);
    EXPECT_EQ(read, L"new");
    // Keys come from the hive only: a deleted one takes no values.
    platform::DeleteRegistryKey(L"HKEY_LOCAL_MACHINE\\Software\\Tavix");
    EXPECT_EQ(Set(L"Name", text), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(), ERROR_FILE_NOT_FOUND);
}

// An empty registry shows up later as a missing resource; say here which file and why.
TEST_F(RegistryTest, AHiveThatCannotBeReadIsNamedOnTheDebugOutput) {
    const struct {
        std::string path;
        bool loaded;
        int error;
    } cases[] = {{dir.Path("none.reg"), true, ENOENT}, {dir.Root().string(), false, EISDIR}};
    for (const auto& c : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(platform::LoadHive(c.path), c.loaded);
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_NE(said.find(c.path + ": "), std::string::npos) << said;
        EXPECT_NE(said.find(std::strerror(c.error)), std::string::npos) << said;
        EXPECT_EQ(Open(), ERROR_FILE_NOT_FOUND);
    }
}

}  // namespace
