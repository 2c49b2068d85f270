#include "PowerMeter/FakeOpmMeterBackend.h"

#include <utility>

namespace {

// The switch states of ranges 0, 1 and 2 as the amplifier wires them.
constexpr std::array<std::array<bool, 3>, 3> kRangeSwitches = {{
    {true, false, false},
    {true, false, true},
    {false, true, true},
}};

}  // namespace

int FakeBackendState::Range() const {
    for (int range = 0; range < 3; ++range) {
        if (switches == kRangeSwitches[range]) {
            return range;
        }
    }
    return -1;
}

void FakeBackendState::SetCounts(int range, std::int32_t counts) {
    std::lock_guard guard(mutex);
    countsInRange[range] = counts;
}

std::vector<std::string> FakeBackendState::Calls() const {
    std::lock_guard guard(mutex);
    return calls;
}

std::vector<std::string> FakeBackendState::CallsWithoutReads() const {
    std::lock_guard guard(mutex);
    std::vector<std::string> result;
    for (const std::string& call : calls) {
        if (call != "read") {
            result.push_back(call);
        }
    }
    return result;
}

int FakeBackendState::Reads() const {
    std::lock_guard guard(mutex);
    return reads;
}

FakeOpmMeterBackend::FakeOpmMeterBackend(std::shared_ptr<FakeBackendState> state)
    : state(std::move(state)) {}

FakeOpmMeterBackend::~FakeOpmMeterBackend() {
    std::lock_guard guard(state->mutex);
    state->destroyed = true;
    state->calls.push_back("destroyed");
}

std::int32_t FakeOpmMeterBackend::ReadPower(std::int32_t request) {
    std::lock_guard guard(state->mutex);
    ++state->reads;
    state->requests.push_back(request);
    state->calls.push_back("read");
    if (!state->scriptedCounts.empty()) {
        const std::int32_t counts = state->scriptedCounts.front();
        state->scriptedCounts.pop_front();
        return counts;
    }
    const int range = state->Range();
    return range < 0 ? state->countsOutsideRanges : state->countsInRange[range];
}

bool FakeOpmMeterBackend::SetSwitch(int index, bool on) {
    std::lock_guard guard(state->mutex);
    state->switches.at(index) = on;
    state->calls.push_back("switch" + std::to_string(index) + (on ? " on" : " off"));
    return true;
}

bool FakeOpmMeterBackend::SetEnabled(bool enable) {
    std::lock_guard guard(state->mutex);
    state->calls.push_back(enable ? "enable" : "disable");
    return true;
}
