#pragma once
// Wall-clock time in the embedded OS's broken-down form.

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

namespace platform {
// Test seam: a clock that replaces the system's; an empty function restores it.
void OverrideLocalTime(std::function<SYSTEMTIME()> clock);
}  // namespace platform
