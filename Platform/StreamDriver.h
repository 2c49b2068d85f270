#pragma once
// The stream interface a driver shared object exports. "XXX" is the device
// prefix registered in the hive: the driver of "OLT1:" exports OLT_Init,
// OLT_Open, OLT_IOControl, OLT_Close and OLT_Deinit with C linkage.
// Contexts are pointer-sized so that a driver can hand out its own objects.
// A call that fails returns 0 / FALSE; the optional XXX_GetLastError then
// tells why (an error code of WinTypes.h), otherwise ERROR_GEN_FAILURE.

#include <cstdint>

#include "Platform/WinTypes.h"

using StreamContext = std::uintptr_t;

extern "C" {
// `activeKey` is the device's registry key below HKEY_LOCAL_MACHINE.
using StreamInitProc = StreamContext (*)(const wchar_t* activeKey, const void* busContext);
using StreamOpenProc = StreamContext (*)(StreamContext device, DWORD access, DWORD shareMode);
using StreamIoControlProc = BOOL (*)(StreamContext open, DWORD code, BYTE* in, DWORD inSize,
                                     BYTE* out, DWORD outSize, DWORD* bytesReturned);
using StreamCloseProc = BOOL (*)(StreamContext open);
using StreamDeinitProc = BOOL (*)(StreamContext device);
using StreamLastErrorProc = DWORD (*)();
}
