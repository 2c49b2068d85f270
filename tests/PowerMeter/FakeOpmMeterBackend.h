#pragma once
// A backend at the meter's seam: a detector whose raw counts depend on the
// gain range the three switches select, with a record of every call. The
// state is shared with the test because the meter owns (and deletes) the
// backend; the worker thread and the test read it under one mutex.

#include <array>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "PowerMeter/OpmMeterBackend.h"

struct FakeBackendState {
    mutable std::mutex mutex;
    std::array<bool, 3> switches{};
    // Counts returned in each range; -1 is a switch state of no range.
    std::array<std::int32_t, 3> countsInRange{};
    std::int32_t countsOutsideRanges = 0;
    // Returned before countsInRange while not empty.
    std::deque<std::int32_t> scriptedCounts;
    std::vector<std::string> calls;
    std::vector<std::int32_t> requests;
    int reads = 0;
    bool destroyed = false;

    int Range() const;
    void SetCounts(int range, std::int32_t counts);
    std::vector<std::string> Calls() const;
    std::vector<std::string> CallsWithoutReads() const;
    int Reads() const;
};

class FakeOpmMeterBackend : public COpmMeterBackend {
public:
    explicit FakeOpmMeterBackend(std::shared_ptr<FakeBackendState> state);
    ~FakeOpmMeterBackend() override;

    std::int32_t ReadPower(std::int32_t request) override;
    bool SetSwitch(int index, bool on) override;
    bool SetEnabled(bool enable) override;

private:
    std::shared_ptr<FakeBackendState> state;
};
