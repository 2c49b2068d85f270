// The measurement road: averaging, zero, conversion to dBm, range switching,
// zeroing and calibration against a reference, on the fake backend.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "PowerMeter/MeterFixture.h"
#include "PowerMeter/OPMMeter.h"

namespace meter_test {
namespace {

using MeterMeasurementTest = MeterFixture;

struct ConversionCase {
    const char* name;
    std::int32_t counts;  // every sample of range 1
    const char* zero1;    // dark offset of range 1
    float normalized;
    double unclamped;
    float power;
};

// Range 1 (R = 4096), slot 0 adds 1.25 dB: P = 10 lg(n) - 10 lg(4096) + 1.25.
const ConversionCase kConversions[] = {
    {"half scale", 2048, "0", 0.5f, -37.883899436317556, -37.883899436317556f},
    {"full scale", 4096, "0", 1.0f, -34.87359947967774, -34.87359947967774f},
    {"above full scale counts as full", 70000, "0", 1.0f, -34.87359947967774, -34.87359947967774f},
    {"a hundredth", 41, "0", 41.0f / 4096.0f, -54.86936039215813, -54.86936039215813f},
    {"zero offset subtracted", 2148, "100", 0.5f, -37.883899436317556, -37.883899436317556f},
    {"below the zero offset", 50, "100", 1e-7f, -104.8735994, -76.0f},
    {"at the zero offset", 100, "100", 0.0f, -std::numeric_limits<double>::infinity(), -76.0f},
};

TEST_F(MeterMeasurementTest, ConvertsAveragedCountsToDbmInRangeOne) {
    for (const ConversionCase& conversion : kConversions) {
        SCOPED_TRACE(conversion.name);
        std::string text = kFactoryFile;
        text.replace(text.find("Zero1=0"), 7, std::string("Zero1=") + conversion.zero1);
        WriteText(file, text);
        backend->SetCounts(1, conversion.counts);
        StartAndMeasure();

        EXPECT_EQ(meter->GetLastNormalizedValue(), conversion.normalized);
        if (std::isinf(conversion.unclamped)) {
            EXPECT_EQ(meter->GetLastPowerUnclamped(), -std::numeric_limits<float>::infinity());
        } else {
            EXPECT_NEAR(meter->GetLastPowerUnclamped(), conversion.unclamped, 1e-4);
        }
        EXPECT_FLOAT_EQ(meter->GetLastPower(), conversion.power);
        Reset();
    }
}

TEST_F(MeterMeasurementTest, UsesTheResistanceOfEachRangeAndTheActiveSlotsCoefficient) {
    // Range 1 reads 1/16 of full scale, below the down threshold: range 0 next.
    backend->SetCounts(1, 256);
    backend->SetCounts(0, 2048);
    StartAndMeasure(2);
    EXPECT_EQ(meter->GetCurrentRange(), 0);
    EXPECT_FLOAT_EQ(meter->GetLastPower(), -43.90449934959718f);

    Reset();
    backend->SetCounts(1, 4000);
    backend->SetCounts(2, 2048);
    MakeMeter().SetActiveWaveLengthIndex(1);  // +2.0 instead of +1.5
    StartAndMeasure(2);
    EXPECT_EQ(meter->GetCurrentRange(), 2);
    EXPECT_FLOAT_EQ(meter->GetLastPower(), -31.86329952303793f + 0.5f);
}

TEST_F(MeterMeasurementTest, AveragesSixtyReadsEachAfterAOneMillisecondPause) {
    for (int counts = 1; counts <= 60; ++counts) {
        backend->scriptedCounts.push_back(counts);
    }
    StartAndMeasure();
    EXPECT_EQ(meter->GetLastNormalizedValue(), 30.5f / 4096.0f);

    std::vector<int> expected{300};
    expected.insert(expected.end(), 60, 1);
    expected.push_back(300);
    EXPECT_EQ(sleep.Pauses(), expected);
    std::lock_guard guard(backend->mutex);
    EXPECT_EQ(backend->requests, std::vector<std::int32_t>(60, 128));
}

TEST_F(MeterMeasurementTest, FractionalFullScaleIsTruncatedForTheCapButDividesWhole) {
    std::string text = kFactoryFile;
    text.replace(text.find("MaxADC=4096"), 11, "MaxADC=4096.5");
    WriteText(file, text);
    backend->SetCounts(1, 5000);
    StartAndMeasure();
    EXPECT_EQ(meter->GetLastNormalizedValue(), 4096.0f / 4096.5f);
}

TEST_F(MeterMeasurementTest, ZeroResistancesReadPlusInfinityThroughTheClamp) {
    WriteText(file, "[Hardware]\nMaxADC=4096\n");
    backend->SetCounts(1, 2048);
    StartAndMeasure();
    EXPECT_EQ(meter->GetLastPower(), std::numeric_limits<float>::infinity());
}

struct RangeCase {
    const char* name;
    std::array<std::int32_t, 3> counts;  // per range
    int iterations;
    int range;
};

// Up at n > 0.75; down when n < 0.125 (0.5 scaled by the resistance ratio 1/4).
const RangeCase kRangeSteps[] = {
    {"exactly at the up threshold stays", {0, 3072, 0}, 1, 1},
    {"just above the up threshold steps up", {0, 3073, 0}, 1, 2},
    {"exactly at the down threshold stays", {0, 512, 0}, 1, 1},
    {"just below the down threshold steps down", {0, 511, 0}, 1, 0},
    {"range 2 tries no up switch", {0, 4000, 4096}, 3, 2},
    {"range 2 at its down threshold stays", {0, 4000, 512}, 3, 2},
    {"range 2 below its down threshold steps down", {0, 4000, 511}, 2, 1},
    {"range 0 tries no down switch", {0, 100, 0}, 3, 0},
    {"one step per measurement from range 0", {4096, 100, 100}, 2, 1},
};

TEST_F(MeterMeasurementTest, StepsTheGainRangeAtMostOnceAcrossStrictThresholds) {
    for (const RangeCase& step : kRangeSteps) {
        SCOPED_TRACE(step.name);
        for (int range = 0; range < 3; ++range) {
            backend->SetCounts(range, step.counts[range]);
        }
        StartAndMeasure(step.iterations);
        EXPECT_EQ(meter->GetCurrentRange(), step.range);
        EXPECT_EQ(backend->Range(), step.range);
        Reset();
    }
}

TEST_F(MeterMeasurementTest, WithoutThresholdsEveryReadingClimbsToRangeTwoAndStays) {
    std::string text = kFactoryFile;
    text.erase(text.find("ThreshSwitchUp=0.75\n"), 20);
    text.erase(text.find("ThreshSwitchDown=0.5\n"), 21);
    WriteText(file, text);
    backend->SetCounts(1, 10);
    backend->SetCounts(2, 10);
    StartAndMeasure(3);
    EXPECT_EQ(meter->GetCurrentRange(), 2);
}

TEST_F(MeterMeasurementTest, RangeSwitchesFollowTheAmplifierTable) {
    backend->SetCounts(1, 100);
    StartAndMeasure();
    // Start selects range 1, then the first measurement steps down to range 0.
    const std::vector<std::string> expected{
        "switch0 on", "switch1 off", "switch2 on",  "enable",
        "switch0 on", "switch1 off", "switch2 off",
    };
    EXPECT_EQ(backend->CallsWithoutReads(), expected);
}

TEST_F(MeterMeasurementTest, ZeroingTakesTheDarkOffsetOfEveryRangeAndSavesIt) {
    MakeMeter();
    backend->SetCounts(0, 300);
    backend->SetCounts(1, 200);
    backend->SetCounts(2, 100);
    EXPECT_TRUE(meter->ZeroCalibration());
    EXPECT_EQ(meter->GetZero(0), 300.0f);
    EXPECT_EQ(meter->GetZero(1), 200.0f);
    EXPECT_EQ(meter->GetZero(2), 100.0f);
    EXPECT_EQ(meter->GetCurrentRange(), 2);

    std::vector<int> expected{200};
    for (int range = 0; range < 3; ++range) {
        expected.push_back(100);
        expected.insert(expected.end(), 60, 1);
        expected.push_back(100);
    }
    EXPECT_EQ(sleep.Pauses(), expected);
    const std::string saved = ReadText(file);
    EXPECT_NE(saved.find("Zero0=300\nZero1=200\nZero2=100\n"), std::string::npos);
}

TEST_F(MeterMeasurementTest, ZeroingRunsBetweenTwoMeasurementsThenRangesWalkDown) {
    backend->SetCounts(0, 20);
    backend->SetCounts(1, 20);
    backend->SetCounts(2, 20);
    StartAndMeasure();
    ASSERT_EQ(meter->GetCurrentRange(), 0);
    EXPECT_TRUE(BetweenIterations([this] { return meter->ZeroCalibration(); }));
    EXPECT_EQ(meter->GetZero(1), 20.0f);
    ASSERT_TRUE(sleep.RunIterations(2));
    EXPECT_EQ(meter->GetLastNormalizedValue(), 0.0f);
    EXPECT_EQ(meter->GetLastPower(), -76.0f);

    // Zeroing leaves range 2; the dark reading then steps down once per measurement.
    const std::vector<std::string> zeroAndAfter{
        "switch0 on",  "switch1 off", "switch2 off",  // zero of range 0
        "switch0 on",  "switch1 off", "switch2 on",   // range 1
        "switch0 off", "switch1 on",  "switch2 on",   // range 2
        "switch0 on",  "switch1 off", "switch2 on",   // measured: down to 1
        "switch0 on",  "switch1 off", "switch2 off",  // measured: down to 0
    };
    const std::vector<std::string> calls = backend->CallsWithoutReads();
    ASSERT_GE(calls.size(), zeroAndAfter.size());
    EXPECT_EQ(std::vector<std::string>(calls.end() - zeroAndAfter.size(), calls.end()),
              zeroAndAfter);
}

TEST_F(MeterMeasurementTest, ZeroingInRangeTwoIsRefusedAndChangesNothing) {
    backend->SetCounts(1, 4000);
    backend->SetCounts(2, 4000);
    StartAndMeasure();
    ASSERT_EQ(meter->GetCurrentRange(), 2);
    EXPECT_FALSE(BetweenIterations([this] { return meter->ZeroCalibration(); }));
    for (int range = 0; range < 3; ++range) {
        EXPECT_EQ(meter->GetZero(range), 0.0f);
    }
}

TEST_F(MeterMeasurementTest, CalibrationToAReferenceMakesTheReadingThatReference) {
    backend->SetCounts(1, 2048);
    StartAndMeasure();
    EXPECT_TRUE(BetweenIterations([this] { return meter->CalibrateToReference(-10.0); }));
    EXPECT_FLOAT_EQ(meter->GetWaveCentralCoeff(0), 29.383899436317556f);
    ASSERT_TRUE(sleep.RunIterations(1));
    EXPECT_NEAR(meter->GetLastPower(), -10.0f, 1e-5);

    // Only the per-model section learns the coefficient.
    const std::string saved = ReadText(file);
    EXPECT_NE(saved.find("WaveCentralCoeff0=1.5\n"), std::string::npos);
    EXPECT_NE(saved.find("[FactoryCalibration_T100]\nWaveCentralCoeff0=29.3839\n"),
              std::string::npos);
}

TEST_F(MeterMeasurementTest, CalibrationWithAnUnreadableFileFailsButKeepsTheCoefficient) {
    backend->SetCounts(1, 2048);
    StartAndMeasure();
    const std::string missing = dir.File("missing/opm.ini");
    EXPECT_FALSE(BetweenIterations(
        [this, &missing] { return meter->CalibrateToReference(-10.0, missing.c_str()); }));
    EXPECT_FLOAT_EQ(meter->GetWaveCentralCoeff(0), 29.383899436317556f);
    EXPECT_EQ(ReadText(file), kFactoryFile);
}

TEST_F(MeterMeasurementTest, RereadFactoryCalibrationAppliesFromTheNextMeasurement) {
    backend->SetCounts(1, 2048);
    StartAndMeasure();
    ASSERT_FLOAT_EQ(meter->GetLastPower(), -37.883899436317556f);
    std::string text = kFactoryFile;
    text.replace(text.find("CalibrFreeCoeff=0.25"), 20, "CalibrFreeCoeff=1.25");
    WriteText(file, text);
    EXPECT_TRUE(BetweenIterations([this] { return meter->ReloadFactoryCalibration(); }));
    ASSERT_TRUE(sleep.RunIterations(1));
    EXPECT_FLOAT_EQ(meter->GetLastPower(), -36.883899436317556f);
}

}  // namespace
}  // namespace meter_test
