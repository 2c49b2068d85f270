// The meter on a fake detector: conversion to dBm, range switching, zeroing,
// calibration against a reference, the worker's life and what ends it, and
// the calibration file (what is loaded from which section, what each
// operation writes back). The factory file's numbers are exact in binary:
// R(0) = 16384, R(1) = 4096, R(2) = 1024, full scale 4096 counts, slot 0 adds
// 1.5 + 0.25 - 0.5 dB.

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <filesystem>
#include <fstream>
#include <future>
#include <semaphore>

#include "PowerMeter/Measurement/OPMMeter.h"
#include "Support/ScratchDirectory.h"

namespace {

using namespace std::chrono_literals;
constexpr auto kGiveUp = 20s;  // matters only when a test fails

const std::string kFactoryFile =
    "[WaveLengths]\nWavesNum=3\nWaveLength0=1310\nWaveLength1=1550\nWaveLength2=850\n\n"
    "[Hardware]\nMaxADC=4096\nResistor0=1024\nResistor1=3072\nResistor2=12288\n\n"
    "[FactoryCalibration]\nRefPowerCoeff=-0.5\nCalibrFreeCoeff=0.25\nThreshSwitchUp=0.75\n"
    "ThreshSwitchDown=0.5\nWaveCentralCoeff0=1.5\nWaveCentralCoeff1=2\nWaveCentralCoeff2=-1\n\n"
    "[UserCalibration]\nZero0=0\nZero1=0\nZero2=0\n\n"
    "[SoftwareState]\nActiveWaveLength=1310\nActiveWaveLengthIndex=0\nWaveLengthShift=0\n"
    "ReferenceLevel0=0\nReferenceLevel1=0\nReferenceLevel2=0\n\n";

std::string Replace(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);  // throws when `from` is absent
}

// Counts per gain range as the amplifier's switches select it. Shared with the
// test, as the meter deletes its backend; every call but a read is recorded.
struct Detector {
    std::mutex mutex;
    std::array<bool, 3> switches{};
    std::array<std::int32_t, 3> counts{};
    std::vector<std::string> calls;
    int reads = 0;
    int failure = 0;  // 1: reads throw a standard exception, 2: something else

    int Range() const {
        static constexpr std::array<std::array<bool, 3>, 3> kWiring{
            {{true, false, false}, {true, false, true}, {false, true, true}}};
        return std::find(kWiring.begin(), kWiring.end(), switches) - kWiring.begin();
    }
    template <typename Value>
    Value Get(const Value& field) {
        std::lock_guard guard(mutex);
        return field;
    }
};

struct FakeBackend : COpmMeterBackend {
    explicit FakeBackend(std::shared_ptr<Detector> detector) : d(std::move(detector)) {}
    ~FakeBackend() override { Record("destroyed"); }
    std::int32_t ReadPower(std::int32_t request) override {
        std::lock_guard guard(d->mutex);
        ++d->reads;
        if (d->failure == 1) throw std::runtime_error("detector gone");
        if (d->failure == 2) throw 42;
        return request != ZuOPMMeter::kReadRequest || d->Range() > 2 ? -1 : d->counts[d->Range()];
    }
    bool SetSwitch(int index, bool on) override {
        std::lock_guard guard(d->mutex);
        return d->switches.at(index) = on, true;
    }
    bool SetEnabled(bool enable) override { return Record(enable ? "enable" : "disable"); }
    bool Record(const char* call) {
        std::lock_guard guard(d->mutex);
        return d->calls.push_back(call), true;
    }
    std::shared_ptr<Detector> d;
};

// The worker's 300 ms pause blocks until the test lets iterations run; other pauses pass.
struct SteppedSleep {
    ZuOPMMeter::SleepFunction Function() {
        return [this](std::chrono::milliseconds pause) {
            if (pause != 300ms) return;
            paused.release();
            if (!released) go.acquire();
        };
    }
    // Lets the worker measure `count` more times; false if it does not get back to its pause.
    bool Run(int count) {
        for (int i = 0; i <= count; ++i) {
            if (!paused.try_acquire_for(kGiveUp)) return false;
            if (i < count) go.release();
        }
        paused.release();  // it still sits there
        return true;
    }
    void Release() {
        released = true;
        go.release();
    }

    std::counting_semaphore<> paused{0}, go{0};
    std::atomic<bool> released{false};
};

bool WaitFor(const std::function<bool()>& condition) {
    const auto giveUp = std::chrono::steady_clock::now() + kGiveUp;
    while (!condition() && std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(1ms);
    return condition();
}

class MeterTest : public testing::Test {
protected:
    void TearDown() override {
        Reset();
        std::filesystem::remove(file);
    }
    // Back to no meter, a fresh detector and fresh pauses, for table rows.
    void Reset() {
        sleep->Release();
        meter.reset();
        detector = std::make_shared<Detector>();
        sleep = std::make_unique<SteppedSleep>();
    }
    ZuOPMMeter& Make(const std::string& text = kFactoryFile, const std::wstring& model = L"T100") {
        std::ofstream(file) << text;
        meter = std::make_unique<ZuOPMMeter>(
            file.c_str(), model, std::make_unique<FakeBackend>(detector), sleep->Function());
        return *meter;
    }
    std::string ReadText() const { return ScratchDirectory::Read(file); }
    // Starts the meter (made from the factory file if there is none) and lets it measure.
    void Measure(int count = 1) {
        if (!meter) Make();
        if (!meter->IsRunning()) meter->Start();
        ASSERT_TRUE(sleep->Run(count)) << "the worker did not come back to its pause";
    }
    std::vector<std::string> Calls() { return detector->Get(detector->calls); }
    void SetCounts(std::array<std::int32_t, 3> counts) {
        std::lock_guard guard(detector->mutex);
        detector->counts = counts;
    }
    // Runs `operation` on another thread and lets the worker measure until it has run.
    bool BetweenIterations(const std::function<bool()>& operation) {
        std::future<bool> result = std::async(std::launch::async, operation);
        const auto giveUp = std::chrono::steady_clock::now() + kGiveUp;
        while (result.wait_for(0s) != std::future_status::ready &&
               std::chrono::steady_clock::now() < giveUp && sleep->Run(1))
            continue;
        const bool inBetween = result.wait_for(0s) == std::future_status::ready;
        if (!inBetween) sleep->Release();  // lets the operation end
        EXPECT_TRUE(inBetween) << "the operation never got in between two measurements";
        return result.get();
    }

    std::string dir = std::filesystem::temp_directory_path();
    std::string file = dir + "/opm-meter-" + std::to_string(getpid()) + ".ini";
    std::shared_ptr<Detector> detector = std::make_shared<Detector>();
    std::unique_ptr<SteppedSleep> sleep = std::make_unique<SteppedSleep>();
    std::unique_ptr<ZuOPMMeter> meter;
};

constexpr float kInf = std::numeric_limits<float>::infinity();
// P = 10 lg(n) - 10 lg(R) + coefficient of the slot + 0.25 - 0.5, with R(1) = 4096 at the
// start. Up when n > 0.75; down when n < 0.5 * R(r) / R(r - 1), that is 0.125 of full scale.
const struct MeasurementRow {
    const char *name, *from, *to;  // an edit of the factory file
    int slot;
    std::array<std::int32_t, 3> counts;  // every sample, per range
    int measurements, range;             // the range after them
    float normalized, unclamped, power;  // of the last one
} kMeasurements[] = {
    // clang-format off
    {"half scale", "", "", 0, {0, 2048, 0}, 1, 1, 0.5f, -37.8838994f, -37.8838994f},
    {"full scale", "", "", 0, {0, 4096, 0}, 1, 2, 1.0f, -34.8735995f, -34.8735995f},
    {"above full scale counts as full", "", "", 0, {0, 70000, 0}, 1, 2, 1.0f, -34.8735995f, -34.8735995f},
    {"slot 1", "", "", 1, {0, 2048, 0}, 1, 1, 0.5f, -37.3838994f, -37.3838994f},
    {"no slot 10", "", "", 10, {0, 2048, 0}, 1, 1, 0.5f, -39.3838994f, -39.3838994f},
    {"zero offset subtracted", "Zero1=0", "Zero1=100", 0, {0, 2148, 0}, 1, 1, 0.5f, -37.8838994f, -37.8838994f},
    {"below the zero offset", "Zero1=0", "Zero1=100", 0, {0, 50, 0}, 1, 0, 1e-7f, -104.8735994f, -76.0f},
    {"at the zero offset", "Zero1=0", "Zero1=100", 0, {0, 100, 0}, 1, 0, 0.0f, -kInf, -76.0f},
    {"fractional full scale caps whole", "MaxADC=4096", "MaxADC=4096.5", 0, {0, 5000, 0}, 1, 2, 4096 / 4096.5f, -34.8741297f, -34.8741297f},
    {"no resistance, no upper clamp", "Resistor0=1024\nResistor1=3072", "Resistor0=0\nResistor1=0", 0, {0, 2048, 0}, 1, 1, 0.5f, kInf, kInf},
    {"exactly at the up threshold stays", "", "", 0, {0, 3072, 0}, 1, 1, 0.75f, -36.1229868f, -36.1229868f},
    {"just above the up threshold steps up", "", "", 0, {0, 3073, 0}, 1, 2, 3073 / 4096.0f, -36.1215734f, -36.1215734f},
    {"just below the down threshold steps down", "", "", 0, {0, 511, 0}, 1, 0, 511 / 4096.0f, -43.9129900f, -43.9129900f},
    {"range 0", "", "", 0, {2048, 256, 0}, 2, 0, 0.5f, -43.9044993f, -43.9044993f},
    {"range 0 tries no down switch", "", "", 0, {0, 100, 0}, 3, 0, 0.0f, -kInf, -76.0f},
    {"range 2", "", "", 0, {0, 4000, 2048}, 2, 2, 0.5f, -31.8632995f, -31.8632995f},
    {"range 2 tries no up switch", "", "", 0, {0, 4000, 4096}, 3, 2, 1.0f, -28.8529996f, -28.8529996f},
    {"range 2 at its down threshold stays", "", "", 0, {0, 4000, 512}, 3, 2, 0.125f, -37.8838994f, -37.8838994f},
    {"range 2 below its down threshold steps down", "", "", 0, {0, 4000, 511}, 2, 1, 511 / 4096.0f, -37.8923900f, -37.8923900f},
    {"one step per measurement", "", "", 0, {4096, 100, 100}, 2, 1, 1.0f, -40.8941994f, -40.8941994f},
    // clang-format on
};

TEST_F(MeterTest, ConvertsAveragedCountsToDbmAndStepsTheRangeAcrossStrictThresholds) {
    for (const MeasurementRow& row : kMeasurements) {
        SCOPED_TRACE(row.name);
        Make(Replace(kFactoryFile, row.from, row.to)).SetActiveWaveLengthIndex(row.slot);
        SetCounts(row.counts);
        Measure(row.measurements);
        EXPECT_EQ(meter->GetCurrentRange(), row.range);
        EXPECT_EQ(meter->GetLastNormalizedValue(), row.normalized);
        EXPECT_FLOAT_EQ(meter->GetLastPowerUnclamped(), row.unclamped);
        EXPECT_FLOAT_EQ(meter->GetLastPower(), row.power);
        Reset();
    }
}

TEST_F(MeterTest, ZeroingTakesEveryRangesOffsetBetweenTwoMeasurementsButNotInRangeTwo) {
    SetCounts({300, 200, 100});
    Measure();
    EXPECT_TRUE(BetweenIterations([this] { return meter->ZeroCalibration(); }));
    EXPECT_EQ((std::array{meter->GetZero(0), meter->GetZero(1), meter->GetZero(2)}),
              (std::array{300.0f, 200.0f, 100.0f}));
    EXPECT_NE(ReadText().find("Zero0=300\nZero1=200\nZero2=100\n"), std::string::npos);
    Measure(2);  // zeroing leaves range 2; the dark reading steps down once per measurement
    EXPECT_EQ(meter->GetCurrentRange(), 0);
    Reset();
    SetCounts({4000, 4000, 4000});
    Measure();
    EXPECT_FALSE(BetweenIterations([this] { return meter->ZeroCalibration(); }));
    EXPECT_EQ(ReadText(), kFactoryFile);
}

TEST_F(MeterTest, CalibrationToAReferenceMakesTheReadingThatReference) {
    SetCounts({0, 2048, 0});
    Measure();
    EXPECT_TRUE(BetweenIterations([this] { return meter->CalibrateToReference(-10.0); }));
    EXPECT_FLOAT_EQ(meter->GetWaveCentralCoeff(0), 29.3838994f);
    Measure();
    EXPECT_NEAR(meter->GetLastPower(), -10.0f, 1e-5);
    // Only the per-model section learns the coefficient.
    EXPECT_EQ(ReadText(),
              kFactoryFile + "[FactoryCalibration_T100]\nWaveCentralCoeff0=29.3839\n\n");
}

TEST_F(MeterTest, CalibrationAgainstADarkOrAbsentReadingIsRefused) {
    const std::string text = Replace(kFactoryFile, "Zero1=0", "Zero1=100");
    for (bool measured : {false, true}) {  // at the dark offset, or no measurement yet
        Make(text);
        SetCounts({0, 100, 0});
        if (measured) Measure();
        const auto calibrate = [this] { return meter->CalibrateToReference(-10.0); };
        EXPECT_FALSE(measured ? BetweenIterations(calibrate) : calibrate()) << measured;
        EXPECT_EQ(meter->GetWaveCentralCoeff(0), 1.5f);
        EXPECT_EQ(ReadText(), text);
        Reset();
    }
}

TEST_F(MeterTest, StopWhileAnOperationWaitsForTheLockLetsItRunThenEndsTheWorker) {
    for (bool zeroing : {true, false}) {
        SetCounts({2048, 2048, 2048});
        Measure();
        std::future<bool> operation = std::async(std::launch::async, [this, zeroing] {
            return zeroing ? meter->ZeroCalibration() : meter->CalibrateToReference(-10.0);
        });
        meter->Stop();
        sleep->Release();
        ASSERT_EQ(operation.wait_for(kGiveUp), std::future_status::ready) << zeroing;
        EXPECT_TRUE(operation.get() && WaitFor([this] { return !meter->IsRunning(); }));
        meter.reset();
        EXPECT_EQ(Calls(), (std::vector<std::string>{"enable", "disable", "destroyed"}));
        Reset();
    }
}

TEST_F(MeterTest, TheWorkerStartsOnceStopsAfterItsMeasurementARestartWaitsAndDestructionSaves) {
    using Lines = std::vector<std::string>;
    Measure(2);
    meter->Start();  // running: ignored
    Measure();
    EXPECT_EQ(detector->Get(detector->reads), 180);
    meter->Stop();
    sleep->Release();
    meter->Start();
    EXPECT_TRUE(WaitFor([&] { return Calls().size() == 3 && meter->IsRunning(); }));
    meter.reset();
    EXPECT_EQ(Calls(), (Lines{"enable", "disable", "enable", "disable", "destroyed"}));
    // A Stop right after the Start still ends the worker; an idle meter touches no hardware.
    Reset();
    Make().Start();
    meter->Stop();
    sleep->Release();
    EXPECT_TRUE(WaitFor([&] {
        return !meter->IsRunning() && Calls() == Lines{"enable", "disable"};
    }));
    Reset();
    Make().SetActiveWaveLengthIndex(2);
    meter.reset();  // saving the user state
    EXPECT_EQ(Calls(), Lines{"destroyed"});
    EXPECT_NE(ReadText().find("=850\nActiveWaveLengthIndex=2\n"), std::string::npos);
}

TEST_F(MeterTest, AnExceptionLeavingTheWorkerTakesTheFatalPathWithItsText) {
    const auto failing = [this](int failure) {
        detector->failure = failure;
        ZuOPMMeter meter(file.c_str(), L"T100", std::make_unique<FakeBackend>(detector));
        meter.Start();
        std::this_thread::sleep_for(kGiveUp);
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
    bool event(QEvent* e) override {
        const auto* message = static_cast<WindowMessageEvent*>(e);
        if (e->type() < QEvent::User) return QObject::event(e);
        received.push_back(
            {message->Message(), message->WParam(), std::uintptr_t(message->LParam())});
        return true;
    }
};

TEST_F(MeterTest, EverySubscribedWindowGetsTheNewValueOnceAfterEachMeasurement) {
    static int argc = 1;
    static char name[] = "OPMMeterTests", *argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    Receiver first, second;
    const HWND one = WindowHandleOf(&first), two = WindowHandleOf(&second);
    Make();
    EXPECT_TRUE(meter->Subscribe(one) && meter->Subscribe(two));
    EXPECT_FALSE(meter->Subscribe(nullptr) || meter->Subscribe(one));
    Measure(2);
    QCoreApplication::processEvents();
    const std::array<std::uintptr_t, 3> message{1051, std::uintptr_t(meter.get()), 0};
    EXPECT_EQ(first.received, decltype(first.received)(2, message));
    EXPECT_EQ(second.received, first.received);
    EXPECT_TRUE(meter->Unsubscribe(one) && !meter->Unsubscribe(one));
    EXPECT_TRUE(!meter->IsSubscribed(one) && meter->IsSubscribed(two));

    // Earns its keep under ThreadSanitizer only: subscribing and reading while the worker runs.
    sleep->Release();
    std::thread other([&] {
        for (int round = 0; round < 300; ++round) meter->Unsubscribe(one) || meter->Subscribe(one);
    });
    for (int round = 0; round < 300; ++round) meter->SetActiveWaveLengthIndex(round % 3);
    other.join();
}

std::string Edited(std::initializer_list<std::pair<const char*, const char*>> edits,
                   const std::string& appended = {}) {
    std::string text = kFactoryFile;
    for (const auto& [from, to] : edits) text = Replace(text, from, to);
    return text + appended;
}

const std::string kModel =
    "[FactoryCalibration_T100]\nCalibrFreeCoeff=0.75\nWaveCentralCoeff1=4\nMode=PM1\n\n"
    "[WaveLengths_PM1]\nWavesNum=2\nWaveLength0=1310\nWaveLength1=1490\n\n"
    "[WaveLengths_PM2]\nWavesNum=4\nWaveLength0=850\nWaveLength1=1300\nWaveLength2=1310\n"
    "WaveLength3=1625\n\n";

TEST_F(MeterTest, LoadsEachValueFromItsSectionWithPerModelOverrides) {
    // Slots, WaveLength(1), active wavelength, MaxADC, RefPowerCoeff, CalibrFreeCoeff,
    // ThreshSwitchUp, ThreshSwitchDown, WaveCentralCoeff(1), Zero(2), ReferenceLevel(1).
    using Loaded = std::array<float, 11>;
    const struct {
        const char* name;
        std::string text;
        const wchar_t* model;
        Loaded expected;
    } rows[] = {
        // clang-format off
        {"factory file", kFactoryFile, L"T100", {3, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"empty file", "", L"T100", {}},
        {"capped at ten", Edited({{"WavesNum=3", "WavesNum=12"}}), L"T100", {10, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"negative: every slot", Edited({{"WavesNum=3", "WavesNum=-1"}}), L"T100", {10, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"no number: no slots", Edited({{"WavesNum=3", "WavesNum=abc"}}), L"T100", {0, 0, 0, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 0, 0, 0}},
        {"active wavelength from the active slot", Edited({{"ActiveWaveLength=1310", "ActiveWaveLength=9999"}, {"Index=0", "Index=2"}}), L"T100", {3, 1550, 850, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"user values", Edited({{"Zero2=0", "Zero2=12.5"}, {"ReferenceLevel1=0", "ReferenceLevel1=-3.25"}}), L"T100", {3, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 12.5f, -3.25f}},
        {"no numbers", Edited({{"Up=0.75", "Up=abc"}, {"Down=0.5", "Down"}, {"RefPowerCoeff=-0.5", "RefPowerCoeff="}}), L"T100", {3, 1550, 1310, 4096, 0, 0.25f, 0.95f, 0.95f, 2, 0, 0}},
        {"model section and its table", Edited({}, kModel), L"T100", {2, 1490, 1310, 4096, -0.5f, 0.75f, 0.75f, 0.5f, 4, 0, 0}},
        {"mode PM2", Edited({}, Replace(kModel, "PM1\n\n", "PM2\n\n")), L"T100", {4, 1300, 850, 4096, -0.5f, 0.75f, 0.75f, 0.5f, 4, 0, 0}},
        {"mode without a table", Edited({}, Replace(kModel, "PM1\n\n", "PM9\n\n")), L"T100", {3, 1550, 1310, 4096, -0.5f, 0.75f, 0.75f, 0.5f, 4, 0, 0}},
        {"another model", Edited({}, kModel), L"T200", {3, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ZuOPMMeter& m = Make(row.text, row.model);
        const Loaded loaded{float(m.GetWavelengthsNum()),   float(m.GetWaveLength(1)),
                            float(m.GetActiveWaveLength()), m.GetMaxADC(),
                            m.GetRefPowerCoeff(),           m.GetCalibrFreeCoeff(),
                            m.GetThreshSwitchUp(),          m.GetThreshSwitchDown(),
                            m.GetWaveCentralCoeff(1),       m.GetZero(2),
                            m.GetReferenceLevel(1)};
        EXPECT_EQ(loaded, row.expected);
        Reset();
    }
}

TEST_F(MeterTest, EachFileOperationWritesExactlyItsPartOrNothing) {
    const std::string sets = kFactoryFile +
                             "[FactoryCalibration_T100]\nWaveCentralCoeff0=9\nStale=1\n\n" +
                             "[FactoryCalibration_xxxxPM1]\nMode=PM1\nWaveCentralCoeff0=0.125\n\n";
    const std::string reloaded = Edited({{"MaxADC=4096", "MaxADC=1"},
                                         {"CalibrFreeCoeff=0.25\n", ""},
                                         {"Up=0.75", "Up=0.875"},
                                         {"Zero0=0", "Zero0=5"}});
    using Values = std::array<float, 4>;
    const struct {
        const char* name;
        std::string text;
        const wchar_t* model;
        std::function<bool(ZuOPMMeter&)> operation;
        bool result;
        std::string after;
    } rows[] = {
        // clang-format off
        {"user state", kFactoryFile, L"T100", [](ZuOPMMeter& m) {
             m.SetActiveWaveLengthIndex(2), m.SetWaveLengthShift(7);
             return !m.SetReferenceLevel(10, 1) && m.SetReferenceLevel(2, -12.5f) && m.SaveUserState(); }, true,
         Edited({{"=1310\nActiveWaveLengthIndex=0\nWaveLengthShift=0", "=850\nActiveWaveLengthIndex=2\nWaveLengthShift=7"}, {"Level2=0", "Level2=-12.5"}})},
        {"coefficient into the model section only", kFactoryFile + "[Other]\n; keep\nx=1\n", L"T100",
         [](ZuOPMMeter& m) { return m.SetActiveWaveLengthIndex(1), m.WriteWaveCentralCoeff(3.14159265); }, true,
         kFactoryFile + "[Other]\n; keep\nx=1\n\n[FactoryCalibration_T100]\nWaveCentralCoeff1=3.14159\n\n"},
        {"default set over the model section, the fields on reload", sets, L"T100", [](ZuOPMMeter& m) {
             return m.ResetFactoryCalibrationToDefault(nullptr, 1) && m.GetWaveCentralCoeff(0) == 9 && m.ReloadFactoryCalibration() && m.GetWaveCentralCoeff(0) == 0.125f; }, true,
         kFactoryFile + "[FactoryCalibration_T100]\nMode=PM1\nWaveCentralCoeff0=0.125\n\n[FactoryCalibration_xxxxPM1]\nMode=PM1\nWaveCentralCoeff0=0.125\n\n"},
        {"default set onto itself", sets, L"xxxxPM1", [](ZuOPMMeter& m) { return m.ResetFactoryCalibrationToDefault(nullptr, 1); }, true, sets},
        {"absent default set or file", sets, L"T100", [](ZuOPMMeter& m) { return m.ResetFactoryCalibrationToDefault(nullptr, 2) || m.ResetFactoryCalibrationToDefault("/no/such/opm.ini", 1); }, false, sets},
        // The thresholds change; an absent key keeps its value; the hardware and user values stay.
        {"reload", kFactoryFile, L"T100", [&](ZuOPMMeter& m) {
             std::ofstream(file) << reloaded;
             return m.ReloadFactoryCalibration() && Values{m.GetThreshSwitchUp(), m.GetCalibrFreeCoeff(), m.GetMaxADC(), m.GetZero(0)} == Values{0.875f, 0.25f, 4096, 0}; }, true, reloaded},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.operation(Make(row.text, row.model)), row.result);
        EXPECT_EQ(ReadText(), row.after);
        Reset();
    }
}

}  // namespace
