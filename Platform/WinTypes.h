#pragma once
// The scalar types, handles and result codes of the embedded OS API that the
// application code was written against. Wide characters are the host's
// wchar_t (UTF-32 on Linux); byte sizes of wide buffers follow sizeof(WCHAR).

#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using UINT = unsigned int;
using BOOL = int;
using WCHAR = wchar_t;
using LPCWSTR = const wchar_t*;
using LPWSTR = wchar_t*;
using LPVOID = void*;
using LPDWORD = DWORD*;
using LPBYTE = BYTE*;
using HANDLE = void*;
using REGSAM = DWORD;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

constexpr LONG ERROR_SUCCESS = 0;
constexpr LONG ERROR_FILE_NOT_FOUND = 2;
constexpr LONG ERROR_ACCESS_DENIED = 5;
constexpr LONG ERROR_INVALID_HANDLE = 6;
constexpr LONG ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr LONG ERROR_GEN_FAILURE = 31;
constexpr LONG ERROR_NOT_SUPPORTED = 50;
constexpr LONG ERROR_INVALID_PARAMETER = 87;
constexpr LONG ERROR_INSUFFICIENT_BUFFER = 122;
constexpr LONG ERROR_MORE_DATA = 234;
constexpr LONG ERROR_DEVICE_NOT_CONNECTED = 1167;
constexpr LONG ERROR_SERVICE_NOT_ACTIVE = 1062;
constexpr LONG ERROR_MOD_NOT_FOUND = 126;
constexpr LONG ERROR_PROC_NOT_FOUND = 127;
