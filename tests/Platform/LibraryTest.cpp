#include <gtest/gtest.h>

#include "Platform/LastError.h"
#include "Platform/Library.h"

namespace {

// "x.dll" is the x.so beside the executable, never one from a search path.
TEST(LibraryTest, LoadsResolvesFreesAndSaysWhatIsMissing) {
    HMODULE module = LoadLibraryW(L"tavix_sim_olt.DLL");
    ASSERT_NE(module, nullptr);
    EXPECT_NE(GetProcAddressW(module, L"OLT_IOControl"), nullptr);
    EXPECT_EQ(GetProcAddressW(module, L"NoSuchExport"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_FALSE(FreeLibrary(nullptr));
    EXPECT_EQ(LoadLibraryW(L"libc.so.6"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(LoadLibraryW(L"no_such_pack.rcc"), nullptr);
}

}  // namespace
