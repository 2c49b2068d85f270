#include "PowerMeter/Devices/HardwareOPMMeterBackend.h"

#include "Platform/FatalError.h"
#include "Platform/StreamDevice.h"
#include "PowerMeter/Devices/OPMMeterError.h"

namespace {

constexpr const char* kSourceFile = "HardwareOPMMeterBackend";
constexpr const wchar_t* kDeviceName = L"OLT1:";
constexpr const char* kOpenError = "Can't create OLT1 driver file";

// Device type 0x8006, any access; function and method per operation.
constexpr DWORD ControlCode(DWORD function, DWORD method) {
    return 0x8006u << 16 | 0u << 14 | function << 2 | method;
}
constexpr DWORD kMethodNeither = 3;
constexpr DWORD kMethodOutDirect = 2;

constexpr DWORD kReadPower = ControlCode(0x800, kMethodNeither);
// Per switch: {off, on}.
constexpr DWORD kSwitchCodes[3][2] = {
    {ControlCode(0x801, kMethodNeither), ControlCode(0x802, kMethodNeither)},
    {ControlCode(0x803, kMethodNeither), ControlCode(0x804, kMethodNeither)},
    {ControlCode(0x805, kMethodNeither), ControlCode(0x806, kMethodNeither)},
};
constexpr DWORD kEnable = ControlCode(0x80B, kMethodOutDirect);
constexpr DWORD kDisable = ControlCode(0x80C, kMethodOutDirect);

static_assert(kReadPower == 0x80062003);
static_assert(kSwitchCodes[1][0] == 0x8006200F && kSwitchCodes[1][1] == 0x80062013);
static_assert(kSwitchCodes[2][1] == 0x8006201B);
static_assert(kEnable == 0x8006202E && kDisable == 0x80062032);

}  // namespace

CHardwareOpmMeterBackend::CHardwareOpmMeterBackend()
    : hOT(CreateFileW(kDeviceName, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                      nullptr, OPEN_EXISTING, 0, nullptr)) {
    if (hOT == INVALID_HANDLE_VALUE) {
        throw OPMMeterError(kOpenError);
    }
}

std::int32_t CHardwareOpmMeterBackend::ReadPower(std::int32_t request) {
    OPM_ASSERT_AT(hOT, kSourceFile, 29);
    std::int32_t output = 0;
    DWORD bytesReturned = 0;
    const BOOL res = DeviceIoControl(hOT, kReadPower, &request, sizeof(request), &output,
                                     sizeof(output), &bytesReturned, nullptr);
    OPM_ASSERT_AT(res && "Can't read power value from device", kSourceFile, 34);
    return output;
}

bool CHardwareOpmMeterBackend::SetSwitch(int index, bool on) {
    if (index < 0 || index > 2) {
        OPM_ASSERT_AT(false && "Unsupported switch index", kSourceFile, 66);
    }
    DWORD bytesReturned = 0;
    const BOOL result = DeviceIoControl(hOT, kSwitchCodes[index][on ? 1 : 0], nullptr, 0, nullptr,
                                        0, &bytesReturned, nullptr);
    OPM_ASSERT_AT(result, kSourceFile, 45);
    return true;
}

bool CHardwareOpmMeterBackend::SetEnabled(bool enable) {
    OPM_ASSERT_AT(hOT, kSourceFile, 50);
    DWORD bytesReturned = 0;
    const BOOL result = DeviceIoControl(hOT, enable ? kEnable : kDisable, nullptr, 0, nullptr, 0,
                                        &bytesReturned, nullptr);
    OPM_ASSERT_AT(result && "Hardware failure: can't enable / disable power meter", kSourceFile,
                  54);
    return true;
}
