// Stream devices: found through the hive, loaded by explicit path, failing
// with the embedded OS's results and last-error codes.

#include <gtest/gtest.h>

#include <vector>

#include "Platform/Registry.h"
#include "Platform/StreamDevice.h"
#include "Platform/StreamDeviceFaults.h"

namespace {

constexpr const char* kHive =
    "Windows Registry Editor Version 5.00\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\FAK1]\n"
    "\"Dll\"=\"stream_test_driver.dll\"\n\"Prefix\"=\"FAK\"\n\"Index\"=dword:00000001\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\FAK2]\n"
    "\"Dll\"=\"stream_test_driver.dll\"\n\"Prefix\"=\"FAK\"\n\"Index\"=\"2\"\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\FAK9]\n"
    "\"Dll\"=\"stream_test_driver.dll\"\n\"Prefix\"=\"FAK\"\n\"Index\"=dword:00000009\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\NOX1]\n"
    "\"Dll\"=\"stream_test_driver.dll\"\n\"Prefix\"=\"NOX\"\n\"Index\"=dword:00000001\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\GON1]\n"
    "\"Dll\"=\"no_such_driver.dll\"\n\"Prefix\"=\"GON\"\n\"Index\"=dword:00000001\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\HAF1]\n"
    "\"Dll\"=\"stream_test_driver.dll\"\n\"Prefix\"=\"HAF\"\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\MIS1]\n"
    "\"Dll\"=\"stream_test_driver.dll\"\n\"Prefix\"=\"FAK\"\n\"Index\"=dword:00000001\n";

class StreamDevice : public testing::Test {
protected:
    void SetUp() override {
        platform::LoadHiveFromText(kHive);
        platform::DeactivateStreamDevices();
    }
    void TearDown() override {
        for (HANDLE handle : opened) CloseHandle(handle);
        platform::DeactivateStreamDevices();
        auto& faults = platform::InjectStreamDeviceFaults();
        faults.failNextOpen = 0;
        faults.failNextIoControl = 0;
        faults.failIoControlCode = 0;
    }

    HANDLE Open(const wchar_t* name, DWORD access = GENERIC_READ | GENERIC_WRITE) {
        const HANDLE handle = CreateFileW(name, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, 0, nullptr);
        if (handle != INVALID_HANDLE_VALUE) opened.push_back(handle);
        return handle;
    }
    // The error of a failed open, or 0 when the device opened.
    DWORD OpenError(const wchar_t* name, DWORD access = GENERIC_READ | GENERIC_WRITE) {
        SetLastError(0);
        return Open(name, access) == INVALID_HANDLE_VALUE ? GetLastError() : 0;
    }
    static DWORD FailWith(HANDLE handle, DWORD error) {
        SetLastError(0);
        EXPECT_FALSE(
            DeviceIoControl(handle, 2, &error, sizeof error, nullptr, 0, nullptr, nullptr));
        return GetLastError();
    }
    static std::vector<DWORD> Counts(HANDLE handle) {
        std::vector<DWORD> counts(4);
        DWORD returned = 0;
        EXPECT_TRUE(DeviceIoControl(handle, 3, nullptr, 0, counts.data(), 16, &returned, nullptr));
        return counts;
    }

    std::vector<HANDLE> opened;
};

TEST_F(StreamDevice, ADeviceExistsOnlyWithACompleteConsistentHiveEntry) {
    struct Case {
        const wchar_t* name;
        DWORD error;
    };
    const Case cases[] = {
        {L"FAK1:", 0},
        {L"fak1:", 0},                     // names ignore case
        {L"FAK2:", 0},                     // "Index" as text
        {L"FAK3:", ERROR_FILE_NOT_FOUND},  // no key
        {L"HAF1:", ERROR_FILE_NOT_FOUND},  // no "Index"
        {L"MIS1:", ERROR_FILE_NOT_FOUND},  // "Prefix" names another device
        {L"FAK1", ERROR_FILE_NOT_FOUND},
        {L"FAKE1:", ERROR_FILE_NOT_FOUND},
        {L"FAK:", ERROR_FILE_NOT_FOUND},
        {L"", ERROR_FILE_NOT_FOUND},
        {L"GON1:", ERROR_MOD_NOT_FOUND},         // the driver file is missing
        {L"NOX1:", ERROR_PROC_NOT_FOUND},        // the driver lacks entry points
        {L"FAK9:", ERROR_DEVICE_NOT_CONNECTED},  // the driver's init fails
    };
    for (const Case& c : cases) EXPECT_EQ(OpenError(c.name), c.error) << '"' << c.name << '"';
    SetLastError(0);
    EXPECT_EQ(CreateFileW(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(CreateFileW(L"FAK1:", GENERIC_READ, 0, nullptr, 1 /* CREATE_NEW */, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST_F(StreamDevice, RemovingTheEntryRemovesTheDeviceOnceItIsDeactivated) {
    ASSERT_EQ(OpenError(L"FAK1:"), 0u);
    platform::DeleteRegistryKey(L"HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\FAK1");
    EXPECT_EQ(OpenError(L"FAK1:"), 0u) << "an active driver stays while a handle is open";
    for (HANDLE handle : opened) CloseHandle(handle);
    opened.clear();
    platform::DeactivateStreamDevices();
    EXPECT_EQ(OpenError(L"FAK1:"), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST_F(StreamDevice, TheDriverIsInitialisedOnceAndEveryHandleClosesOnce) {
    const HANDLE first = Open(L"FAK1:");
    const HANDLE second = Open(L"FAK1:");
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    ASSERT_NE(second, first);
    const std::vector<DWORD> before = Counts(first);
    EXPECT_EQ(before[0], 1u) << "inits";
    EXPECT_EQ(before[1], 2u) << "opens";
    EXPECT_TRUE(CloseHandle(second));
    opened.pop_back();
    EXPECT_EQ(Counts(first)[2], before[2] + 1) << "closes";
    SetLastError(0);
    EXPECT_FALSE(CloseHandle(second));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST_F(StreamDevice, ARefusedOpenGivesTheDriversError) {
    EXPECT_EQ(OpenError(L"FAK1:", 0), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(OpenError(L"FAK1:"), 0u);
}

TEST_F(StreamDevice, AnInjectedOpenFailureHitsTheNextOpenOnly) {
    platform::InjectStreamDeviceFaults().failNextOpen = ERROR_GEN_FAILURE;
    EXPECT_EQ(OpenError(L"FAK1:"), static_cast<DWORD>(ERROR_GEN_FAILURE));
    EXPECT_EQ(OpenError(L"FAK1:"), 0u);
}

TEST_F(StreamDevice, ControlCallsPassBuffersAndTheDriversFailures) {
    const HANDLE device = Open(L"FAK1:");
    ASSERT_NE(device, INVALID_HANDLE_VALUE);
    std::int32_t in = 0x12345678;
    std::int32_t out = 0;
    DWORD returned = 99;
    EXPECT_TRUE(DeviceIoControl(device, 1, &in, sizeof in, &out, sizeof out, &returned, nullptr));
    EXPECT_EQ(out, in);
    EXPECT_EQ(returned, sizeof out);
    EXPECT_EQ(FailWith(device, ERROR_SERVICE_NOT_ACTIVE),
              static_cast<DWORD>(ERROR_SERVICE_NOT_ACTIVE));
    SetLastError(0);
    EXPECT_FALSE(DeviceIoControl(device, 77, nullptr, 0, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_SUPPORTED));
}

TEST_F(StreamDevice, AnInjectedControlFailureHitsTheNextMatchingCallOnly) {
    const HANDLE device = Open(L"FAK1:");
    ASSERT_NE(device, INVALID_HANDLE_VALUE);
    std::int32_t value = 1;
    auto echo = [&](DWORD code) {
        SetLastError(0);
        return DeviceIoControl(device, code, &value, sizeof value, &value, sizeof value, nullptr,
                               nullptr) != 0;
    };
    auto& faults = platform::InjectStreamDeviceFaults();
    faults.failNextIoControl = ERROR_GEN_FAILURE;
    EXPECT_FALSE(echo(1));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_GEN_FAILURE));
    EXPECT_TRUE(echo(1));

    faults.failIoControlCode = 3;
    faults.failNextIoControl = ERROR_DEVICE_NOT_CONNECTED;
    EXPECT_TRUE(echo(1)) << "another code passes";
    DWORD counts[4];
    EXPECT_FALSE(DeviceIoControl(device, 3, nullptr, 0, counts, sizeof counts, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DEVICE_NOT_CONNECTED));
    EXPECT_TRUE(DeviceIoControl(device, 3, nullptr, 0, counts, sizeof counts, nullptr, nullptr));
}

TEST_F(StreamDevice, HandlesThatAreNotOpenDevicesAreRefused) {
    int notAHandle = 0;
    for (HANDLE handle :
         {INVALID_HANDLE_VALUE, static_cast<HANDLE>(nullptr), static_cast<HANDLE>(&notAHandle)}) {
        SetLastError(0);
        EXPECT_FALSE(DeviceIoControl(handle, 1, nullptr, 0, nullptr, 0, nullptr, nullptr));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        SetLastError(0);
        EXPECT_FALSE(CloseHandle(handle));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    }
}

}  // namespace
