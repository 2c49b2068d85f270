// The simulated OLT1 and BTD0 drivers, reached as the application reaches
// them: through the hive and the platform's stream devices.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "Platform/Registry.h"
#include "Platform/StreamDevice.h"
#include "Platform/StreamDeviceFaults.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Simulator/bench/Adc.h"
#include "Simulator/bench/TransimpedanceAmplifier.h"
#include "Simulator/drivers/olt1/OltControlCodes.h"

namespace {

constexpr const char* kHive =
    "Windows Registry Editor Version 5.00\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\OLT1]\n"
    "\"Dll\"=\"tavix_sim_olt.dll\"\n\"Prefix\"=\"OLT\"\n\"Index\"=dword:00000001\n\n"
    "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0]\n"
    "\"Dll\"=\"tavix_sim_btd.dll\"\n\"Prefix\"=\"BTD\"\n\"Index\"=dword:00000000\n";

class SimulatedDrivers : public testing::Test {
protected:
    void SetUp() override {
        platform::LoadHiveFromText(kHive);
        platform::DeactivateStreamDevices();
    }
    void TearDown() override {
        for (HANDLE handle : opened) CloseHandle(handle);
        platform::DeactivateStreamDevices();
    }

    HANDLE Open(const wchar_t* name) {
        const HANDLE handle =
            CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                        nullptr, OPEN_EXISTING, 0, nullptr);
        if (handle != INVALID_HANDLE_VALUE) opened.push_back(handle);
        return handle;
    }
    static bool Control(HANDLE handle, DWORD code) {
        DWORD returned = 0;
        return DeviceIoControl(handle, code, nullptr, 0, nullptr, 0, &returned, nullptr) != 0;
    }
    static bool Read(HANDLE handle, std::int32_t& value,
                     DWORD request = sim::olt::kReadPhotodiode) {
        DWORD returned = 0;
        value = 0;
        const BOOL done = DeviceIoControl(handle, sim::olt::kReadPower, &request, sizeof request,
                                          &value, sizeof value, &returned, nullptr);
        if (done) {
            EXPECT_EQ(returned, sizeof value);
        }
        return done != 0;
    }
    // The switch pattern of a range, as the meter sets it.
    static void SetRange(HANDLE handle, int range) {
        static const bool kSwitches[3][3] = {
            {true, false, false}, {true, false, true}, {false, true, true}};
        for (int index = 0; index < 3; ++index)
            for (const sim::olt::SwitchCode& entry : sim::olt::kSwitchCodes)
                if (entry.index == index && entry.on == kSwitches[range][index]) {
                    ASSERT_TRUE(Control(handle, entry.code));
                }
    }

    std::vector<HANDLE> opened;
};

constexpr const char* kQuietBench =
    "[adc]\nconversionUs = 0\n[noise]\nadcCounts = 0\nrelative = 0\n"
    "[input]\ndBm = -30\nwavelength = 1550\n";

double ExpectedCounts(double dBm, double ampsPerWatt, int range) {
    const sim::BenchSettings defaults;
    const double amps = 1e-3 * std::pow(10.0, dBm / 10.0) * ampsPerWatt + 20e-12;
    return amps * sim::TransimpedanceAmplifier::RangeOhms(range) / sim::Adc::kFullScaleVolts *
               sim::Adc::kFullScaleCounts +
           defaults.adc.offsetCounts[range];
}

TEST_F(SimulatedDrivers, OltReadsTheBenchThroughTheRangeTheSwitchesSelect) {
    simtest::TempBench bench(kQuietBench);
    const HANDLE olt = Open(L"OLT1:");
    ASSERT_NE(olt, INVALID_HANDLE_VALUE) << GetLastError();
    ASSERT_TRUE(Control(olt, sim::olt::kEnable));
    std::int32_t value = 0;
    for (int range : {1, 2}) {
        SetRange(olt, range);
        ASSERT_TRUE(Read(olt, value));
        EXPECT_NEAR(value, ExpectedCounts(-30.0, 0.98, range), 0.5) << "range " << range;
    }
    SetRange(olt, 0);
    ASSERT_TRUE(Read(olt, value));
    EXPECT_EQ(value, sim::Adc::kFullScaleCounts) << "-30 dBm is far above range 0";

    bench.Write(std::string(kQuietBench) + "[input]\ndBm = -60\nwavelength = 850\n");
    ASSERT_TRUE(Read(olt, value));
    EXPECT_NEAR(value, ExpectedCounts(-60.0, 0.25, 0), 0.5) << "the change is read at once";

    ASSERT_TRUE(Control(olt, sim::olt::kDisable));
    ASSERT_TRUE(Read(olt, value));
    EXPECT_EQ(value, 0) << "a disabled front end reads nothing";
}

TEST_F(SimulatedDrivers, OltRefusesWhatTheBoardDoesNotKnow) {
    simtest::TempBench bench(kQuietBench);
    const HANDLE olt = Open(L"OLT1:");
    ASSERT_NE(olt, INVALID_HANDLE_VALUE);
    std::int32_t value = 0;
    EXPECT_FALSE(Read(olt, value, 64));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    DWORD request = sim::olt::kReadPhotodiode;
    EXPECT_FALSE(DeviceIoControl(olt, sim::olt::kReadPower, &request, sizeof request, &value, 2,
                                 nullptr, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_FALSE(Control(olt, sim::olt::ControlCode(0x807, 3)));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_SUPPORTED));
}

TEST_F(SimulatedDrivers, ABenchFaultFailsThatControlCodeWithTheBenchsError) {
    simtest::TempBench bench(std::string(kQuietBench) +
                             "[faults]\nfailIoControl = 0x80062013\nfailError = 1167\n");
    const HANDLE olt = Open(L"OLT1:");
    ASSERT_NE(olt, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Control(olt, 0x8006200F));
    EXPECT_FALSE(Control(olt, 0x80062013));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DEVICE_NOT_CONNECTED));
    bench.Write(kQuietBench);
    EXPECT_TRUE(Control(olt, 0x80062013));
}

TEST_F(SimulatedDrivers, WithoutOltHardwareTheDeviceDoesNotOpen) {
    simtest::TempBench bench("[faults]\nnoOlt1 = 1\n");
    EXPECT_EQ(Open(L"OLT1:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DEVICE_NOT_CONNECTED));
    bench.Write("[faults]\nnoOlt1 = 0\n");
    EXPECT_NE(Open(L"OLT1:"), INVALID_HANDLE_VALUE) << "the next open finds the board";
}

TEST_F(SimulatedDrivers, BtdReportsTheBenchsAdapterStateInTheCallersBuffer) {
    struct Case {
        const char* state;
        std::uint32_t status;
    };
    const Case cases[] = {{"unknown", 0}, {"absent", 1}, {"initializing", 2},
                          {"running", 3}, {"off", 4},    {"error", 5}};
    simtest::TempBench bench;
    const HANDLE btd = Open(L"BTD0:");
    ASSERT_NE(btd, INVALID_HANDLE_VALUE) << GetLastError();
    for (const Case& c : cases) {
        bench.Write(std::string("[bluetooth]\nadapter = ") + c.state + "\n");
        std::uint32_t buffer[8] = {};
        ASSERT_TRUE(DeviceIoControl(btd, 44, buffer, sizeof buffer, nullptr, 0, nullptr, nullptr));
        EXPECT_EQ(buffer[0], c.status) << c.state;
    }
    bench.Write("[faults]\nfailIoControl = 44\nfailError = 31\n");
    std::uint32_t buffer[8] = {};
    EXPECT_FALSE(DeviceIoControl(btd, 44, buffer, sizeof buffer, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_GEN_FAILURE));
    EXPECT_FALSE(DeviceIoControl(btd, 45, buffer, sizeof buffer, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_SUPPORTED));
}

}  // namespace
