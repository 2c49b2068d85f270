// Battery and mains state from the power-supply class, on a fake sysfs tree.

#include <gtest/gtest.h>

#include <sstream>

#include "Platform/PowerStatus.h"
#include "Support/ScratchDirectory.h"

namespace {

TEST(PowerStatus, BatteryAndMainsStatesMapOntoTheOldFlags) {
    // Attribute files as "supply/attribute=value".
    const struct {
        const char* files;
        BYTE acLine, flag, percent;
    } cases[] = {
        {"", AC_LINE_ONLINE, BATTERY_FLAG_NO_BATTERY, BATTERY_PERCENTAGE_UNKNOWN},
        {"B/type=Battery B/capacity=90 AC/type=Mains AC/online=0", AC_LINE_OFFLINE,
         BATTERY_FLAG_HIGH, 90},
        {"B/type=Battery B/capacity=20", AC_LINE_UNKNOWN, BATTERY_FLAG_LOW, 20},
        {"B/type=Battery B/capacity=3 B/status=Discharging", AC_LINE_OFFLINE, BATTERY_FLAG_CRITICAL,
         3},
        {"B/type=Battery B/capacity=70 B/status=Charging", AC_LINE_ONLINE,
         BATTERY_FLAG_HIGH | BATTERY_FLAG_CHARGING, 70},
        {"B/type=Battery B/present=0 AC/type=Mains AC/online=1", AC_LINE_ONLINE,
         BATTERY_FLAG_NO_BATTERY, BATTERY_PERCENTAGE_UNKNOWN},
        // The first battery by name counts, here one without a figure.
        {"C/type=Battery C/capacity=10 B/type=Battery B/capacity=x", AC_LINE_UNKNOWN,
         BATTERY_FLAG_UNKNOWN, BATTERY_PERCENTAGE_UNKNOWN},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.files);
        ScratchDirectory root;
        std::istringstream files(c.files);
        for (std::string file; files >> file;) {
            const auto path = root.Root() / file.substr(0, file.find('='));
            std::filesystem::create_directories(path.parent_path());
            ScratchDirectory::Write(path.string(), file.substr(file.find('=') + 1) + "\n");
        }
        platform::SetPowerSupplyRoot(root.Root().string());
        SYSTEM_POWER_STATUS_EX2 status{};
        EXPECT_EQ(GetSystemPowerStatusEx2(&status, sizeof status, TRUE), sizeof status);
        EXPECT_EQ(status.ACLineStatus, c.acLine);
        EXPECT_EQ(status.BatteryFlag, c.flag);
        EXPECT_EQ(status.BatteryLifePercent, c.percent);
        EXPECT_EQ(GetSystemPowerStatusEx2(&status, sizeof status - 1, TRUE), 0u);
    }
    platform::SetPowerSupplyRoot("");
}

}  // namespace
