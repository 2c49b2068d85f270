#include "Platform/LocalTime.h"

#include <ctime>
#include <mutex>

namespace {
std::mutex clockMutex;
std::function<SYSTEMTIME()> overriddenClock;

SYSTEMTIME SystemLocalTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(parts.tm_year + 1900);
    time.wMonth = static_cast<WORD>(parts.tm_mon + 1);
    time.wDayOfWeek = static_cast<WORD>(parts.tm_wday);
    time.wDay = static_cast<WORD>(parts.tm_mday);
    time.wHour = static_cast<WORD>(parts.tm_hour);
    time.wMinute = static_cast<WORD>(parts.tm_min);
    time.wSecond = static_cast<WORD>(parts.tm_sec);
    time.wMilliseconds = static_cast<WORD>(now.tv_nsec / 1000000);
    return time;
}
}  // namespace

void GetLocalTime(SYSTEMTIME* time) {
    if (time == nullptr) return;
    std::function<SYSTEMTIME()> clock;
    {
        std::lock_guard lock(clockMutex);
        clock = overriddenClock;
    }
    *time = clock ? clock() : SystemLocalTime();
}

namespace platform {
void OverrideLocalTime(std::function<SYSTEMTIME()> clock) {
    std::lock_guard lock(clockMutex);
    overriddenClock = std::move(clock);
}
}  // namespace platform
