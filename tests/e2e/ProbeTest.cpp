// Zeroing, reference calibration, the laser loop-back and the start-up faults
// of the simulated instrument, through opm-probe on a throw-away image.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "ProbeImage.h"
#include "Support/IniFile.h"

namespace {

using e2e::ProbeImage;
using e2e::ProbeRun;
using Lines = std::vector<std::string>;

constexpr double kTolerance = 0.05;  // dB
constexpr const char* kModelSection = "FactoryCalibration_SIM1PM2";

void SetBench(ProbeImage& image, const std::string& key, const std::string& value) {
    std::string error;
    ASSERT_TRUE(image.Bench(key, value, &error)) << error;
}

// Runs the probe and expects it to succeed with `count` readings.
ProbeRun Measure(ProbeImage& image, QStringList arguments, int count = 3) {
    arguments << "--count" << QString::number(count);
    ProbeRun run = image.Probe(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.readings.size(), static_cast<std::size_t>(count)) << run.errors;
    return run;
}

void ExpectReads(const ProbeRun& run, double dBm) {
    ASSERT_FALSE(run.readings.empty());
    for (const e2e::Reading& reading : run.readings) EXPECT_NEAR(reading.dBm, dBm, kTolerance);
}

// The application's own log lines ('U', level 'M'), text and detail.
Lines UserLogLines(const ProbeImage& image) {
    Lines lines;
    std::istringstream log(image.ReadText("PowerMeter.log"));
    const std::string marker = "  U M\t ";
    for (std::string line; std::getline(log, line);) {
        const auto at = line.find(marker);
        if (at != std::string::npos) lines.push_back(line.substr(at + marker.size()));
    }
    return lines;
}

double IniValue(const ProbeImage& image, const char* section, const char* key) {
    TIniFile ini((image.Dir() + "etc_gui/opm.ini").c_str());
    ini.Load();
    return ini.GetDouble(section, key, -12345.0);
}

TEST(ProbeTest, ZeroingInTheDarkMakesALowLevelReadTrue) {
    ProbeImage image;
    // Forget the factory's dark offsets: a faint input then reads high.
    {
        TIniFile ini((image.Dir() + "etc_gui/opm.ini").c_str());
        ASSERT_EQ(ini.Load(), 0);
        for (const char* zero : {"Zero0", "Zero1", "Zero2"})
            ini.SetDouble("UserCalibration", zero, 0.0);
        ASSERT_EQ(ini.Save(), 0);
    }
    SetBench(image, "input.dBm", "-65");
    const ProbeRun before = Measure(image, {}, 1);
    ASSERT_EQ(before.readings.size(), 1u);
    EXPECT_GT(before.readings[0].dBm, -65.0 + 0.2);

    SetBench(image, "input.enabled", "0");
    const ProbeRun dark = Measure(image, {"--zero"}, 2);
    for (const e2e::Reading& reading : dark.readings) EXPECT_EQ(reading.dBm, -76.0);
    EXPECT_GT(IniValue(image, "UserCalibration", "Zero0"), 0.0);
    EXPECT_GT(IniValue(image, "UserCalibration", "Zero2"), 0.0);

    SetBench(image, "input.enabled", "1");
    ExpectReads(Measure(image, {}), -65.0);
}

TEST(ProbeTest, ZeroingWithLightAtTheInputIsRefused) {
    ProbeImage image;
    SetBench(image, "input.dBm", "0");
    const double zeroBefore = IniValue(image, "UserCalibration", "Zero0");
    const ProbeRun run = image.Probe({"--zero", "--count", "1"});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_NE(run.errors.find("can't zero"), std::string::npos) << run.errors;
    // Saved again as "%lg", six digits: the same offset.
    EXPECT_NEAR(IniValue(image, "UserCalibration", "Zero0"), zeroBefore, 0.01);
}

TEST(ProbeTest, CalibratingToAReferenceThenReadingThatReference) {
    ProbeImage image;
    // A dirty detector window: the factory calibration now reads about 1 dB low.
    SetBench(image, "detector.responsivityScale", "0.8");
    SetBench(image, "input.dBm", "-20");
    const ProbeRun dirty = Measure(image, {"--wavelength", "4"}, 1);
    ASSERT_EQ(dirty.readings.size(), 1u);
    EXPECT_LT(dirty.readings[0].dBm, -20.5);
    const double commonCoeff = IniValue(image, "FactoryCalibration", "WaveCentralCoeff4");

    ExpectReads(Measure(image, {"--wavelength", "4", "--calibrate", "-20"}), -20.0);
    EXPECT_NE(IniValue(image, kModelSection, "WaveCentralCoeff4"), commonCoeff);
    EXPECT_EQ(IniValue(image, "FactoryCalibration", "WaveCentralCoeff4"), commonCoeff);

    // The coefficient is kept, and holds in another gain range too.
    ExpectReads(Measure(image, {"--wavelength", "4"}), -20.0);
    SetBench(image, "input.dBm", "-45");
    ExpectReads(Measure(image, {"--wavelength", "4"}), -45.0);

    // Back to the factory set: the dirty window shows again.
    SetBench(image, "input.dBm", "-20");
    ExpectReads(Measure(image, {"--wavelength", "4", "--reset-default", "2"}),
                dirty.readings[0].dBm);
}

TEST(ProbeTest, LaserLoopedBackThroughA3dBFibreReadsItsPowerLess3dB) {
    ProbeImage image;
    SetBench(image, "input.enabled", "0");
    SetBench(image, "loopback.enabled", "1");
    SetBench(image, "loopback.lossDb", "3");
    SetBench(image, "laser2.dBm", "-4.5");

    // Laser index 1 is the 1550 nm laser, slot 4 the meter's 1550 nm.
    ExpectReads(Measure(image, {"--wavelength", "4", "--laser", "1"}), -7.5);
    // Modulated light is on half the time; the meter sees its mean.
    ExpectReads(Measure(image, {"--wavelength", "4", "--laser", "1:1"}), -10.51);
    const ProbeRun off = Measure(image, {"--wavelength", "4", "--laser", "off"}, 2);
    for (const e2e::Reading& reading : off.readings) EXPECT_EQ(reading.dBm, -76.0);
}

TEST(ProbeTest, InitOtdrFailingOnceThenSucceedingLogsTheThreeLines) {
    ProbeImage image;
    SetBench(image, "faults.initOtdrFailures", "1");
    const ProbeRun run = image.Probe({"--count", "0"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;

    const Lines lines = UserLogLines(image);
    const Lines expected = {"Initializing OTDR device... ",
                            "Second Attemp of OTDR initialization sucessfull ",
                            "OTDR initialization sucessfull "};
    EXPECT_NE(std::search(lines.begin(), lines.end(), expected.begin(), expected.end()),
              lines.end())
        << image.ReadText("PowerMeter.log");

    SetBench(image, "faults.initOtdrFailures", "2");
    const ProbeRun failed = image.Probe({"--count", "0"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(UserLogLines(image).back(), "OTDR initialization failure ");
}

TEST(ProbeTest, WithoutOlt1TheUnitHasALightSourceAndNoMeter) {
    ProbeImage image;
    SetBench(image, "faults.noOlt1", "1");
    const ProbeRun run = image.Probe({"--count", "0", "--laser", "2:1"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.header, (Lines{"# light source: 3 lasers (1310 nm, 1550 nm, 1625 nm)",
                                 "# power meter: none"}));
    EXPECT_EQ(UserLogLines(image).back(),
              "Can't initialize power meter... Can't create OLT1 driver file");

    const ProbeRun measuring = image.Probe({"--count", "1"});
    EXPECT_EQ(measuring.exitCode, 5);
    EXPECT_NE(measuring.errors.find("no power meter"), std::string::npos);
}

}  // namespace
