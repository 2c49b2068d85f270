#include "PowerMeter/SteppedSleep.h"

namespace {

constexpr auto kLoopPause = std::chrono::milliseconds(300);
// Only matters when a test fails: a hung worker ends the wait.
constexpr auto kGiveUp = std::chrono::seconds(20);

}  // namespace

ZuOPMMeter::SleepFunction SteppedSleep::Function() {
    return [this](std::chrono::milliseconds pause) { Sleep(pause); };
}

void SteppedSleep::Sleep(std::chrono::milliseconds pause) {
    std::unique_lock guard(mutex);
    pauses.push_back(static_cast<int>(pause.count()));
    if (pause != kLoopPause) {
        return;
    }
    ++arrivals;
    changed.notify_all();
    changed.wait(guard, [this] { return released || passed < granted; });
    ++passed;
    changed.notify_all();
}

bool SteppedSleep::WaitUntilPaused() {
    std::unique_lock guard(mutex);
    return changed.wait_for(guard, kGiveUp, [this] { return arrivals > passed; });
}

bool SteppedSleep::RunIterations(int count) {
    if (!WaitUntilPaused()) {
        return false;
    }
    std::unique_lock guard(mutex);
    const int target = arrivals + count;
    granted += count;
    changed.notify_all();
    return changed.wait_for(guard, kGiveUp, [this, target] { return arrivals >= target; });
}

void SteppedSleep::Release() {
    std::lock_guard guard(mutex);
    released = true;
    changed.notify_all();
}

void SteppedSleep::Reset() {
    std::lock_guard guard(mutex);
    pauses.clear();
    arrivals = granted = passed = 0;
    released = false;
}

std::vector<int> SteppedSleep::Pauses() const {
    std::lock_guard guard(mutex);
    return pauses;
}

void SteppedSleep::ClearPauses() {
    std::lock_guard guard(mutex);
    pauses.clear();
}

int SteppedSleep::Arrivals() const {
    std::lock_guard guard(mutex);
    return arrivals;
}
