// How closely the power meter keeps its pace: the period between two new
// values against the ideal 300 ms pause + 60 x 1 ms before each read, its
// jitter, and the CPU time one measurement costs. Runs on the simulated
// OLT1 driver through a throw-away hive and bench file, and on a backend
// whose every read takes 1 ms.

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <time.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Registry.h"
#include "Platform/WindowMessages.h"
#include "PowerMeter/Devices/HardwareOPMMeterBackend.h"
#include "PowerMeter/Measurement/OPMMeter.h"

namespace {

constexpr double kIdealPeriodMs = 300.0 + 60 * 1.0;
constexpr int kMeasurements = 20;

using Clock = std::chrono::steady_clock;

class OneMillisecondBackend : public COpmMeterBackend {
public:
    std::int32_t ReadPower(std::int32_t) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return 400000;
    }
    bool SetSwitch(int, bool) override { return true; }
    bool SetEnabled(bool) override { return true; }
};

// The window side: the time each new value arrives on the UI thread.
class Arrivals : public QObject {
public:
    std::vector<Clock::time_point> times;

protected:
    bool event(QEvent* e) override {
        if (e->type() == static_cast<QEvent::Type>(WM_OPM_NEW_VALUE)) {
            times.push_back(Clock::now());
            return true;
        }
        return QObject::event(e);
    }
};

double ProcessCpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// A directory of throw-away data: the calibration file and the bench file.
class Scratch {
public:
    Scratch() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "opm-meter-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) {
            path = pattern;
        }
    }
    ~Scratch() {
        std::error_code ignored;
        if (!path.empty()) std::filesystem::remove_all(path, ignored);
    }
    std::string Copy(const std::string& source, const std::string& name) const {
        const std::string target = path + "/" + name;
        std::error_code error;
        std::filesystem::copy_file(source, target,
                                   std::filesystem::copy_options::overwrite_existing, error);
        return error ? std::string() : target;
    }
    bool Ready() const { return !path.empty(); }

private:
    std::string path;
};

void WaitForNextValue(Arrivals& arrivals) {
    const std::size_t before = arrivals.times.size();
    while (arrivals.times.size() == before) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void MeasurePeriods(benchmark::State& state, std::unique_ptr<COpmMeterBackend> backend,
                    const std::string& calibrationFile, const std::wstring& modelTag) {
    Arrivals arrivals;
    ZuOPMMeter meter(calibrationFile.c_str(), modelTag, std::move(backend));
    meter.Subscribe(WindowHandleOf(&arrivals));
    meter.Start();
    WaitForNextValue(arrivals);  // the first value comes without a previous one

    std::vector<double> periods;
    const double cpuBefore = ProcessCpuMs();
    for (auto _ : state) {
        WaitForNextValue(arrivals);
        const auto last = arrivals.times.end();
        const std::chrono::duration<double> period = *(last - 1) - *(last - 2);
        state.SetIterationTime(period.count());
        periods.push_back(period.count() * 1e3);
    }
    const double cpuMs = ProcessCpuMs() - cpuBefore;
    meter.Stop();

    const double count = static_cast<double>(periods.size());
    const double mean = std::accumulate(periods.begin(), periods.end(), 0.0) / count;
    double squares = 0.0;
    for (double period : periods) squares += (period - mean) * (period - mean);
    const auto [shortest, longest] = std::minmax_element(periods.begin(), periods.end());
    state.counters["period_ms"] = mean;
    state.counters["ideal_ms"] = kIdealPeriodMs;
    state.counters["ratio"] = mean / kIdealPeriodMs;
    state.counters["jitter_sd_ms"] = std::sqrt(squares / count);
    state.counters["jitter_pp_ms"] = *longest - *shortest;
    state.counters["cpu_ms_per_value"] = cpuMs / count;
    state.counters["dBm"] = meter.GetLastPower();
}

void BM_MeterPeriodSimulatedOlt1(benchmark::State& state) {
    Scratch scratch;
    const std::string ini = scratch.Copy(OPM_SIM_OPM_INI, "opm.ini");
    const std::string bench = scratch.Copy(OPM_SIM_BENCH_INI, "bench.ini");
    if (!scratch.Ready() || ini.empty() || bench.empty() ||
        !std::filesystem::exists(OPM_SIM_OLT_DRIVER)) {
        state.SkipWithError("the simulated instrument is not built");
        return;
    }
    setenv("TAVIX_BENCH", bench.c_str(), 1);
    platform::LoadHiveFromText(std::string("Windows Registry Editor Version 5.00\n\n"
                                           "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\OLT1]\n"
                                           "\"Dll\"=\"") +
                               OPM_SIM_OLT_DRIVER + "\"\n\"Prefix\"=\"OLT\"\n\"Index\"=\"1\"\n");
    std::unique_ptr<COpmMeterBackend> backend;
    try {
        backend = std::make_unique<CHardwareOpmMeterBackend>();
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
        return;
    }
    MeasurePeriods(state, std::move(backend), ini, L"SIM1PM2");
}

void BM_MeterPeriodOneMillisecondReads(benchmark::State& state) {
    Scratch scratch;
    const std::string ini = scratch.Copy(OPM_SIM_OPM_INI, "opm.ini");
    MeasurePeriods(state, std::make_unique<OneMillisecondBackend>(), ini, L"SIM1PM2");
}

BENCHMARK(BM_MeterPeriodSimulatedOlt1)
    ->Iterations(kMeasurements)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MeterPeriodOneMillisecondReads)
    ->Iterations(kMeasurements)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
