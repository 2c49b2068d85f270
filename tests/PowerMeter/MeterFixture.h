#pragma once
// A meter on the fake backend, its calibration file in a private directory
// and its pauses under the test's control.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "PowerMeter/FakeOpmMeterBackend.h"
#include "PowerMeter/MeterTestFiles.h"
#include "PowerMeter/OPMMeter.h"
#include "PowerMeter/SteppedSleep.h"

namespace meter_test {

// Polls a condition that another thread makes true; the bound only matters
// when a test fails.
bool WaitFor(const std::function<bool()>& condition);

class MeterFixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Destroys the meter and starts over with a fresh backend (table-driven cases).
    void Reset();
    ZuOPMMeter& MakeMeter(const std::wstring& modelTag = L"T100");
    // A started meter that has measured `count` times.
    ZuOPMMeter& StartAndMeasure(int count = 1);
    // Runs `operation` on another thread while the worker keeps measuring,
    // and returns its result once it has run between two iterations.
    bool BetweenIterations(const std::function<bool()>& operation);
    // Stops the worker and waits until it has disabled the hardware.
    void StopWorker();

    std::shared_ptr<FakeBackendState> backend = std::make_shared<FakeBackendState>();
    TempDir dir;
    std::string file = dir.File("opm.ini");
    SteppedSleep sleep;
    std::unique_ptr<ZuOPMMeter> meter;
};

}  // namespace meter_test
