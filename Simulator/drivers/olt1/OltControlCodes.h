#pragma once
// Control codes of the power-meter driver "OLT1:": device type 0x8006, any
// access, CTL_CODE = type << 16 | access << 14 | function << 2 | method.

#include "Platform/WinTypes.h"

namespace sim::olt {

constexpr DWORD ControlCode(DWORD function, DWORD method) {
    return 0x8006u << 16 | 0u << 14 | function << 2 | method;
}

constexpr DWORD kReadPower = ControlCode(0x800, 3);
constexpr DWORD kEnable = ControlCode(0x80B, 2);
constexpr DWORD kDisable = ControlCode(0x80C, 2);

// The request word of a read: one conversion of the photodiode channel.
constexpr DWORD kReadPhotodiode = 128;

struct SwitchCode {
    DWORD code;
    int index;
    bool on;
};

constexpr SwitchCode kSwitchCodes[] = {
    {ControlCode(0x801, 3), 0, false}, {ControlCode(0x802, 3), 0, true},
    {ControlCode(0x803, 3), 1, false}, {ControlCode(0x804, 3), 1, true},
    {ControlCode(0x805, 3), 2, false}, {ControlCode(0x806, 3), 2, true},
};

static_assert(kReadPower == 0x80062003 && kEnable == 0x8006202E && kDisable == 0x80062032);
static_assert(kSwitchCodes[3].code == 0x80062013 && kSwitchCodes[5].code == 0x8006201B);

}  // namespace sim::olt
