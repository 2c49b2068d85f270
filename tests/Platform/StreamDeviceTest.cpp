// Stream devices: found through the hive, loaded by explicit path, failing
// with the embedded OS's results and last-error codes; the driver is the
// simulator's OLT1.

#include <gtest/gtest.h>
#include <stdlib.h>

#include "Platform/Registry.h"
#include "Platform/StreamDevice.h"
#include "Simulator/drivers/olt1/OltControlCodes.h"
#include "Support/ScratchDirectory.h"

namespace {

// The bench the driver reads, whichever test makes the first device call.
const ScratchDirectory bench;
[[maybe_unused]] const int benchSet = setenv("TAVIX_BENCH", bench.Path("b.ini").c_str(), 1);

std::string Entry(const char* key, const char* dll, const char* prefix, const char* index) {
    return std::string("[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\") + key + "]\n\"Dll\"=\"" + dll +
           ".dll\"\n\"Prefix\"=\"" + prefix + "\"\n" + index + "\n";
}

const std::string kHive = Entry("OLT1", "tavix_sim_olt", "OLT", "\"Index\"=dword:1") +
                          Entry("OLT2", "tavix_sim_olt", "OLT", "\"Index\"=\"2\"") +
                          Entry("GON1", "no_such_driver", "GON", "\"Index\"=dword:1") +
                          Entry("NOX1", "tavix_sim_bench", "NOX", "\"Index\"=dword:1") +
                          Entry("HAF1", "tavix_sim_olt", "HAF", "") +
                          Entry("MIS1", "tavix_sim_olt", "OLT", "\"Index\"=dword:1");

HANDLE Open(const wchar_t* name, DWORD creation = OPEN_EXISTING) {
    SetLastError(0);
    return CreateFileW(name, GENERIC_READ, 0, nullptr, creation, 0, nullptr);
}

// A device exists only with a complete, consistent hive entry.
TEST(StreamDevice, OpensOnlyWhatTheHiveNamesAndPassesTheDriversResults) {
    platform::LoadHiveFromText(kHive);
    const struct {
        const wchar_t* name;
        DWORD error;
    } cases[] = {{L"olt1:", 0},
                 {L"OLT3:", ERROR_FILE_NOT_FOUND},
                 {L"HAF1:", ERROR_FILE_NOT_FOUND},
                 {L"MIS1:", ERROR_FILE_NOT_FOUND},
                 {L"OLT1", ERROR_FILE_NOT_FOUND},
                 {L"GON1:", ERROR_MOD_NOT_FOUND},
                 {L"NOX1:", ERROR_PROC_NOT_FOUND}};
    for (const auto& c : cases) {
        const HANDLE handle = Open(c.name);
        EXPECT_EQ(handle == INVALID_HANDLE_VALUE ? GetLastError() : !CloseHandle(handle), c.error)
            << c.name;
    }
    // "Index" as text names the device too; the driver's own failure comes through.
    ScratchDirectory::Write(bench.Path("b.ini"), "[faults]\nnoOlt1 = 1\n");
    EXPECT_EQ(Open(L"OLT2:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DEVICE_NOT_CONNECTED));
    std::filesystem::remove(bench.Path("b.ini"));
    EXPECT_EQ(Open(L"OLT1:", 1), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));

    // Control calls reach the driver through an open handle only.
    const HANDLE device = Open(L"OLT1:");
    DWORD request = sim::olt::kReadPhotodiode, counts = 0, returned = 0;
    EXPECT_TRUE(DeviceIoControl(device, sim::olt::kReadPower, &request, sizeof request, &counts,
                                sizeof counts, &returned, nullptr));
    EXPECT_EQ(returned, sizeof counts);
    EXPECT_FALSE(DeviceIoControl(device, 77, nullptr, 0, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_SUPPORTED));
    EXPECT_TRUE(CloseHandle(device));
    for (HANDLE gone : {device, INVALID_HANDLE_VALUE}) {
        EXPECT_FALSE(DeviceIoControl(gone, 77, nullptr, 0, nullptr, 0, nullptr, nullptr));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_FALSE(CloseHandle(gone));
    }
}

}  // namespace
