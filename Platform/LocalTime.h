#pragma once
// Wall-clock time in the embedded OS's broken-down form.

#include <cstdint>
#include <ctime>
#include <functional>

#include "Platform/WinTypes.h"

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

void GetLocalTime(SYSTEMTIME* time);

// Seconds since 1970 (UTC); also stored through `timer` when it is not null.
std::int64_t _time64(std::int64_t* timer);
// Broken-down local time of `*timer`; 0 on success, EINVAL for null
// arguments or a time the C library cannot break down.
int _localtime64_s(std::tm* parts, const std::int64_t* timer);

namespace platform {
// Test seam: a clock that replaces the system's; an empty function restores it.
void OverrideLocalTime(std::function<SYSTEMTIME()> clock);
// Test seam for _time64: an empty function restores the system's clock.
void OverrideTime(std::function<std::int64_t()> clock);
}  // namespace platform
