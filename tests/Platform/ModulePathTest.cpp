#include <gtest/gtest.h>
#include <unistd.h>

#include "Platform/ModulePath.h"

namespace {

TEST(ModulePathTest, ReportsTheExecutableWhateverTheCurrentDirectory) {
    wchar_t before[1000];
    ASSERT_GT(GetModuleFileNameW(nullptr, before, 1000), 0u);
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    ASSERT_EQ(chdir("/"), 0);
    wchar_t after[1000];
    GetModuleFileNameW(nullptr, after, 1000);
    ASSERT_EQ(chdir(cwd), 0);
    EXPECT_EQ(std::wstring(before), std::wstring(after));
    EXPECT_NE(std::wstring(before).find(L"PlatformTests"), std::wstring::npos);
    EXPECT_EQ(platform::ApplicationDirectory().back(), '/');
}

TEST(ModulePathTest, ShortBufferGetsATerminatedPrefix) {
    wchar_t buffer[4];
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer, 4), 3u);
    EXPECT_EQ(buffer[3], L'\0');
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer, 0), 0u);
}

TEST(ModulePathTest, OverrideStandsInForTheExecutable) {
    platform::OverrideModuleFileName(L"/image/dir/PowerMeter");
    EXPECT_EQ(platform::ApplicationDirectory(), "/image/dir/");
    platform::OverrideModuleFileName(L"");
}

}  // namespace
