#pragma once
// Test seams of the stream devices: each armed failure hits the next matching
// call once. Armed from a test thread, consumed by whichever thread calls.

#include <atomic>

#include "Platform/WinTypes.h"

namespace platform {

struct StreamDeviceFaults {
    // Next CreateFileW of a device fails at the driver's open with this error.
    std::atomic<DWORD> failNextOpen{0};
    // Next DeviceIoControl fails with this error ...
    std::atomic<DWORD> failNextIoControl{0};
    // ... but only a call with this control code (0: any code).
    std::atomic<DWORD> failIoControlCode{0};
};
StreamDeviceFaults& InjectStreamDeviceFaults();

// Deinitialises and unloads every driver that has no open handle, so that the
// next CreateFileW looks at the hive again (the OS does this at boot only).
void DeactivateStreamDevices();

}  // namespace platform
