// The measurement road on a fake detector: conversion to dBm, range switching,
// zeroing, calibration against a reference, the worker's life and what ends it.

#include <QCoreApplication>
#include <limits>

#include "PowerMeter/MeterTestSupport.h"

namespace metertest {
namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();
using Calls = std::vector<std::string>;

// Range 1 (R = 4096): P = 10 lg(n) - 10 lg(4096) + coefficient of the slot + 0.25 - 0.5.
const struct ConversionRow {
    const char *name, *from, *to;  // an edit of the factory file
    int slot;
    std::int32_t counts;  // every sample, in range 1
    float normalized, unclamped, power;
} kConversions[] = {
    // clang-format off
    {"half scale", "Zero1=0", "Zero1=0", 0, 2048, 0.5f, -37.8838994f, -37.8838994f},
    {"full scale", "Zero1=0", "Zero1=0", 0, 4096, 1.0f, -34.8735995f, -34.8735995f},
    {"above full scale counts as full", "Zero1=0", "Zero1=0", 0, 70000, 1.0f, -34.8735995f, -34.8735995f},
    {"a hundredth", "Zero1=0", "Zero1=0", 0, 41, 41.0f / 4096, -54.8693604f, -54.8693604f},
    {"slot 1", "Zero1=0", "Zero1=0", 1, 2048, 0.5f, -37.3838994f, -37.3838994f},
    {"no slot 10", "Zero1=0", "Zero1=0", 10, 2048, 0.5f, -39.3838994f, -39.3838994f},
    {"zero offset subtracted", "Zero1=0", "Zero1=100", 0, 2148, 0.5f, -37.8838994f, -37.8838994f},
    {"below the zero offset", "Zero1=0", "Zero1=100", 0, 50, 1e-7f, -104.8735994f, -76.0f},
    {"at the zero offset", "Zero1=0", "Zero1=100", 0, 100, 0.0f, -kInf, -76.0f},
    {"fractional full scale caps whole", "MaxADC=4096", "MaxADC=4096.5", 0, 5000, 4096 / 4096.5f, -34.8741297f, -34.8741297f},
    {"no resistance, no upper clamp", "Resistor0=1024\nResistor1=3072", "Resistor0=0\nResistor1=0", 0, 2048, 0.5f, kInf, kInf},
    // clang-format on
};

TEST_F(MeterTest, ConvertsAveragedCountsToDbm) {
    for (const ConversionRow& row : kConversions) {
        SCOPED_TRACE(row.name);
        Make(Replace(kFactoryFile, row.from, row.to)).SetActiveWaveLengthIndex(row.slot);
        SetCounts({0, row.counts, 0});
        Measure();
        EXPECT_EQ(meter->GetLastNormalizedValue(), row.normalized);
        EXPECT_FLOAT_EQ(meter->GetLastPowerUnclamped(), row.unclamped);
        EXPECT_FLOAT_EQ(meter->GetLastPower(), row.power);
        Reset();
    }
}

// Up when n > 0.75; down when n < 0.5 * R(r) / R(r - 1), that is 0.125 of full scale.
const struct RangeRow {
    const char* name;
    std::array<std::int32_t, 3> counts;
    int measurements, range;
    float power;  // of the last measurement
} kRangeSteps[] = {
    // clang-format off
    {"exactly at the up threshold stays", {0, 3072, 0}, 1, 1, -36.1229868f},
    {"just above the up threshold steps up", {0, 3073, 0}, 1, 2, -36.1215734f},
    {"exactly at the down threshold stays", {0, 512, 0}, 1, 1, -43.9044993f},
    {"just below the down threshold steps down", {0, 511, 0}, 1, 0, -43.9129900f},
    {"range 0", {2048, 256, 0}, 2, 0, -43.9044993f},
    {"range 0 tries no down switch", {0, 100, 0}, 3, 0, -76.0f},
    {"range 2", {0, 4000, 2048}, 2, 2, -31.8632995f},
    {"range 2 tries no up switch", {0, 4000, 4096}, 3, 2, -28.8529996f},
    {"range 2 at its down threshold stays", {0, 4000, 512}, 3, 2, -37.8838994f},
    {"range 2 below its down threshold steps down", {0, 4000, 511}, 2, 1, -37.8923900f},
    {"one step per measurement", {4096, 100, 100}, 2, 1, -40.8941994f},
    // clang-format on
};

TEST_F(MeterTest, StepsTheGainRangeAtMostOnceAcrossStrictThresholds) {
    for (const RangeRow& row : kRangeSteps) {
        SCOPED_TRACE(row.name);
        SetCounts(row.counts);
        Measure(row.measurements);
        EXPECT_EQ(meter->GetCurrentRange(), row.range);
        EXPECT_EQ(detector->Range(), row.range);
        EXPECT_FLOAT_EQ(meter->GetLastPower(), row.power);
        Reset();
    }
}

TEST_F(MeterTest, AveragesSixtyRequestedReads) {
    for (int counts = 1; counts <= 60; ++counts) detector->script.push_back(counts);
    Measure();
    EXPECT_EQ(meter->GetLastNormalizedValue(), 30.5f / 4096);
    EXPECT_EQ(detector->Get(detector->reads), 60);
}

TEST_F(MeterTest, ZeroingTakesEveryRangesOffsetSavesItAndLeavesRangeTwo) {
    SetCounts({300, 200, 100});
    EXPECT_TRUE(Make().ZeroCalibration());
    EXPECT_EQ((std::array{meter->GetZero(0), meter->GetZero(1), meter->GetZero(2)}),
              (std::array{300.0f, 200.0f, 100.0f}));
    EXPECT_NE(ReadText(file).find("Zero0=300\nZero1=200\nZero2=100\n"), std::string::npos);
    EXPECT_EQ(meter->GetCurrentRange(), 2);
}

TEST_F(MeterTest, ZeroingRunsBetweenTwoMeasurementsButNotInRangeTwo) {
    SetCounts({20, 20, 20});
    Measure();
    EXPECT_TRUE(BetweenIterations([this] { return meter->ZeroCalibration(); }));
    EXPECT_EQ(meter->GetZero(1), 20.0f);
    Measure(2);  // the dark reading steps down from range 2
    EXPECT_EQ(meter->GetCurrentRange(), 0);
    EXPECT_EQ(meter->GetLastNormalizedValue(), 0.0f);
    Reset();
    SetCounts({4000, 4000, 4000});
    Measure();
    ASSERT_EQ(meter->GetCurrentRange(), 2);
    EXPECT_FALSE(BetweenIterations([this] { return meter->ZeroCalibration(); }));
    EXPECT_EQ(meter->GetZero(0) + meter->GetZero(1) + meter->GetZero(2), 0.0f);
    EXPECT_EQ(ReadText(file), kFactoryFile);
}

TEST_F(MeterTest, CalibrationToAReferenceMakesTheReadingThatReference) {
    SetCounts({0, 2048, 0});
    Measure();
    EXPECT_TRUE(BetweenIterations([this] { return meter->CalibrateToReference(-10.0); }));
    EXPECT_FLOAT_EQ(meter->GetWaveCentralCoeff(0), 29.3838994f);
    Measure();
    EXPECT_NEAR(meter->GetLastPower(), -10.0f, 1e-5);
    // Only the per-model section learns the coefficient.
    EXPECT_EQ(ReadText(file),
              kFactoryFile + "[FactoryCalibration_T100]\nWaveCentralCoeff0=29.3839\n\n");
    const std::string missing = dir + "/missing/opm.ini";
    EXPECT_FALSE(
        BetweenIterations([&] { return meter->CalibrateToReference(-20, missing.c_str()); }));
    EXPECT_FLOAT_EQ(meter->GetWaveCentralCoeff(0), 19.3838994f);
}

TEST_F(MeterTest, CalibrationAgainstADarkOrAbsentReadingIsRefused) {
    for (bool measured : {false, true}) {
        SCOPED_TRACE(measured ? "input at the dark offset" : "no measurement yet");
        const std::string text = Replace(kFactoryFile, "Zero1=0", "Zero1=100");
        Make(text);
        SetCounts({0, 100, 0});
        const auto calibrate = [this] { return meter->CalibrateToReference(-10.0); };
        if (measured) Measure();
        EXPECT_FALSE(measured ? BetweenIterations(calibrate) : calibrate());
        EXPECT_EQ(meter->GetWaveCentralCoeff(0), 1.5f);
        EXPECT_EQ(ReadText(file), text);
        Reset();
    }
}

TEST_F(MeterTest, StopWhileAnOperationWaitsForTheLockLetsItRunThenEndsTheWorker) {
    for (bool zeroing : {true, false}) {
        SCOPED_TRACE(zeroing ? "zeroing" : "calibration");
        SetCounts({2048, 2048, 2048});
        Measure();
        std::future<bool> operation = std::async(std::launch::async, [this, zeroing] {
            return zeroing ? meter->ZeroCalibration() : meter->CalibrateToReference(-10.0);
        });
        meter->Stop();
        sleep->Release();
        ASSERT_EQ(operation.wait_for(SteppedSleep::kGiveUp), std::future_status::ready)
            << "deadlock";
        EXPECT_TRUE(operation.get());
        EXPECT_TRUE(WaitFor([this] { return !meter->IsRunning(); }));
        meter.reset();
        EXPECT_EQ(detector->Get(detector->calls), (Calls{"enable", "disable", "destroyed"}));
        Reset();
    }
}

TEST_F(MeterTest, TheWorkerStartsOnceStopsAfterItsMeasurementAndARestartWaitsForIt) {
    const auto calls = [this] { return detector->Get(detector->calls); };
    Make().Stop();  // not running: nothing to stop
    Measure(2);
    meter->Start();  // running: ignored
    Measure();
    EXPECT_EQ(detector->Get(detector->reads), 180);
    meter->Stop();
    sleep->Release();
    meter->Start();
    EXPECT_TRUE(WaitFor([&] { return calls().size() == 3 && meter->IsRunning(); }));
    meter.reset();
    EXPECT_EQ(calls(), (Calls{"enable", "disable", "enable", "disable", "destroyed"}));
    // A Stop right after the Start still ends the worker; an idle meter touches no hardware.
    Reset();
    Make().Start();
    meter->Stop();
    sleep->Release();
    EXPECT_TRUE(WaitFor([&] {
        return !meter->IsRunning() && calls() == Calls{"enable", "disable"};
    }));
    Reset();
    Make();
    meter.reset();
    EXPECT_EQ(calls(), Calls{"destroyed"});
}

TEST_F(MeterTest, AnExceptionLeavingTheWorkerTakesTheFatalPathWithItsText) {
    const auto failing = [this](int failure) {
        detector->failure = failure;
        ZuOPMMeter meter(file.c_str(), L"T100", std::make_unique<FakeBackend>(detector));
        meter.Start();
        std::this_thread::sleep_for(SteppedSleep::kGiveUp);
        std::fprintf(stderr, "the worker's exception did not end the process\n");
        std::exit(0);
    };
    EXPECT_EXIT(failing(1), testing::ExitedWithCode(1), "(^|\n)detector gone\nFile: OPMMeter\n");
    EXPECT_EXIT(failing(2), testing::ExitedWithCode(1),
                "(^|\n)Unknown exception\nFile: OPMMeter\n");
}

class Receiver : public QObject {
public:
    std::vector<std::array<std::uintptr_t, 3>> received;

protected:
    bool event(QEvent* e) override {
        if (e->type() < QEvent::User) return QObject::event(e);
        const auto* message = static_cast<WindowMessageEvent*>(e);
        received.push_back(
            {message->Message(), message->WParam(), std::uintptr_t(message->LParam())});
        return true;
    }
};

TEST_F(MeterTest, EverySubscribedWindowGetsTheNewValueOnceAfterEachMeasurement) {
    static int argc = 1;
    static char name[] = "OPMMeterTests", *argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    Receiver first, second, *gone = new Receiver;
    Make();
    EXPECT_FALSE(meter->Subscribe(nullptr));
    for (Receiver* window : {&first, gone, &second})
        EXPECT_TRUE(meter->Subscribe(WindowHandleOf(window)));
    EXPECT_FALSE(meter->Subscribe(WindowHandleOf(&first)));
    delete gone;
    Measure(2);
    QCoreApplication::processEvents();
    const std::array<std::uintptr_t, 3> message{1051, reinterpret_cast<std::uintptr_t>(meter.get()),
                                                0};
    EXPECT_EQ(first.received, decltype(first.received)(2, message));
    EXPECT_EQ(second.received, first.received);

    EXPECT_TRUE(meter->Unsubscribe(WindowHandleOf(&first)));
    EXPECT_FALSE(meter->Unsubscribe(WindowHandleOf(&first)));
    EXPECT_FALSE(meter->IsSubscribed(WindowHandleOf(&first)));
    EXPECT_TRUE(meter->IsSubscribed(WindowHandleOf(&second)));
    Measure();
    QCoreApplication::processEvents();
    EXPECT_EQ(first.received.size(), 2u);
    EXPECT_EQ(second.received.size(), 3u);

    // Earns its keep under ThreadSanitizer only: subscribing and reading while the worker runs
    // freely.
    sleep->Release();
    std::thread other([&] {
        for (int round = 0; round < 300; ++round) {
            meter->Unsubscribe(WindowHandleOf(&first));
            meter->Subscribe(WindowHandleOf(&first));
        }
    });
    for (int round = 0; round < 300; ++round) {
        meter->SetActiveWaveLengthIndex(round % 3);
        EXPECT_GE(meter->GetLastPower(), ZuOPMMeter::kMinPower);
    }
    other.join();
}

}  // namespace
}  // namespace metertest
