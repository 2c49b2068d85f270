#pragma once
// Control codes of the Bluetooth stream driver ("BTD0:"), shared by the
// drivers that answer them and the code that asks.

#include "Platform/WinTypes.h"

// The stack's hardware state (0 unknown, 1 not present, 2 initialising,
// 3 running, 4 shut down, 5 error) in the first word of the input buffer.
constexpr DWORD IOCTL_BTD_HARDWARE_STATUS = 44;

// The OBEX peers a driver reaches over TCP instead of radio (the simulated
// instrument's bench peers), as UTF-8 lines "name\thost:port\tservices\n" in
// the output buffer; services are braced UUIDs separated by ';', possibly
// none. When they don't fit: ERROR_INSUFFICIENT_BUFFER, with the size
// needed in bytesReturned. A driver with no such peers: ERROR_NOT_SUPPORTED.
constexpr DWORD IOCTL_BTD_NETWORK_PEERS = 0x00424E50;
