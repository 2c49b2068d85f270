#pragma once
// Stream devices ("OLT1:", "BTD0:") of the embedded OS. The device "XXXn:"
// exists when the hive has HKEY_LOCAL_MACHINE\Drivers\BuiltIn\<name> with
// "Dll", "Prefix" and "Index"; its driver is a shared object exporting the
// stream interface (XXX_Init, XXX_Open, XXX_IOControl, XXX_Close, XXX_Deinit).

#include "Platform/LastError.h"
#include "Platform/WinTypes.h"

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_SHARE_READ = 1;
constexpr DWORD FILE_SHARE_WRITE = 2;
constexpr DWORD OPEN_EXISTING = 3;

inline HANDLE const INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(-1);

struct SECURITY_ATTRIBUTES;
struct OVERLAPPED;

// INVALID_HANDLE_VALUE + GetLastError() when the device does not exist or its driver refuses.
HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD shareMode, SECURITY_ATTRIBUTES* security,
                   DWORD creation, DWORD flags, HANDLE templateFile);
BOOL DeviceIoControl(HANDLE device, DWORD code, LPVOID inBuffer, DWORD inSize, LPVOID outBuffer,
                     DWORD outSize, LPDWORD bytesReturned, OVERLAPPED* overlapped);
BOOL CloseHandle(HANDLE handle);
