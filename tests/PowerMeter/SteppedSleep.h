#pragma once
// The meter's pauses without real time. Short pauses pass at once and are
// recorded; the worker's 300 ms pause between measurements blocks until the
// test lets a number of iterations run, so a test knows exactly how many
// measurements have happened.

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "PowerMeter/OPMMeter.h"

class SteppedSleep {
public:
    ZuOPMMeter::SleepFunction Function();

    // Lets the worker measure `count` more times and returns when it is back
    // at its pause (or has ended). False if that takes unreasonably long.
    bool RunIterations(int count);
    // Waits until the worker sits at its pause between measurements.
    bool WaitUntilPaused();
    // From now on every pause passes at once (before the meter is destroyed).
    void Release();
    // Back to blocking, for the next meter; no worker may be using it.
    void Reset();

    std::vector<int> Pauses() const;
    void ClearPauses();
    int Arrivals() const;

private:
    void Sleep(std::chrono::milliseconds pause);

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<int> pauses;
    int arrivals = 0;  // times the worker reached the loop pause
    int granted = 0;   // loop pauses it may pass
    int passed = 0;    // loop pauses it has passed
    bool released = false;
};
