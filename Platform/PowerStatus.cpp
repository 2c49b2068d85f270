#include "Platform/PowerStatus.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr const char* kDefaultRoot = "/sys/class/power_supply";

std::mutex rootMutex;
std::string rootOverride;

std::filesystem::path Root() {
    std::lock_guard lock(rootMutex);
    return std::filesystem::path(rootOverride.empty() ? std::string(kDefaultRoot) : rootOverride);
}

std::optional<std::string> ReadAttribute(const std::filesystem::path& supply, const char* name) {
    std::ifstream in(supply / name);
    std::string value;
    if (!in || !std::getline(in, value)) return std::nullopt;
    while (!value.empty() && (value.back() == '\n' || value.back() == ' ')) value.pop_back();
    return value;
}

std::optional<long long> ReadNumber(const std::filesystem::path& supply, const char* name) {
    const auto text = ReadAttribute(supply, name);
    if (!text || text->empty()) return std::nullopt;
    try {
        size_t used = 0;
        const long long value = std::stoll(*text, &used);
        if (used != text->size()) return std::nullopt;
        return value;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

struct Supplies {
    bool anyExternal = false;  // a mains or USB supply is listed
    bool externalOnline = false;
    std::optional<std::filesystem::path> battery;  // the first battery present
};

Supplies Scan() {
    Supplies found;
    std::error_code error;
    std::filesystem::directory_iterator it(Root(), error);
    if (error) return found;
    std::vector<std::filesystem::path> entries;
    for (const auto& entry : it) entries.push_back(entry.path());
    // Directory order is arbitrary; the first battery by name is "the" battery.
    std::sort(entries.begin(), entries.end());
    for (const auto& supply : entries) {
        const auto type = ReadAttribute(supply, "type");
        if (!type) continue;
        if (*type == "Battery") {
            if (ReadNumber(supply, "present").value_or(1) == 0) continue;
            if (!found.battery) found.battery = supply;
        } else if (*type == "Mains" || *type == "USB") {
            found.anyExternal = true;
            if (ReadNumber(supply, "online").value_or(0) != 0) found.externalOnline = true;
        }
    }
    return found;
}

DWORD Milli(std::optional<long long> micro) {
    return micro ? static_cast<DWORD>(static_cast<int32_t>(*micro / 1000)) : 0;
}

void FillBattery(const std::filesystem::path& battery, bool acKnown, bool acOnline,
                 SYSTEM_POWER_STATUS_EX2& status) {
    const std::string state = ReadAttribute(battery, "status").value_or("Unknown");
    const bool charging = state == "Charging";
    const auto capacity = ReadNumber(battery, "capacity");

    if (acKnown)
        status.ACLineStatus = acOnline ? AC_LINE_ONLINE : AC_LINE_OFFLINE;
    else if (charging || state == "Full" || state == "Not charging")
        status.ACLineStatus = AC_LINE_ONLINE;
    else if (state == "Discharging")
        status.ACLineStatus = AC_LINE_OFFLINE;
    else
        status.ACLineStatus = AC_LINE_UNKNOWN;

    if (capacity) {
        const long long percent = std::clamp<long long>(*capacity, 0, 100);
        status.BatteryLifePercent = static_cast<BYTE>(percent);
        status.BatteryFlag = percent > 66   ? BATTERY_FLAG_HIGH
                             : percent < 5  ? BATTERY_FLAG_CRITICAL
                             : percent < 33 ? BATTERY_FLAG_LOW
                                            : 0;
    } else {
        status.BatteryLifePercent = BATTERY_PERCENTAGE_UNKNOWN;
        status.BatteryFlag = charging ? 0 : BATTERY_FLAG_UNKNOWN;
    }
    if (charging) status.BatteryFlag |= BATTERY_FLAG_CHARGING;

    const auto secondsLeft = ReadNumber(battery, "time_to_empty_now");
    status.BatteryLifeTime = secondsLeft ? static_cast<DWORD>(*secondsLeft) : BATTERY_LIFE_UNKNOWN;
    status.BatteryVoltage = Milli(ReadNumber(battery, "voltage_now"));
    // The kernel reports the current's sign inconsistently between drivers;
    // the old system's convention is negative while discharging.
    auto current = ReadNumber(battery, "current_now");
    if (current && state == "Discharging" && *current > 0) current = -*current;
    status.BatteryCurrent = Milli(current);
    status.BatteryAverageCurrent = Milli(ReadNumber(battery, "current_avg"));
    const auto temperature = ReadNumber(battery, "temp");
    status.BatteryTemperature = temperature ? static_cast<DWORD>(*temperature) : 0;
    const std::string technology = ReadAttribute(battery, "technology").value_or("");
    status.BatteryChemistry =
        technology == "Li-ion" ? BATTERY_CHEMISTRY_LION : BATTERY_CHEMISTRY_UNKNOWN;
}

}  // namespace

DWORD GetSystemPowerStatusEx2(SYSTEM_POWER_STATUS_EX2* status, DWORD length, BOOL /*update*/) {
    if (status == nullptr || length < sizeof(SYSTEM_POWER_STATUS_EX2)) return 0;
    std::memset(status, 0, sizeof(*status));
    status->BatteryLifeTime = BATTERY_LIFE_UNKNOWN;
    status->BatteryFullLifeTime = BATTERY_LIFE_UNKNOWN;
    status->BackupBatteryFlag = BATTERY_FLAG_UNKNOWN;
    status->BackupBatteryLifePercent = BATTERY_PERCENTAGE_UNKNOWN;
    status->BackupBatteryLifeTime = BATTERY_LIFE_UNKNOWN;
    status->BackupBatteryFullLifeTime = BATTERY_LIFE_UNKNOWN;
    status->BatteryChemistry = BATTERY_CHEMISTRY_UNKNOWN;

    const Supplies supplies = Scan();
    if (supplies.battery) {
        FillBattery(*supplies.battery, supplies.anyExternal, supplies.externalOnline, *status);
    } else {
        // Without a battery the machine can only be running on mains.
        status->ACLineStatus = AC_LINE_ONLINE;
        status->BatteryFlag = BATTERY_FLAG_NO_BATTERY;
        status->BatteryLifePercent = BATTERY_PERCENTAGE_UNKNOWN;
    }
    return sizeof(SYSTEM_POWER_STATUS_EX2);
}

namespace platform {

void SetPowerSupplyRoot(const std::string& directory) {
    std::lock_guard lock(rootMutex);
    rootOverride = directory;
}

}  // namespace platform
