// opm-probe on a throw-away image, one run per row: the bench and the
// arguments, then the exit code, what it said, the application's log lines,
// the readings and a value of the calibration file. Zeroing, reference
// calibration, a default set, the laser loop-back, the start-up faults and
// every exit code.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "ProbeImage.h"
#include "Simulator/bench/FactoryData.h"
#include "Support/IniFile.h"

namespace {

using Lines = std::vector<std::string>;

struct Row {
    const char* name;
    std::string bench;
    QStringList arguments;
    int exitCode;
    std::string errors = {};           // part of standard error
    Lines log = {};                    // application lines ('U M'), one after another
    Lines header = {};                 // among the '#' lines
    std::optional<double> reads = {};  // dBm, every reading
    const char* iniKey = nullptr;      // in [iniSection] of the calibration file afterwards
    const char* iniSection = nullptr;
    double iniValue = 0.0;
    bool withoutIni = false;  // etc_gui/opm.ini removed
};

const sim::FactoryData kFactory = sim::DeriveFactoryData(sim::BenchSettings{});
const std::string kLoopback =
    "[input]\nenabled = 0\n[loopback]\nenabled = 1\nlossDb = 3\n[laser2]\ndBm = -4.5\n";

// clang-format off
const Row kRows[] = {
    {"LaserLoopedBackThroughA3dBCord", kLoopback, {"-w", "4", "-l", "1", "-s", "1", "-n", "2"}, 0,
     "", {}, {"# wavelength 1550 nm"}, -7.5},
    // Modulated light is on half the time; the meter sees its mean.
    {"ModulatedLaserReadsHalfItsPower", kLoopback, {"-w", "4", "-l", "1:1", "-s", "1", "-n", "2"},
     0, "", {}, {}, -7.5 - 10 * std::log10(2.0)},
    {"ZeroingWithLightIsRefused", "[input]\ndBm = 0\n", {"-z", "-n", "1"}, 4,
     "can't zero: light reaches the input (range 2)", {}, {}, {}, "Zero0", "UserCalibration",
     kFactory.zeroCounts[0]},
    {"ZeroingInTheDarkTakesTheDriftedOffset", "[input]\nenabled = 0\n[adc]\noffset0 = 4000\n",
     {"-z", "-s", "0", "-n", "1"}, 0, "", {}, {}, {}, "Zero0", "UserCalibration",
     kFactory.zeroCounts[0] + 4000 - sim::BenchSettings{}.adc.offsetCounts[0]},
    // A window that passes 80 %: the reference makes the meter read true again.
    {"CalibratingToAReference", "[detector]\nresponsivityScale = 0.8\n[input]\ndBm = -20\n",
     {"-w", "4", "-c", "-20", "-s", "1", "-n", "2"}, 0, "", {}, {}, -20.0, "WaveCentralCoeff4",
     "FactoryCalibration_SIM1PM2", sim::FactoryData::WaveCentralCoeff(1550) - 10 * std::log10(0.8)},
    {"DefaultSetPM1ReadsTrueWithItsOwnTable", "[input]\nwavelength = 1310\ndBm = -37\n",
     {"-r", "1", "-w", "2", "-s", "1", "-n", "2"}, 0, "", {}, {"# wavelength 1310 nm"}, -37.0},
    {"InitOtdrFailingOnce", "[faults]\ninitOtdrFailures = 1\n", {"-n", "0"}, 0, "",
     {"Initializing OTDR device... ", "Second Attemp of OTDR initialization sucessfull ",
      "OTDR initialization sucessfull "}},
    {"InitOtdrFailingTwice", "[faults]\ninitOtdrFailures = 2\n", {"-n", "0"}, 1,
     "OTDR initialization failure", {"OTDR initialization failure "}},
    {"WithoutOlt1TheLasersStillWork", "[faults]\nnoOlt1 = 1\n", {"-n", "0", "-l", "2:1"}, 0, "",
     {"Can't initialize power meter... Can't create OLT1 driver file"},
     {"# light source: 3 lasers (1310 nm, 1550 nm, 1625 nm)", "# power meter: none"}},
    {"WithoutOlt1NothingToMeasure", "[faults]\nnoOlt1 = 1\n", {"-n", "1"}, 5,
     "no power meter on this unit"},
    {"NeitherMeterNorLightSource", "[faults]\nnoOlt1 = 1\n", {"-n", "1"}, 2,
     "neither power meter nor light source", {}, {}, {}, nullptr, nullptr, 0.0, true},
    {"BadCount", "", {"-n", "x"}, 3, "bad value for --count: x"},
    {"UnknownOption", "", {"--bogus"}, 3, "Unknown option 'bogus'"},
    {"UnknownWavelengthSlot", "", {"-w", "6", "-n", "1"}, 3, "no wavelength slot 6 (the meter has 6)"},
    {"UnknownLaser", "", {"-l", "3", "-n", "0"}, 3, "no laser 3 (the light source has 3)"},
    // A conversion of 50 ms: a measurement takes 3 s, longer than the probe waits.
    {"NoMeasurementInTime", "[adc]\nconversionUs = 50000\n", {"-t", "1", "-n", "1"}, 6,
     "no measurement arrived"},
};
// clang-format on

Lines ApplicationLogLines(const e2e::ProbeImage& image) {
    Lines lines;
    std::istringstream log(image.ReadText("PowerMeter.log"));
    const std::string marker = "  U M\t ";
    for (std::string line; std::getline(log, line);)
        if (line.find(marker) != std::string::npos)
            lines.push_back(line.substr(line.find(marker) + marker.size()));
    return lines;
}

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class ProbeTest : public testing::TestWithParam<Row> {};

TEST_P(ProbeTest, Run) {
    const Row& row = GetParam();
    e2e::ProbeImage image;
    image.WriteBench(row.bench);
    if (row.withoutIni) std::filesystem::remove(image.dir + "etc_gui/opm.ini");

    std::unique_ptr<e2e::Probe> probe = image.Start(row.arguments);
    std::vector<e2e::Reading> readings;
    while (std::optional<e2e::Reading> reading = probe->Next()) readings.push_back(*reading);
    EXPECT_EQ(probe->Stop(false), row.exitCode) << probe->errors;
    EXPECT_NE(probe->errors.find(row.errors), std::string::npos) << probe->errors;
    const Lines log = ApplicationLogLines(image);
    EXPECT_TRUE(row.log.empty() ||
                std::search(log.begin(), log.end(), row.log.begin(), row.log.end()) != log.end())
        << image.ReadText("PowerMeter.log");
    for (const std::string& line : row.header)
        EXPECT_NE(std::find(probe->header.begin(), probe->header.end(), line), probe->header.end())
            << line;
    if (row.reads) {
        EXPECT_FALSE(readings.empty());
        for (const e2e::Reading& reading : readings) EXPECT_NEAR(reading.dBm, *row.reads, 0.05);
    }
    if (row.iniKey) {
        // Measured values carry the noise of 60 conversions: 0.1 % of a zero's counts.
        TIniFile ini((image.dir + "etc_gui/opm.ini").c_str());
        ASSERT_EQ(ini.Load(), 0);
        EXPECT_NEAR(ini.GetDouble(row.iniSection, row.iniKey, -1e9), row.iniValue,
                    0.01 + 1e-3 * std::fabs(row.iniValue))
            << row.iniKey;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, ProbeTest, testing::ValuesIn(kRows),
                         [](const testing::TestParamInfo<Row>& info) { return info.param.name; });

}  // namespace
