#include "PowerMeter/MeterFixture.h"

namespace meter_test {

bool WaitFor(const std::function<bool()>& condition) {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > giveUp) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void MeterFixture::SetUp() {
    WriteText(file, kFactoryFile);
}

void MeterFixture::TearDown() {
    sleep.Release();
    meter.reset();
}

void MeterFixture::Reset() {
    TearDown();
    backend = std::make_shared<FakeBackendState>();
    sleep.Reset();
}

ZuOPMMeter& MeterFixture::MakeMeter(const std::wstring& modelTag) {
    meter = std::make_unique<ZuOPMMeter>(
        file.c_str(), modelTag, std::make_unique<FakeOpmMeterBackend>(backend), sleep.Function());
    return *meter;
}

ZuOPMMeter& MeterFixture::StartAndMeasure(int count) {
    if (!meter) {
        MakeMeter();
    }
    meter->Start();
    EXPECT_TRUE(sleep.RunIterations(count));
    return *meter;
}

bool MeterFixture::BetweenIterations(const std::function<bool()>& operation) {
    std::future<bool> result = std::async(std::launch::async, operation);
    // The operation waits for the lock that the worker holds over its pause;
    // each iteration gives it a chance. The bound only matters on failure.
    bool ran = false;
    for (int iteration = 0; iteration < 1000 && !ran; ++iteration) {
        ran = result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        if (!ran && !sleep.RunIterations(1)) {
            break;
        }
    }
    EXPECT_TRUE(ran);
    return result.get();
}

void MeterFixture::StopWorker() {
    meter->Stop();
    sleep.Release();
    EXPECT_TRUE(WaitFor([this] {
        const auto calls = backend->Calls();
        return !meter->IsRunning() && !calls.empty() && calls.back() == "disable";
    }));
}

}  // namespace meter_test
