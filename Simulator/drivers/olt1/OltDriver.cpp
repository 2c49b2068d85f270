// Stream interface of the simulated power-meter driver ("OLT1:").

#include <new>

#include "Platform/StreamDriver.h"
#include "Simulator/bench/Bench.h"
#include "Simulator/drivers/olt1/OltDevice.h"

namespace {
thread_local DWORD lastError = 0;

StreamContext Fail(DWORD error) {
    lastError = error;
    return 0;
}
}  // namespace

extern "C" {

StreamContext OLT_Init(const wchar_t* /*activeKey*/, const void* /*busContext*/) {
    if (sim::Bench::Instance().Settings()->faults.noOlt1) return Fail(ERROR_DEVICE_NOT_CONNECTED);
    return reinterpret_cast<StreamContext>(new sim::olt::OltDevice);
}

StreamContext OLT_Open(StreamContext device, DWORD /*access*/, DWORD /*shareMode*/) {
    if (device == 0) return Fail(ERROR_INVALID_HANDLE);
    if (sim::Bench::Instance().Settings()->faults.noOlt1) return Fail(ERROR_DEVICE_NOT_CONNECTED);
    return device;
}

BOOL OLT_IOControl(StreamContext open, DWORD code, BYTE* in, DWORD inSize, BYTE* out, DWORD outSize,
                   DWORD* bytesReturned) {
    if (open == 0) return static_cast<BOOL>(Fail(ERROR_INVALID_HANDLE));
    DWORD returned = 0;
    DWORD error = 0;
    auto* device = reinterpret_cast<sim::olt::OltDevice*>(open);
    const bool done = device->IoControl(code, in, inSize, out, outSize, returned, error);
    if (bytesReturned != nullptr) *bytesReturned = returned;
    if (!done) return static_cast<BOOL>(Fail(error));
    return TRUE;
}

BOOL OLT_Close(StreamContext open) {
    if (open == 0) return static_cast<BOOL>(Fail(ERROR_INVALID_HANDLE));
    return TRUE;
}

BOOL OLT_Deinit(StreamContext device) {
    if (device == 0) return static_cast<BOOL>(Fail(ERROR_INVALID_HANDLE));
    delete reinterpret_cast<sim::olt::OltDevice*>(device);
    return TRUE;
}

DWORD OLT_GetLastError() {
    return lastError;
}
}
