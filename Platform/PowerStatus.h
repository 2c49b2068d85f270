#pragma once
// Battery and mains state in the embedded OS's form, read from the kernel's
// power-supply class (/sys/class/power_supply). A machine without any supply
// entry (a desktop, the simulated instrument) reads as mains power, no battery.

#include <string>

#include "Platform/WinTypes.h"

constexpr BYTE AC_LINE_OFFLINE = 0x00;
constexpr BYTE AC_LINE_ONLINE = 0x01;
constexpr BYTE AC_LINE_UNKNOWN = 0xFF;

constexpr BYTE BATTERY_FLAG_HIGH = 0x01;
constexpr BYTE BATTERY_FLAG_LOW = 0x02;
constexpr BYTE BATTERY_FLAG_CRITICAL = 0x04;
constexpr BYTE BATTERY_FLAG_CHARGING = 0x08;
constexpr BYTE BATTERY_FLAG_NO_BATTERY = 0x80;
constexpr BYTE BATTERY_FLAG_UNKNOWN = 0xFF;

constexpr BYTE BATTERY_PERCENTAGE_UNKNOWN = 0xFF;
constexpr DWORD BATTERY_LIFE_UNKNOWN = 0xFFFFFFFF;

constexpr BYTE BATTERY_CHEMISTRY_LION = 0x05;
constexpr BYTE BATTERY_CHEMISTRY_UNKNOWN = 0xFF;

struct SYSTEM_POWER_STATUS_EX2 {
    BYTE ACLineStatus;
    BYTE BatteryFlag;
    BYTE BatteryLifePercent;
    BYTE Reserved1;
    DWORD BatteryLifeTime;      // seconds
    DWORD BatteryFullLifeTime;  // seconds
    BYTE Reserved2;
    BYTE BackupBatteryFlag;
    BYTE BackupBatteryLifePercent;
    BYTE Reserved3;
    DWORD BackupBatteryLifeTime;
    DWORD BackupBatteryFullLifeTime;
    DWORD BatteryVoltage;         // millivolts
    DWORD BatteryCurrent;         // milliamperes, negative (two's complement) while discharging
    DWORD BatteryAverageCurrent;  // milliamperes
    DWORD BatteryAverageInterval;
    DWORD BatterymAHourConsumed;
    DWORD BatteryTemperature;  // tenths of a degree Celsius
    DWORD BackupBatteryVoltage;
    BYTE BatteryChemistry;
};

// Fills `status` and returns the number of bytes written; 0 when `status` is
// null or `length` is smaller than the structure. `update` is accepted for
// symmetry: every call reads the current state.
DWORD GetSystemPowerStatusEx2(SYSTEM_POWER_STATUS_EX2* status, DWORD length, BOOL update);

namespace platform {
// Test seam: the directory read instead of /sys/class/power_supply; an empty
// string restores it.
void SetPowerSupplyRoot(const std::string& directory);
}  // namespace platform
