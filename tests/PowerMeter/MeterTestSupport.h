#pragma once
// The meter on a fake detector, its calibration file in a private directory
// and its pauses under the test's control. The factory file's numbers are
// exact in binary: R(0) = 16384, R(1) = 4096, R(2) = 1024, full scale 4096
// counts, slot 0 adds 1.5 + 0.25 - 0.5 dB.

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>

#include "PowerMeter/OPMMeter.h"

namespace metertest {

inline const std::string kFactoryFile =
    "[WaveLengths]\nWavesNum=3\nWaveLength0=1310\nWaveLength1=1550\nWaveLength2=850\n\n"
    "[Hardware]\nMaxADC=4096\nResistor0=1024\nResistor1=3072\nResistor2=12288\n\n"
    "[FactoryCalibration]\nRefPowerCoeff=-0.5\nCalibrFreeCoeff=0.25\nThreshSwitchUp=0.75\n"
    "ThreshSwitchDown=0.5\nWaveCentralCoeff0=1.5\nWaveCentralCoeff1=2\nWaveCentralCoeff2=-1\n\n"
    "[UserCalibration]\nZero0=0\nZero1=0\nZero2=0\n\n"
    "[SoftwareState]\nActiveWaveLength=1310\nActiveWaveLengthIndex=0\nWaveLengthShift=0\n"
    "ReferenceLevel0=0\nReferenceLevel1=0\nReferenceLevel2=0\n\n";

inline std::string Replace(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    if (at == std::string::npos) throw std::logic_error("no '" + from + "' in the file");
    return text.replace(at, from.size(), to);
}

inline std::string ReadText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// Counts per gain range as the amplifier's switches select it. Kept by the
// test, as the meter deletes its backend; records every call but the reads.
struct Detector {
    std::mutex mutex;
    std::array<bool, 3> switches{};
    std::array<std::int32_t, 3> counts{};
    std::deque<std::int32_t> script;  // returned first
    std::vector<std::string> calls;
    int reads = 0;
    int failure = 0;  // 1: reads throw a standard exception, 2: something else

    int Range() const {
        static constexpr std::array<std::array<bool, 3>, 3> kWiring{
            {{true, false, false}, {true, false, true}, {false, true, true}}};
        return static_cast<int>(std::find(kWiring.begin(), kWiring.end(), switches) -
                                kWiring.begin());
    }
    template <typename Value>
    Value Get(const Value& field) {
        std::lock_guard guard(mutex);
        return field;
    }
};

class FakeBackend : public COpmMeterBackend {
public:
    explicit FakeBackend(std::shared_ptr<Detector> detector) : d(std::move(detector)) {}
    ~FakeBackend() override { Record("destroyed"); }
    std::int32_t ReadPower(std::int32_t request) override {
        std::lock_guard guard(d->mutex);
        ++d->reads;
        if (d->failure == 1) throw std::runtime_error("detector gone");
        if (d->failure == 2) throw 42;
        if (request != ZuOPMMeter::kReadRequest) return -1;
        if (d->script.empty()) return d->Range() < 3 ? d->counts[d->Range()] : 0;
        const std::int32_t counts = d->script.front();
        d->script.pop_front();
        return counts;
    }
    bool SetSwitch(int index, bool on) override {
        std::lock_guard guard(d->mutex);
        return d->switches.at(index) = on, true;
    }
    bool SetEnabled(bool enable) override { return Record(enable ? "enable" : "disable"); }

private:
    bool Record(const char* call) {
        std::lock_guard guard(d->mutex);
        return d->calls.push_back(call), true;
    }
    std::shared_ptr<Detector> d;
};

// The worker's 300 ms pause blocks until the test lets iterations run; other pauses pass.
class SteppedSleep {
public:
    static constexpr auto kGiveUp = std::chrono::seconds(20);  // matters only on failure

    ZuOPMMeter::SleepFunction Function() {
        return [this](std::chrono::milliseconds pause) {
            if (pause != std::chrono::milliseconds(300)) return;
            std::unique_lock guard(mutex);
            ++arrivals;
            changed.notify_all();
            changed.wait(guard, [this] { return released || passed < granted; });
            ++passed;
        };
    }
    // Lets the worker measure `count` more times; false if it does not get back to its pause.
    bool Run(int count) {
        std::unique_lock guard(mutex);
        if (!changed.wait_for(guard, kGiveUp, [this] { return arrivals > passed; })) return false;
        const int target = arrivals + count;
        granted += count;
        changed.notify_all();
        return changed.wait_for(guard, kGiveUp, [&] { return arrivals >= target; });
    }
    void Release() {
        std::lock_guard guard(mutex);
        released = true;
        changed.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int arrivals = 0, granted = 0, passed = 0;
    bool released = false;
};

inline bool WaitFor(const std::function<bool()>& condition) {
    const auto giveUp = std::chrono::steady_clock::now() + SteppedSleep::kGiveUp;
    while (!condition() && std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return condition();
}

class MeterTest : public testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directories(dir); }
    void TearDown() override {
        Reset();
        std::filesystem::remove_all(dir);
    }
    // Back to no meter, a fresh detector and fresh pauses, for table rows.
    void Reset() {
        sleep->Release();
        meter.reset();
        detector = std::make_shared<Detector>();
        sleep = std::make_unique<SteppedSleep>();
    }
    ZuOPMMeter& Make(const std::string& text = kFactoryFile, const std::wstring& model = L"T100") {
        std::ofstream(file, std::ios::binary) << text;
        meter = std::make_unique<ZuOPMMeter>(
            file.c_str(), model, std::make_unique<FakeBackend>(detector), sleep->Function());
        return *meter;
    }
    // Starts the meter (made from the factory file if there is none) and lets it measure.
    void Measure(int count = 1) {
        if (!meter) Make();
        if (!meter->IsRunning()) meter->Start();
        ASSERT_TRUE(sleep->Run(count)) << "the worker did not come back to its pause";
    }
    void SetCounts(std::array<std::int32_t, 3> counts) {
        std::lock_guard guard(detector->mutex);
        detector->counts = counts;
    }
    // Runs `operation` on another thread and lets the worker measure until it has run.
    bool BetweenIterations(const std::function<bool()>& operation) {
        std::future<bool> result = std::async(std::launch::async, operation);
        const auto ran = [&] {
            return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        };
        const auto giveUp = std::chrono::steady_clock::now() + SteppedSleep::kGiveUp;
        while (!ran() && std::chrono::steady_clock::now() < giveUp && sleep->Run(1)) continue;
        if (!ran()) {
            ADD_FAILURE() << "the operation never got in between two measurements";
            sleep->Release();
        }
        return result.get();
    }

    std::string dir =
        (std::filesystem::temp_directory_path() / ("opm-meter-" + std::to_string(getpid())))
            .string();
    std::string file = dir + "/opm.ini";
    std::shared_ptr<Detector> detector = std::make_shared<Detector>();
    std::unique_ptr<SteppedSleep> sleep = std::make_unique<SteppedSleep>();
    std::unique_ptr<ZuOPMMeter> meter;
};

}  // namespace metertest
