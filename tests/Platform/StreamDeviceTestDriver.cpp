// A stream driver for the stream-device tests, registered as "FAK1:" (the
// whole interface) and as "NOX1:" (an incomplete one). Its behaviour is
// chosen through the interface itself, so the test needs no back door.

#include <cstring>
#include <cwchar>

#include "Platform/StreamDriver.h"

namespace {
thread_local DWORD lastError = 0;
DWORD counts[4] = {};  // inits, opens, closes, deinits

StreamContext Fail(DWORD error) {
    lastError = error;
    return 0;
}
}  // namespace

extern "C" {

// The device registered under a key ending in 9 has no hardware behind it.
StreamContext FAK_Init(const wchar_t* activeKey, const void*) {
    const size_t length = std::wcslen(activeKey);
    if (length > 0 && activeKey[length - 1] == L'9') return Fail(ERROR_DEVICE_NOT_CONNECTED);
    ++counts[0];
    return 0x5150;
}

StreamContext FAK_Open(StreamContext device, DWORD access, DWORD) {
    if (device != 0x5150) return Fail(ERROR_INVALID_HANDLE);
    if (access == 0) return Fail(ERROR_ACCESS_DENIED);
    ++counts[1];
    return 0x6160 + counts[1];
}

// 1: echo the input into the output; 2: fail with the error in the input;
// 3: the call counts.
BOOL FAK_IOControl(StreamContext, DWORD code, BYTE* in, DWORD inSize, BYTE* out, DWORD outSize,
                   DWORD* returned) {
    switch (code) {
        case 1: {
            const DWORD size = inSize < outSize ? inSize : outSize;
            if (size > 0) std::memcpy(out, in, size);
            *returned = size;
            return TRUE;
        }
        case 2: {
            DWORD error = 0;
            std::memcpy(&error, in, sizeof error);
            return static_cast<BOOL>(Fail(error));
        }
        case 3:
            std::memcpy(out, counts, sizeof counts);
            *returned = sizeof counts;
            return TRUE;
        default:
            return static_cast<BOOL>(Fail(ERROR_NOT_SUPPORTED));
    }
}

BOOL FAK_Close(StreamContext) {
    ++counts[2];
    return TRUE;
}

BOOL FAK_Deinit(StreamContext) {
    ++counts[3];
    return TRUE;
}

DWORD FAK_GetLastError() {
    return lastError;
}

// An incomplete interface: no IOControl, Close or Deinit.
StreamContext NOX_Init(const wchar_t*, const void*) {
    return 1;
}
StreamContext NOX_Open(StreamContext, DWORD, DWORD) {
    return 1;
}
}
