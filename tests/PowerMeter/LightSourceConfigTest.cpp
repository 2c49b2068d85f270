// Which lasers and model switches the light source configuration reads, and
// the service menu's NoOPM switch written back.

#include <filesystem>
#include <utility>
#include <vector>

#include "PowerMeter/DeviceTestSupport.h"
#include "PowerMeter/LightSourceConfig.h"
#include "Support/ConfigError.h"

namespace devicetest {
namespace {

using Lasers = std::vector<std::pair<unsigned, int>>;

const struct ConfigRow {
    const char *name, *ini;
    Lasers lasers;
    bool noOPM, noVFL;
} kConfigs[] = {
    // clang-format off
    {"no count anywhere: no lasers", "[LightSource]\nLsLaserId0=1\nLsLaserWaveLength0=1310\n[LightSource_X7]\nLsLaserId0=2\nLsLaserWaveLength0=1550\n", {}, false, false},
    {"count capped at the described lasers", "[LightSource]\nLsLasersNum=5\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\nLsLaserWaveLength1=1550\n", {{1, 1310}, {2, 1550}}, false, false},
    {"model section overrides laser by laser", "[LightSource]\nLsLasersNum=2\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\nLsLaserWaveLength1=1550\n[LightSource_X7]\nLsLasersNum=2\nLsLaserId0=9\nLsLaserWaveLength0=850\n", {{9, 850}, {2, 1550}}, false, false},
    {"model count wins", "[LightSource]\nLsLasersNum=1\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\nLsLaserWaveLength1=1550\n[LightSource_X7]\nLsLasersNum=2\n", {{1, 1310}, {2, 1550}}, false, false},
    {"common count when the model gives none", "[LightSource]\nLsLasersNum=1\n[LightSource_X7]\nLsLaserId0=4\nLsLaserWaveLength0=1490\n", {{4, 1490}}, false, false},
    {"a missing identifier ends the list", "[LightSource]\nLsLasersNum=3\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserWaveLength1=1550\nLsLaserId2=3\nLsLaserWaveLength2=1625\n", {{1, 1310}}, false, false},
    {"a missing wavelength ends the list", "[LightSource]\nLsLasersNum=2\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\n", {{1, 1310}}, false, false},
    {"negative count: no lasers", "[LightSource]\nLsLasersNum=-1\nLsLaserId0=1\nLsLaserWaveLength0=1310\n", {}, false, false},
    {"model switches of exactly 1", "[LightSource_X7]\nNoOPM=1\nNoVFL=1\n", {}, true, true},
    {"other values are off", "[LightSource_X7]\nNoOPM=2\nNoVFL=abc\n", {}, false, false},
    {"common switches are ignored", "[LightSource]\nNoOPM=1\nNoVFL=1\n", {}, false, false},
    {"another model's switch is ignored", "[LightSource_Y1]\nNoOPM=1\n", {}, false, false},
    {"identifier kept unsigned, wavelength 0 allowed", "[LightSource]\nLsLasersNum=1\nLsLaserId0=-2\nLsLaserWaveLength0=0\n", {{4294967294u, 0}}, false, false},
    // clang-format on
};

class LightSourceConfigTest : public testing::Test {
protected:
    std::string path =
        (std::filesystem::temp_directory_path() / ("opm-ls-" + std::to_string(getpid()) + ".ini"))
            .string();
    void TearDown() override { std::filesystem::remove(path); }
};

TEST_F(LightSourceConfigTest, ReadsLasersAndModelSwitches) {
    for (const ConfigRow& row : kConfigs) {
        SCOPED_TRACE(row.name);
        WriteFile(path, row.ini);
        const CLightSourceConfig config(path.c_str(), L"X7");
        Lasers read;
        for (std::size_t i = 0; i < config.GetLasersNum(); ++i)
            read.emplace_back(config.GetLaser(i).identifier, config.GetLaser(i).wavelength);
        EXPECT_EQ(read, row.lasers);
        EXPECT_EQ(config.HasNoOPM(), row.noOPM);
        EXPECT_EQ(config.HasNoVFL(), row.noVFL);
    }
    WriteFile(path, "[LightSource_X7]\nLsLasersNum=1\nLsLaserId0=0\nLsLaserWaveLength0=1310\n");
    EXPECT_EXIT(CLightSourceConfig(path.c_str(), L"X7"), testing::ExitedWithCode(1),
                FatalPattern("id >= 1", "LightSourceConfig"));
    std::filesystem::remove(path);
    try {
        CLightSourceConfig config(path.c_str(), L"X7");
        ADD_FAILURE() << "no exception";
    } catch (const CConfigError& error) {
        EXPECT_STREQ(error.what(), "Can't open and read config file");
    }
}

TEST_F(LightSourceConfigTest, WriteNoOPMSetsTheModelsKeyAndKeepsEverythingElse) {
    const struct {
        const char* before;  // null: no file
        const wchar_t* model;
        int value;
        bool result;
        const char* after;
    } rows[] = {
        // clang-format off
        {";factory data\n[LightSource]\nNoOPM=0\n[LightSource_X7]\nLsLasersNum=0\n", L"X7", 1, true, ";factory data\n\n[LightSource]\nNoOPM=0\n\n[LightSource_X7]\nLsLasersNum=0\nNoOPM=1\n\n"},
        {"[LightSource_X7]\nNoOPM=1\n", L"X7", 0, true, "[LightSource_X7]\nNoOPM=0\n\n"},
        {"[Hardware]\nMaxADC=4095\n", L"Q2", 1, true, "[Hardware]\nMaxADC=4095\n\n[LightSource_Q2]\nNoOPM=1\n\n"},
        {nullptr, L"X7", 1, false, nullptr},
        // clang-format on
    };
    for (const auto& row : rows) {
        std::filesystem::remove(path);
        if (row.before) WriteFile(path, row.before);
        EXPECT_EQ(WriteNoOPM(path.c_str(), row.model, row.value), row.result);
        EXPECT_EQ(std::filesystem::exists(path), row.after != nullptr);
        EXPECT_EQ(ReadFile(path), row.after ? row.after : "");
    }
}

}  // namespace
}  // namespace devicetest
