// The backend on the "OLT1:" stream driver: the control codes and buffers it
// sends, and what happens when the driver is missing or a call fails.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Platform/Library.h"
#include "Platform/Registry.h"
#include "Platform/StreamDeviceFaults.h"
#include "Platform/WideText.h"
#include "PowerMeter/HardwareOPMMeterBackend.h"
#include "PowerMeter/MeterTestDriver.h"
#include "PowerMeter/OPMMeterError.h"

namespace {

const std::string kHive = std::string(
                              "Windows Registry Editor Version 5.00\n\n"
                              "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\OLT1]\n"
                              "\"Dll\"=\"") +
                          METER_TEST_DRIVER + "\"\n\"Prefix\"=\"OLT\"\n\"Index\"=\"1\"\n";

class HardwareBackendTest : public testing::Test {
protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        platform::LoadHiveFromText(kHive);
        driver = LoadLibraryW(platform::FromUtf8(METER_TEST_DRIVER).c_str());
        ASSERT_NE(driver, nullptr);
        reset = reinterpret_cast<MeterTestDriverResetProc>(
            GetProcAddressW(driver, L"MeterTestDriverReset"));
        fetch = reinterpret_cast<MeterTestDriverCallsProc>(
            GetProcAddressW(driver, L"MeterTestDriverCalls"));
        ASSERT_TRUE(reset && fetch);
        reset(0);
    }
    void TearDown() override { FreeLibrary(driver); }

    std::vector<MeterTestDriverCall> Calls() {
        std::vector<MeterTestDriverCall> calls(64);
        calls.resize(static_cast<std::size_t>(fetch(calls.data(), 64)));
        return calls;
    }

    HMODULE driver = nullptr;
    MeterTestDriverResetProc reset = nullptr;
    MeterTestDriverCallsProc fetch = nullptr;
};

TEST_F(HardwareBackendTest, ReadSendsTheRequestWordAndReturnsTheDriversReading) {
    CHardwareOpmMeterBackend backend;
    reset(-123456);
    EXPECT_EQ(backend.ReadPower(128), -123456);
    const std::vector<MeterTestDriverCall> calls = Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].code, 0x80062003u);
    EXPECT_EQ(calls[0].inSize, 4u);
    EXPECT_EQ(calls[0].input, 128);
    EXPECT_EQ(calls[0].outSize, 4u);
    EXPECT_EQ(calls[0].outputBefore, 0);
}

TEST_F(HardwareBackendTest, EachSwitchStateAndEnableHasItsOwnCodeWithoutBuffers) {
    const struct {
        int index;
        bool on;
        DWORD code;
    } switches[] = {
        {0, false, 0x80062007}, {0, true, 0x8006200B},  {1, false, 0x8006200F},
        {1, true, 0x80062013},  {2, false, 0x80062017}, {2, true, 0x8006201B},
    };
    CHardwareOpmMeterBackend backend;
    for (const auto& change : switches) {
        EXPECT_TRUE(backend.SetSwitch(change.index, change.on));
    }
    EXPECT_TRUE(backend.SetEnabled(true));
    EXPECT_TRUE(backend.SetEnabled(false));

    const std::vector<MeterTestDriverCall> calls = Calls();
    ASSERT_EQ(calls.size(), 8u);
    for (std::size_t index = 0; index < 6; ++index) {
        EXPECT_EQ(calls[index].code, switches[index].code) << index;
    }
    EXPECT_EQ(calls[6].code, 0x8006202Eu);
    EXPECT_EQ(calls[7].code, 0x80062032u);
    for (const MeterTestDriverCall& call : calls) {
        EXPECT_EQ(call.inSize, 0u);
        EXPECT_EQ(call.outSize, 0u);
    }
}

TEST_F(HardwareBackendTest, ADriverThatRefusesToOpenThrowsTheMetersError) {
    platform::InjectStreamDeviceFaults().failNextOpen = ERROR_DEVICE_NOT_CONNECTED;
    try {
        CHardwareOpmMeterBackend backend;
        FAIL() << "no exception";
    } catch (const OPMMeterError& error) {
        EXPECT_STREQ(error.what(), "Can't create OLT1 driver file");
    }
}

TEST_F(HardwareBackendTest, AnUnregisteredDriverThrowsTheMetersError) {
    // In a fresh process, where no earlier test has the device open.
    EXPECT_EXIT(
        {
            platform::LoadHiveFromText("Windows Registry Editor Version 5.00\n");
            try {
                CHardwareOpmMeterBackend backend;
            } catch (const OPMMeterError& error) {
                std::fprintf(stderr, "caught: %s\n", error.what());
                std::exit(3);
            }
        },
        testing::ExitedWithCode(3), "caught: Can't create OLT1 driver file");
}

std::string Pattern(const char* expression, int line) {
    return std::string(expression) +
           "\nFile: HardwareOPMMeterBackend\nLine: " + std::to_string(line) +
           "\nApplication will be closed";
}

TEST_F(HardwareBackendTest, AnUnknownSwitchIndexIsFatal) {
    CHardwareOpmMeterBackend backend;
    const std::string pattern = Pattern("false && \"Unsupported switch index\"", 66);
    EXPECT_EXIT(backend.SetSwitch(3, true), testing::ExitedWithCode(1), pattern);
    EXPECT_EXIT(backend.SetSwitch(-1, false), testing::ExitedWithCode(1), pattern);
}

TEST_F(HardwareBackendTest, FailingDriverCallsAreFatalHardwareFaults) {
    const struct {
        const char* expression;
        int line;
        DWORD code;
    } faults[] = {
        {"res && \"Can't read power value from device\"", 34, 0x80062003},
        {"result", 45, 0x80062013},
        {"result && \"Hardware failure: can't enable / disable power meter\"", 54, 0x80062032},
    };
    CHardwareOpmMeterBackend backend;
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.expression);
        EXPECT_EXIT(
            {
                platform::InjectStreamDeviceFaults().failIoControlCode = fault.code;
                platform::InjectStreamDeviceFaults().failNextIoControl = ERROR_GEN_FAILURE;
                backend.SetSwitch(0, true);  // another code: passes
                backend.ReadPower(128);
                backend.SetSwitch(1, true);
                backend.SetEnabled(false);
                std::exit(0);
            },
            testing::ExitedWithCode(1), Pattern(fault.expression, fault.line));
    }
}

}  // namespace
