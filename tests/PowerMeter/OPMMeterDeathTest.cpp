// The meter's fatal checks.

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

#include "PowerMeter/MeterFixture.h"
#include "PowerMeter/OPMMeter.h"

namespace meter_test {
namespace {

// A detector that fails on its first read.
class FailingBackend : public COpmMeterBackend {
public:
    std::int32_t ReadPower(std::int32_t) override { throw std::runtime_error("detector gone"); }
    bool SetSwitch(int, bool) override { return true; }
    bool SetEnabled(bool enable) override {
        std::fprintf(stderr, "%s\n", enable ? "enabled" : "disabled");
        return true;
    }
};

class MeterDeathTest : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    TempDir dir;
};

TEST_F(MeterDeathTest, ANullBackendIsFatal) {
    const std::string file = dir.File("opm.ini");
    EXPECT_EXIT(ZuOPMMeter(file.c_str(), L"T100", nullptr), testing::ExitedWithCode(1),
                "this->backend.get\\(\\) && \"Wrong OPM meter backend\"\nFile: OPMMeter\n"
                "Line: 72\nApplication will be closed");
}

TEST_F(MeterDeathTest, AnExceptionLeavingTheLoopDisablesTheHardwareOnItsWay) {
    const std::string file = dir.File("opm.ini");
    EXPECT_DEATH(
        {
            ZuOPMMeter meter(file.c_str(), L"T100", std::make_unique<FailingBackend>());
            meter.Start();
            std::this_thread::sleep_for(std::chrono::seconds(30));
        },
        "enabled\ndisabled\n");
}

}  // namespace
}  // namespace meter_test
