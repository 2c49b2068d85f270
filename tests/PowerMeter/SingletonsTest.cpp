#include <gtest/gtest.h>

#include <string>

#include "Platform/ModulePath.h"
#include "PowerMeter/PowerMeter.h"
#include "Support/FatalTextPattern.h"
#include "Support/LenUnit.h"

namespace {

class LenUnitAccessTest : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    void TearDown() override { SetLenUnit(nullptr); }
};

TEST_F(LenUnitAccessTest, ReturnsTheInstalledObject) {
    TLenUnit lenUnit;
    lenUnit.SetUnit(duMI);
    SetLenUnit(&lenUnit);
    EXPECT_EQ(&LenUnit(), &lenUnit);
    EXPECT_EQ(LenUnit().GetUnit(), duMI);
}

TEST_F(LenUnitAccessTest, AccessWithoutObjectIsFatal) {
    const std::string pattern = FatalTextPattern("LenUnit", "PowerMeter", 63);
    EXPECT_EXIT(LenUnit(), testing::ExitedWithCode(1), pattern);
    EXPECT_EXIT(
        {
            TLenUnit lenUnit;
            SetLenUnit(&lenUnit);
            SetLenUnit(nullptr);
            LenUnit();
        },
        testing::ExitedWithCode(1), pattern);
}

struct DirectoryCase {
    std::wstring moduleName;
    std::wstring directory;
};

class ApplicationDirectory : public testing::TestWithParam<DirectoryCase> {
protected:
    void TearDown() override { platform::OverrideModuleFileName(L""); }
};

TEST_P(ApplicationDirectory, CutsBehindLastSeparator) {
    platform::OverrideModuleFileName(GetParam().moduleName);
    EXPECT_EQ(ComputeApplicationDirectory(), GetParam().directory);
}

INSTANTIATE_TEST_SUITE_P(Names, ApplicationDirectory,
                         testing::Values(DirectoryCase{L"/opt/tavix/PowerMeter", L"/opt/tavix/"},
                                         DirectoryCase{L"/PowerMeter", L"/"},
                                         DirectoryCase{L"\\Flash\\PowerMeter.exe", L"\\Flash\\"},
                                         // A slash anywhere wins over backslashes after it.
                                         DirectoryCase{L"/mnt/a\\b\\PowerMeter", L"/mnt/"},
                                         DirectoryCase{L"PowerMeter", L"PowerMeter"},
                                         DirectoryCase{L"/opt/täv ix/PowerMeter",
                                                       L"/opt/täv ix/"}));

TEST_F(ApplicationDirectory, NameLongerThanTheBufferIsCutFirst) {
    // 1000 wide characters hold 999 and the terminator.
    const std::wstring deep = L"/" + std::wstring(995, L'd') + L"/tail/PowerMeter";
    platform::OverrideModuleFileName(deep);
    EXPECT_EQ(ComputeApplicationDirectory(), L"/" + std::wstring(995, L'd') + L"/");
}

TEST_F(ApplicationDirectory, RealExecutableDirectory) {
    const std::wstring directory = ComputeApplicationDirectory();
    ASSERT_FALSE(directory.empty());
    EXPECT_EQ(directory.front(), L'/');
    EXPECT_EQ(directory.back(), L'/');
}

}  // namespace
