// A stand-in stream driver for the device tests, registered in the hive as
// both "OLT1:" and "BTD0:". It answers the Bluetooth status query (code 44)
// in the caller's input buffer; the OLT calls only have to open.

#include <atomic>
#include <cstring>

#include "Platform/StreamDriver.h"

namespace {
std::atomic<int> bluetoothStatus{3};
std::atomic<int> bluetoothQueries{0};
std::atomic<int> bluetoothOpens{0};
constexpr DWORD kStatusCode = 44;
}  // namespace

extern "C" {

StreamContext OLT_Init(const wchar_t*, const void*) {
    return 1;
}
StreamContext OLT_Open(StreamContext, DWORD, DWORD) {
    return 1;
}
BOOL OLT_IOControl(StreamContext, DWORD, BYTE*, DWORD, BYTE* out, DWORD outSize, DWORD* returned) {
    if (out != nullptr) std::memset(out, 0, outSize);
    if (returned != nullptr) *returned = outSize;
    return TRUE;
}
BOOL OLT_Close(StreamContext) {
    return TRUE;
}
BOOL OLT_Deinit(StreamContext) {
    return TRUE;
}

StreamContext BTD_Init(const wchar_t*, const void*) {
    return 1;
}
StreamContext BTD_Open(StreamContext, DWORD, DWORD) {
    ++bluetoothOpens;
    return 1;
}
BOOL BTD_IOControl(StreamContext, DWORD code, BYTE* in, DWORD inSize, BYTE*, DWORD, DWORD*) {
    if (code != kStatusCode || in == nullptr || inSize < sizeof(int)) return FALSE;
    ++bluetoothQueries;
    const int status = bluetoothStatus;
    std::memcpy(in, &status, sizeof status);
    return TRUE;
}
BOOL BTD_Close(StreamContext) {
    return TRUE;
}
BOOL BTD_Deinit(StreamContext) {
    return TRUE;
}

// Test access.
void FakeDriver_SetBluetoothStatus(int status) {
    bluetoothStatus = status;
}
int FakeDriver_BluetoothQueries() {
    return bluetoothQueries;
}
int FakeDriver_BluetoothOpens() {
    return bluetoothOpens;
}
}
