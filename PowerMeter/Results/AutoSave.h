#pragma once
// Timed recording: with "PowerMeter_AutoSave" on, the store command starts
// (and, given again, stops) a timer that adds a result to the document at
// the interval of "PowerMeter_AutoSaveIndex". One state for the whole
// application; user-interface thread only.

#include <array>

namespace autosave {

inline constexpr const wchar_t* AutoSaveValue = L"PowerMeter_AutoSave";
inline constexpr const wchar_t* AutoSaveIndexValue = L"PowerMeter_AutoSaveIndex";

struct Interval {
    unsigned milliseconds;
    const wchar_t* label;  // minutes:seconds, as the parameter dialog shows it
};
inline constexpr std::array<Interval, 6> kIntervals{{{10000, L"00:10"},
                                                     {20000, L"00:20"},
                                                     {30000, L"00:30"},
                                                     {60000, L"01:00"},
                                                     {120000, L"02:00"},
                                                     {300000, L"05:00"}}};

}  // namespace autosave

// The store-result command of the main menu.
void OnStoreResultCommand();
// The timer's callback (also called by tests in place of the timer).
void OnAutoSaveTimer();
bool IsAutoSaveRunning();
// The "PowerMeter_AutoSave" setting; off when absent.
bool IsAutoSaveOn();
// Milliseconds of the stored interval index.
unsigned GetAutoSaveInterval();
// Stops a running timer and forgets the state: for the end of the run and
// between tests.
void ResetAutoSave();
