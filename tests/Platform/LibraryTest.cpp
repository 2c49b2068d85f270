#include <gtest/gtest.h>

#include "Platform/LastError.h"
#include "Platform/Library.h"
#include "Platform/ModulePath.h"

namespace {

TEST(LibraryTest, DllNamesResolveToSharedObjectsBesideTheExecutable) {
    const std::string dir = platform::ApplicationDirectory();
    EXPECT_EQ(platform::ResolveLibraryPath(L"tavix_otdr.dll"), dir + "tavix_otdr.so");
    EXPECT_EQ(platform::ResolveLibraryPath(L"Module.DLL"), dir + "Module.so");
    EXPECT_EQ(platform::ResolveLibraryPath(L"/opt/x/lib.dll"), "/opt/x/lib.so");
    EXPECT_EQ(platform::ResolveLibraryPath(L"pack.rcc"), dir + "pack.rcc");
    EXPECT_EQ(platform::ResolveLibraryPath(L"lang/german.rcc"), dir + "lang/german.rcc");
}

TEST(LibraryTest, LoadsResolvesAndFrees) {
    HMODULE module = LoadLibraryW(L"platform_test_module.dll");
    ASSERT_NE(module, nullptr);
    using Answer = int (*)();
    auto answer = reinterpret_cast<Answer>(GetProcAddressW(module, L"TestModuleAnswer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(GetProcAddressW(module, L"NoSuchExport"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(LibraryTest, MissingLibrariesFailWithModNotFound) {
    EXPECT_EQ(LoadLibraryW(L"no_such_module.dll"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(LoadLibraryW(L"no_such_pack.rcc"), nullptr);
    EXPECT_EQ(LoadLibraryW(L""), nullptr);
    EXPECT_FALSE(FreeLibrary(nullptr));
}

}  // namespace
