#include <gtest/gtest.h>

#include <filesystem>
#include <utility>
#include <vector>

#include "DeviceTestSupport.h"
#include "PowerMeter/LightSourceConfig.h"
#include "Support/ConfigError.h"

namespace {

using devicetest::AssertionPattern;
using devicetest::ReadFile;
using devicetest::TempDir;
using devicetest::WriteFile;
using Lasers = std::vector<std::pair<unsigned, int>>;

struct ConfigCase {
    const char* name;
    const char* ini;
    Lasers lasers;
    bool noOPM;
    bool noVFL;
};

const ConfigCase kCases[] = {
    {"NoCountAnywhereMeansNoLasers",
     "[LightSource]\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
     "[LightSource_X7]\nLsLaserId0=2\nLsLaserWaveLength0=1550\n",
     {},
     false,
     false},
    {"CountAboveTheDescribedLasersIsCapped",
     "[LightSource]\nLsLasersNum=5\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
     "LsLaserId1=2\nLsLaserWaveLength1=1550\nLsLaserId2=3\nLsLaserWaveLength2=1625\n",
     {{1, 1310}, {2, 1550}, {3, 1625}},
     false,
     false},
    {"ModelSectionOverridesLaserByLaser",
     "[LightSource]\nLsLasersNum=2\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
     "LsLaserId1=2\nLsLaserWaveLength1=1550\n"
     "[LightSource_X7]\nLsLasersNum=2\nLsLaserId0=9\nLsLaserWaveLength0=850\n",
     {{9, 850}, {2, 1550}},
     false,
     false},
    {"ModelCountWinsOverCommonCount",
     "[LightSource]\nLsLasersNum=1\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
     "LsLaserId1=2\nLsLaserWaveLength1=1550\n[LightSource_X7]\nLsLasersNum=2\n",
     {{1, 1310}, {2, 1550}},
     false,
     false},
    {"CommonCountAppliesWhenTheModelGivesNone",
     "[LightSource]\nLsLasersNum=1\n[LightSource_X7]\nLsLaserId0=4\nLsLaserWaveLength0=1490\n",
     {{4, 1490}},
     false,
     false},
    {"GapInTheIdentifiersEndsTheList",
     "[LightSource]\nLsLasersNum=3\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
     "LsLaserWaveLength1=1550\nLsLaserId2=3\nLsLaserWaveLength2=1625\n",
     {{1, 1310}},
     false,
     false},
    {"MissingWaveLengthEndsTheList",
     "[LightSource]\nLsLasersNum=2\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\n",
     {{1, 1310}},
     false,
     false},
    {"NegativeCountMeansNoLasers",
     "[LightSource]\nLsLasersNum=-1\nLsLaserId0=1\nLsLaserWaveLength0=1310\n",
     {},
     false,
     false},
    {"ModelSwitchesOfExactlyOne", "[LightSource_X7]\nNoOPM=1\nNoVFL=1\n", {}, true, true},
    {"SwitchOfTwoIsFalse", "[LightSource_X7]\nNoOPM=2\nNoVFL=abc\n", {}, false, false},
    {"CommonSwitchesAreIgnored", "[LightSource]\nNoOPM=1\nNoVFL=1\n", {}, false, false},
    {"OtherModelsSwitchesAreIgnored", "[LightSource_Y1]\nNoOPM=1\n", {}, false, false},
    {"IdentifierAboveTwoToThe31IsKeptUnsigned",
     "[LightSource]\nLsLasersNum=1\nLsLaserId0=-2\nLsLaserWaveLength0=0\n",
     {{4294967294u, 0}},
     false,
     false},
};

class LightSourceConfigCases : public testing::TestWithParam<ConfigCase> {};

TEST_P(LightSourceConfigCases, ReadsLasersAndSwitches) {
    const ConfigCase& c = GetParam();
    TempDir dir;
    WriteFile(dir / "opm.ini", c.ini);
    const CLightSourceConfig config((dir / "opm.ini").c_str(), L"X7");

    Lasers read;
    for (std::size_t i = 0; i < config.GetLasersNum(); ++i)
        read.emplace_back(config.GetLaser(i).identifier, config.GetLaser(i).wavelength);
    EXPECT_EQ(read, c.lasers);
    EXPECT_EQ(config.HasNoOPM(), c.noOPM);
    EXPECT_EQ(config.HasNoVFL(), c.noVFL);
}

INSTANTIATE_TEST_SUITE_P(Ini, LightSourceConfigCases, testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(LightSourceConfigTest, UnreadableFileThrowsTheConfigError) {
    TempDir dir;
    try {
        CLightSourceConfig config((dir / "missing.ini").c_str(), L"X7");
        FAIL() << "no exception";
    } catch (const CConfigError& error) {
        EXPECT_STREQ(error.what(), "Can't open and read config file");
    }
}

TEST(LightSourceConfigTest, WriteNoOPMSetsTheModelKeyAndKeepsEveryOtherLine) {
    TempDir dir;
    const std::string path = dir / "opm.ini";
    WriteFile(path, ";factory data\n[LightSource]\nNoOPM=0\n[LightSource_X7]\nLsLasersNum=0\n");

    ASSERT_TRUE(WriteNoOPM(path.c_str(), L"X7", 1));
    EXPECT_EQ(
        ReadFile(path),
        ";factory data\n\n[LightSource]\nNoOPM=0\n\n[LightSource_X7]\nLsLasersNum=0\nNoOPM=1\n\n");
    EXPECT_TRUE(CLightSourceConfig(path.c_str(), L"X7").HasNoOPM());

    ASSERT_TRUE(WriteNoOPM(path.c_str(), L"X7", 0));
    EXPECT_FALSE(CLightSourceConfig(path.c_str(), L"X7").HasNoOPM());
}

TEST(LightSourceConfigTest, WriteNoOPMCreatesTheModelSectionWhenAbsent) {
    TempDir dir;
    const std::string path = dir / "opm.ini";
    WriteFile(path, "[Hardware]\nMaxADC=4095\n");
    ASSERT_TRUE(WriteNoOPM(path.c_str(), L"Q2", 1));
    EXPECT_EQ(ReadFile(path), "[Hardware]\nMaxADC=4095\n\n[LightSource_Q2]\nNoOPM=1\n\n");
}

TEST(LightSourceConfigTest, WriteNoOPMOnAMissingFileFailsAndCreatesNothing) {
    TempDir dir;
    const std::string path = dir / "opm.ini";
    EXPECT_FALSE(WriteNoOPM(path.c_str(), L"X7", 1));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(LightSourceConfigDeathTest, LaserIndexPastTheListIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    TempDir dir;
    WriteFile(dir / "opm.ini",
              "[LightSource]\nLsLasersNum=1\nLsLaserId0=1\nLsLaserWaveLength0=1310\n");
    const CLightSourceConfig config((dir / "opm.ini").c_str(), L"X7");
    EXPECT_EXIT(config.GetLaser(1), testing::ExitedWithCode(1),
                AssertionPattern("laserIndex < GetLasersNum()", "LightSourceConfig", 101));
}

TEST(LightSourceConfigDeathTest, ZeroIdentifierOrNegativeWaveLengthIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    TempDir dir;
    WriteFile(dir / "zero.ini", "[LightSource_X7]\nLsLaserId0=0\nLsLaserWaveLength0=1310\n");
    WriteFile(dir / "negative.ini", "[LightSource]\nLsLaserId0=1\nLsLaserWaveLength0=-1\n");
    EXPECT_EXIT(CLightSourceConfig((dir / "zero.ini").c_str(), L"X7"), testing::ExitedWithCode(1),
                AssertionPattern("id >= 1", "LightSourceConfig", 131));
    EXPECT_EXIT(CLightSourceConfig((dir / "negative.ini").c_str(), L"X7"),
                testing::ExitedWithCode(1),
                AssertionPattern("wavelen >= 0", "LightSourceConfig", 132));
}

}  // namespace
