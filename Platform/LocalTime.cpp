#include "Platform/LocalTime.h"

#include <cerrno>
#include <ctime>
#include <mutex>

namespace {
std::mutex clockMutex;
std::function<SYSTEMTIME()> overriddenClock;
std::function<std::int64_t()> overriddenTime;

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

std::int64_t _time64(std::int64_t* timer) {
    std::function<std::int64_t()> clock;
    {
        std::lock_guard lock(clockMutex);
        clock = overriddenTime;
    }
    const std::int64_t now = clock ? clock() : static_cast<std::int64_t>(std::time(nullptr));
    if (timer != nullptr) *timer = now;
    return now;
}

int _localtime64_s(std::tm* parts, const std::int64_t* timer) {
    if (parts == nullptr || timer == nullptr) return EINVAL;
    const std::time_t seconds = static_cast<std::time_t>(*timer);
    if (localtime_r(&seconds, parts) == nullptr) return EINVAL;
    return 0;
}

namespace platform {
void OverrideLocalTime(std::function<SYSTEMTIME()> clock) {
    std::lock_guard lock(clockMutex);
    overriddenClock = std::move(clock);
}

void OverrideTime(std::function<std::int64_t()> clock) {
    std::lock_guard lock(clockMutex);
    overriddenTime = std::move(clock);
}
}  // namespace platform
