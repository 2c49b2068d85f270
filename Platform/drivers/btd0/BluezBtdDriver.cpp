// Stream interface of the instrument's Bluetooth driver ("BTD0:"): it answers
// the hardware-status query with the state of BlueZ's adapter.

#include <cstdint>
#include <cstring>

#include "Platform/BluetoothControlCodes.h"
#include "Platform/Bluez.h"
#include "Platform/StreamDriver.h"

namespace {
// Any non-zero context will do: BlueZ keeps the state, the driver none.
constexpr StreamContext kDevice = 1;

thread_local DWORD lastError = 0;

BOOL Fail(DWORD error) {
    lastError = error;
    return FALSE;
}
}  // namespace

extern "C" {

StreamContext BTD_Init(const wchar_t* /*activeKey*/, const void* /*busContext*/) {
    return kDevice;
}

StreamContext BTD_Open(StreamContext device, DWORD /*access*/, DWORD /*shareMode*/) {
    if (device != kDevice) return static_cast<StreamContext>(Fail(ERROR_INVALID_HANDLE));
    return device;
}

BOOL BTD_IOControl(StreamContext open, DWORD code, BYTE* in, DWORD inSize, BYTE* /*out*/,
                   DWORD /*outSize*/, DWORD* bytesReturned) {
    if (bytesReturned != nullptr) *bytesReturned = 0;
    if (open != kDevice) return Fail(ERROR_INVALID_HANDLE);
    if (code != IOCTL_BTD_HARDWARE_STATUS) return Fail(ERROR_NOT_SUPPORTED);
    if (in == nullptr || inSize < sizeof(std::uint32_t)) return Fail(ERROR_INVALID_PARAMETER);
    const auto state = static_cast<std::uint32_t>(platform::bluez::AdapterState());
    std::memcpy(in, &state, sizeof state);
    return TRUE;
}

BOOL BTD_Close(StreamContext open) {
    return open == kDevice ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

BOOL BTD_Deinit(StreamContext device) {
    return device == kDevice ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

DWORD BTD_GetLastError() {
    return lastError;
}
}
