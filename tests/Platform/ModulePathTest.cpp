#include <gtest/gtest.h>
#include <unistd.h>

#include "Platform/ModulePath.h"

namespace {

TEST(ModulePathTest, ReportsTheExecutableWhateverTheCurrentDirectory) {
    wchar_t before[1000], after[1000], shortBuffer[4];
    char cwd[4096];
    ASSERT_GT(GetModuleFileNameW(nullptr, before, 1000), 0u);
    ASSERT_TRUE(getcwd(cwd, sizeof cwd) && chdir("/") == 0);
    GetModuleFileNameW(nullptr, after, 1000);
    ASSERT_EQ(chdir(cwd), 0);
    EXPECT_EQ(std::wstring(before), std::wstring(after));
    EXPECT_TRUE(std::wstring(before).ends_with(L"/PlatformTests"));
    EXPECT_EQ(GetModuleFileNameW(nullptr, shortBuffer, 4), 3u);
    EXPECT_EQ(shortBuffer[3], L'\0');
}

}  // namespace
