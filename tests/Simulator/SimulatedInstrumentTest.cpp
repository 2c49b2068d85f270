// The shipped factory data and hive on the application's own meter and
// backend, with the simulated driver behind them: the meter reads the
// bench's true power, and zeroing, reference calibration and the default
// sets do what they should.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "Platform/Registry.h"
#include "Platform/StreamDeviceFaults.h"
#include "PowerMeter/HardwareOPMMeterBackend.h"
#include "PowerMeter/OPMMeter.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Simulator/bench/Bench.h"
#include "Simulator/bench/FactoryIni.h"

namespace {

constexpr double kTolerance = 0.05;
constexpr const char* kBench = "[adc]\nconversionUs = 0\n";

std::string ReadText(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class SimulatedInstrument : public testing::Test {
protected:
    void SetUp() override {
        platform::LoadHiveFromText(ReadText(OPM_SOURCE_DIR "/Resources/sim/registry.reg"));
        platform::DeactivateStreamDevices();
        iniPath = bench.directory + "/opm.ini";
        std::filesystem::copy_file(OPM_SOURCE_DIR "/Resources/sim/etc_gui/opm.ini", iniPath);
        // The meter's pauses pass at once; its 300 ms pauses count the measurements.
        auto sleep = [this](std::chrono::milliseconds pause) {
            if (pause.count() == 300) ++iterations;
        };
        meter = std::make_unique<ZuOPMMeter>(TNarrowString(iniPath.c_str()), L"SIM1PM2",
                                             std::make_unique<CHardwareOpmMeterBackend>(), sleep);
        meter->Start();
    }
    void TearDown() override {
        meter.reset();
        platform::DeactivateStreamDevices();
    }

    // Lets the worker finish `count` whole measurements from now.
    void Measurements(int count) {
        const int target = iterations.load() + count + 1;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (iterations.load() < target && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ASSERT_GE(iterations.load(), target) << "the worker stopped measuring";
    }
    // Input at the port, then enough measurements for the ranges to settle.
    float Reading(double dBm, int wavelength) {
        bench.Write(std::string(kBench) + "[input]\ndBm = " + std::to_string(dBm) +
                    "\nwavelength = " + std::to_string(wavelength) + "\n");
        Measurements(4);
        return meter->GetLastPower();
    }

    simtest::TempBench bench{kBench};
    std::string iniPath;
    std::atomic<int> iterations{0};
    std::unique_ptr<ZuOPMMeter> meter;
};

TEST_F(SimulatedInstrument, EveryWavelengthReadsTheBenchFromMinus70ToPlus5) {
    ASSERT_EQ(meter->GetWavelengthsNum(), 6);
    const double levels[] = {-70, -62, -54, -48, -40,   -31, -24, -16,   -8,
                             0,   5,   -3,  -12, -23.5, -35, -47, -53.5, -66};
    for (int slot = 0; slot < meter->GetWavelengthsNum(); ++slot) {
        meter->SetActiveWaveLengthIndex(slot);
        const int wavelength = meter->GetActiveWaveLength();
        for (double level : levels)
            EXPECT_NEAR(Reading(level, wavelength), level, kTolerance)
                << wavelength << " nm, range " << meter->GetCurrentRange();
    }
}

TEST_F(SimulatedInstrument, ZeroingInTheDarkKeepsTheLowestLevelsTrue) {
    bench.Write(std::string(kBench) + "[input]\nenabled = 0\n[adc]\noffset0 = 4000\n");
    Measurements(4);
    ASSERT_EQ(meter->GetCurrentRange(), 0);
    ASSERT_TRUE(meter->ZeroCalibration());
    EXPECT_NEAR(meter->GetZero(0), 4000 + 4190.1, 3.0);
    for (double level : {-70.0, -60.0, -20.0}) {
        bench.Write(std::string(kBench) +
                    "[adc]\noffset0 = 4000\n[input]\ndBm = " + std::to_string(level) + "\n");
        Measurements(4);
        EXPECT_NEAR(meter->GetLastPower(), level, kTolerance);
    }
}

TEST_F(SimulatedInstrument, CalibratingToAReferenceMakesAnAgedDetectorReadTrue) {
    const std::string aged = std::string(kBench) + "[detector]\nresponsivityScale = 0.8\n";
    bench.Write(aged + "[input]\ndBm = -10\n");
    Measurements(4);
    EXPECT_NEAR(meter->GetLastPower(), -10.0 + 10 * std::log10(0.8), kTolerance);
    ASSERT_TRUE(meter->CalibrateToReference(-10.0));
    for (double level : {-65.0, -30.0, 2.0}) {
        bench.Write(aged + "[input]\ndBm = " + std::to_string(level) + "\n");
        Measurements(4);
        EXPECT_NEAR(meter->GetLastPower(), level, kTolerance);
    }
    EXPECT_NE(ReadText(iniPath).find("[FactoryCalibration_SIM1PM2]"), std::string::npos);
}

TEST_F(SimulatedInstrument, TheDefaultSetsReadTrueWithTheirOwnWavelengthTables) {
    ASSERT_TRUE(meter->ResetFactoryCalibrationToDefault(nullptr, 1));
    ASSERT_TRUE(meter->ReloadFactoryCalibration());
    ASSERT_EQ(meter->GetWavelengthsNum(), 4);
    meter->SetActiveWaveLengthIndex(2);
    EXPECT_EQ(meter->GetActiveWaveLength(), 1310);
    EXPECT_NEAR(Reading(-37.0, 1310), -37.0, kTolerance);
    ASSERT_TRUE(meter->ResetFactoryCalibrationToDefault(nullptr, 2));
    ASSERT_TRUE(meter->ReloadFactoryCalibration());
    ASSERT_EQ(meter->GetWavelengthsNum(), 6);
    meter->SetActiveWaveLengthIndex(5);
    EXPECT_NEAR(Reading(-37.0, 1625), -37.0, kTolerance);
}

TEST_F(SimulatedInstrument, TheLoopedBackLaserReadsItsPowerLessTheCord) {
    bench.Write(
        std::string(kBench) +
        "[input]\nenabled = 0\n[loopback]\nenabled = 1\nlossDb = 3\n[laser2]\ndBm = -4.5\n");
    ASSERT_EQ(sim::Bench::Instance().ApplyLaserWord(2), sim::LaserBank::Result::Done);
    meter->SetActiveWaveLengthIndex(4);
    ASSERT_EQ(meter->GetActiveWaveLength(), 1550);
    Measurements(4);
    EXPECT_NEAR(meter->GetLastPower(), -7.5, kTolerance);
    ASSERT_EQ(sim::Bench::Instance().ApplyLaserWord(0x102), sim::LaserBank::Result::Done);
    Measurements(4);
    EXPECT_NEAR(meter->GetLastPower(), -10.5, kTolerance) << "modulated: half the mean power";
}

}  // namespace
