#include <gtest/gtest.h>

#include "FakeModuleFixture.h"
#include "PowerMeter/LightSource.h"

namespace {

using devicetest::AssertionPattern;
using devicetest::WriteFile;

constexpr const char* kThreeLasers =
    "[LightSource]\nLsLasersNum=3\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
    "LsLaserId1=2\nLsLaserWaveLength1=1550\nLsLaserId2=4\nLsLaserWaveLength2=1625\n";

class LightSourceTest : public devicetest::FakeModuleFixture {
protected:
    CLightSourceConfig MakeConfig(const char* ini = kThreeLasers) {
        WriteFile(dir / "opm.ini", ini);
        return CLightSourceConfig((dir / "opm.ini").c_str(), L"X7");
    }
};

TEST_F(LightSourceTest, StartsWithEveryLaserOffAndKnowsTheirWaveLengths) {
    InstallModule("");
    LoadModule();
    const CLightSourceConfig config = MakeConfig();
    const CLightSource source(config);
    ASSERT_EQ(source.GetLasersNum(), 3u);
    EXPECT_FALSE(source.IsAnyLaserOn());
    EXPECT_EQ(source.GetLaserWaveLength(2), 1625);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_FALSE(source.GetLaserState(i).on);
        EXPECT_EQ(source.GetLaserState(i).mode, 0);
    }
    EXPECT_EQ(ModuleCalls(), "DllInit;") << "constructing switches nothing";
}

struct WordCase {
    std::size_t laser;
    int mode;
    const char* call;
};

class LaserWord : public LightSourceTest, public testing::WithParamInterface<WordCase> {};

TEST_P(LaserWord, IsTheIdentifierWithBitEightForModeOne) {
    InstallModule("");
    LoadModule();
    const CLightSourceConfig config = MakeConfig();
    CLightSource source(config);
    source.SwitchOn(GetParam().laser, GetParam().mode);
    EXPECT_EQ(ModuleCalls(), std::string("DllInit;") + GetParam().call + ";");
}

INSTANTIATE_TEST_SUITE_P(LightSource, LaserWord,
                         testing::Values(WordCase{0, 0, "ServiceFunction(741,1,null)"},
                                         WordCase{0, 1, "ServiceFunction(741,257,null)"},
                                         WordCase{2, 1, "ServiceFunction(741,260,null)"},
                                         WordCase{1, 2, "ServiceFunction(741,2,null)"},
                                         WordCase{1, -1, "ServiceFunction(741,2,null)"}));

TEST_F(LightSourceTest, OneLaserAtATimeAndTheScreensThreeStepCycle) {
    InstallModule("");
    LoadModule();
    const CLightSourceConfig config = MakeConfig();
    CLightSource source(config);

    source.SwitchOn(0, 0);
    source.SwitchOn(1, 0);
    EXPECT_FALSE(source.GetLaserState(0).on);
    EXPECT_TRUE(source.GetLaserState(1).on);

    // Already on in mode 0: mode 1 is sent again with the mode bit.
    source.SwitchOn(1, 1);
    EXPECT_TRUE(source.GetLaserState(1).on);
    EXPECT_EQ(source.GetLaserState(1).mode, 1);
    EXPECT_TRUE(source.IsAnyLaserOn());

    source.SwitchOff();
    EXPECT_FALSE(source.IsAnyLaserOn());
    EXPECT_EQ(source.GetLaserState(1).mode, 0);
    EXPECT_EQ(ModuleCalls(),
              "DllInit;ServiceFunction(741,1,null);ServiceFunction(741,2,null);"
              "ServiceFunction(741,258,null);ServiceFunction(741,0,null);");
}

TEST_F(LightSourceTest, SwitchingOffWithoutLasersStillAddressesTheModule) {
    InstallModule("");
    LoadModule();
    const CLightSourceConfig config = MakeConfig("[LightSource]\n");
    CLightSource source(config);
    EXPECT_FALSE(source.IsAnyLaserOn());
    source.SwitchOff();
    EXPECT_EQ(ModuleCalls(), "DllInit;ServiceFunction(741,0,null);");
}

using LightSourceDeathTest = LightSourceTest;

TEST_F(LightSourceDeathTest, IndexPastTheLasersIsFatalInEveryOperation) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    InstallModule("");
    LoadModule();
    const CLightSourceConfig config = MakeConfig();
    CLightSource source(config);
    EXPECT_EXIT(source.SwitchOn(3, 0), testing::ExitedWithCode(1),
                AssertionPattern("laserIndex < GetLasersNum()", "LightSource", 16));
    EXPECT_EXIT(source.GetLaserState(3), testing::ExitedWithCode(1),
                AssertionPattern("laserIndex < GetLasersNum()", "LightSource", 30));
    EXPECT_EXIT(source.GetLaserWaveLength(7), testing::ExitedWithCode(1),
                AssertionPattern("laserIndex < GetLasersNum()", "LightSource", 36));
}

TEST_F(LightSourceDeathTest, ARefusedCommandIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    InstallModule("serviceResult=0\n");
    LoadModule();
    const CLightSourceConfig config = MakeConfig();
    CLightSource source(config);
    EXPECT_EXIT(source.SwitchOn(0, 1), testing::ExitedWithCode(1),
                AssertionPattern("result == 1", "LightSource", 60));
    EXPECT_EXIT(source.SwitchOff(), testing::ExitedWithCode(1),
                AssertionPattern("result == 1", "LightSource", 60));
}

TEST_F(LightSourceDeathTest, AMissingServiceFunctionIsFatalLikeARefusal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    InstallModule("", devicetest::kMinimalFakeModule);
    LoadModule();
    ASSERT_EQ(ModuleDll->ServiceFunction, nullptr);
    const CLightSourceConfig config = MakeConfig();
    CLightSource source(config);
    EXPECT_EXIT(source.SwitchOff(), testing::ExitedWithCode(1),
                AssertionPattern("result == 1", "LightSource", 60));
}

}  // namespace
