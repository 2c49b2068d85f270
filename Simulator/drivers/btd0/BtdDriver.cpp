// Stream interface of the simulated Bluetooth driver ("BTD0:"): it answers
// the hardware-status query with the bench's adapter state and lists the
// bench's OBEX peers, which are reached over TCP.

#include <cstring>
#include <string>

#include "Platform/BluetoothControlCodes.h"
#include "Platform/StreamDriver.h"
#include "Simulator/bench/Bench.h"

namespace {
// Any non-zero context will do: the driver keeps no state of its own.
constexpr StreamContext kDevice = 1;

thread_local DWORD lastError = 0;

BOOL Fail(DWORD error) {
    lastError = error;
    return FALSE;
}

BOOL ListPeers(const sim::BenchSettings& settings, BYTE* out, DWORD outSize,
               DWORD* bytesReturned) {
    std::string lines;
    for (const auto& [name, value] : settings.peers) {
        const size_t blank = value.find(' ');
        lines += name + '\t' + value.substr(0, blank) + '\t' +
                 (blank == std::string::npos ? "" : value.substr(blank + 1)) + '\n';
    }
    if (bytesReturned != nullptr) *bytesReturned = static_cast<DWORD>(lines.size());
    if (lines.size() > outSize || (out == nullptr && !lines.empty()))
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    if (!lines.empty()) std::memcpy(out, lines.data(), lines.size());
    return TRUE;
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

BOOL BTD_IOControl(StreamContext open, DWORD code, BYTE* in, DWORD inSize, BYTE* out,
                   DWORD outSize, DWORD* bytesReturned) {
    if (bytesReturned != nullptr) *bytesReturned = 0;
    if (open != kDevice) return Fail(ERROR_INVALID_HANDLE);
    const auto settings = sim::Bench::Instance().Settings();
    if (settings->faults.failIoControl != 0 && settings->faults.failIoControl == code)
        return Fail(static_cast<DWORD>(settings->faults.failError));
    if (code == IOCTL_BTD_NETWORK_PEERS) return ListPeers(*settings, out, outSize, bytesReturned);
    if (code != IOCTL_BTD_HARDWARE_STATUS) return Fail(ERROR_NOT_SUPPORTED);
    const auto state = static_cast<std::uint32_t>(settings->bluetooth.adapter);
    if (in == nullptr || inSize < sizeof state) return Fail(ERROR_INVALID_PARAMETER);
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
