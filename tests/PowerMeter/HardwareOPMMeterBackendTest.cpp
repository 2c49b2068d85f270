// The meter's backend on the simulated "OLT1:" driver: the gain each range's
// switches select, the enable codes, a missing driver, a failing control code
// and a read failing in the middle of measuring.

#include <atomic>

#include "PowerMeter/DeviceTestSupport.h"
#include "PowerMeter/HardwareOPMMeterBackend.h"
#include "PowerMeter/OPMMeter.h"
#include "PowerMeter/OPMMeterError.h"

namespace devicetest {
namespace {

using BackendTest = SimulatedDevices;

const std::string kReadFailure = "res && \"Can't read power value from device\"";

TEST_F(BackendTest, EachRangesSwitchesSelectItsGainAndDisablingDarkensTheDetector) {
    static constexpr bool kRangeSwitches[3][3] = {
        {true, false, false}, {true, false, true}, {false, true, true}};
    Bench("[input]\ndBm = -30\nwavelength = 1550\n");
    CHardwareOpmMeterBackend backend;
    EXPECT_TRUE(backend.SetEnabled(true));
    std::int32_t counts[3] = {};
    for (int range = 0; range < 3; ++range) {
        for (int index = 0; index < 3; ++index)
            EXPECT_TRUE(backend.SetSwitch(index, kRangeSwitches[range][index]));
        counts[range] = backend.ReadPower(ZuOPMMeter::kReadRequest);
    }
    // Range 0 is the most sensitive: the same light gives the most counts there.
    EXPECT_GT(counts[0], counts[1]);
    EXPECT_GT(counts[1], counts[2]);
    EXPECT_TRUE(backend.SetEnabled(false));
    EXPECT_LT(backend.ReadPower(ZuOPMMeter::kReadRequest), counts[2]);
}

TEST_F(BackendTest, WithoutThePowerMeterHardwareTheConstructorThrowsTheMetersError) {
    Bench("[faults]\nnoOlt1 = 1\n");
    try {
        CHardwareOpmMeterBackend backend;
        ADD_FAILURE() << "no exception";
    } catch (const OPMMeterError& error) {
        EXPECT_STREQ(error.what(), "Can't create OLT1 driver file");
    }
}

TEST_F(BackendTest, AFailingControlCodeIsAFatalHardwareFault) {
    const struct {
        const char* code;
        std::string expression;
    } rows[] = {
        {"0x80062003", kReadFailure},
        {"0x80062013", "result"},
        {"0x80062032", "result && \"Hardware failure: can't enable / disable power meter\""},
    };
    CHardwareOpmMeterBackend backend;
    for (const auto& row : rows) {
        EXPECT_EXIT(
            {
                Bench(std::string("[faults]\nfailIoControl = ") + row.code + "\n");
                backend.SetSwitch(0, true);  // another code: passes
                backend.ReadPower(ZuOPMMeter::kReadRequest);
                backend.SetSwitch(1, true);
                backend.SetEnabled(false);
                std::exit(0);
            },
            testing::ExitedWithCode(1), FatalPattern(row.expression, "HardwareOPMMeterBackend"));
    }
}

TEST_F(BackendTest, AReadFailingWhileTheMeterMeasuresEndsTheProgramThroughTheFatalPath) {
    const std::string ini = bench.directory + "/opm.ini";
    WriteFile(ini, "[Hardware]\nMaxADC=1000\nResistor0=1\nResistor1=1\nResistor2=1\n");
    EXPECT_EXIT(
        {
            std::atomic<int> measured{0};
            ZuOPMMeter meter(ini.c_str(), L"X7", std::make_unique<CHardwareOpmMeterBackend>(),
                             [&measured](std::chrono::milliseconds pause) {
                                 if (pause.count() == 300) ++measured;
                             });
            meter.Start();
            for (int wait = 0; wait < 20000 && measured < 2; ++wait)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            Bench("[faults]\nfailIoControl = 0x80062003\n");
            std::this_thread::sleep_for(std::chrono::seconds(20));
            std::fprintf(stderr, "measured %d times, and the failing read did not end it\n",
                         measured.load());
            std::exit(0);
        },
        testing::ExitedWithCode(1), FatalPattern(kReadFailure, "HardwareOPMMeterBackend"));
}

}  // namespace
}  // namespace devicetest
