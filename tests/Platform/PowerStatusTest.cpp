#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "Platform/PowerStatus.h"

namespace {

namespace fs = std::filesystem;

// A power-supply class directory made of plain files, as the kernel lays it out.
class FakeSupplies {
public:
    FakeSupplies() : root(fs::temp_directory_path() / ("opm-power-" + std::to_string(::getpid()))) {
        fs::remove_all(root);
        fs::create_directories(root);
        platform::SetPowerSupplyRoot(root.string());
    }
    ~FakeSupplies() {
        platform::SetPowerSupplyRoot("");
        fs::remove_all(root);
    }
    void Add(const std::string& name, const std::map<std::string, std::string>& attributes) {
        fs::create_directories(root / name);
        for (const auto& [attribute, value] : attributes)
            std::ofstream(root / name / attribute) << value << "\n";
    }
    SYSTEM_POWER_STATUS_EX2 Read() const {
        SYSTEM_POWER_STATUS_EX2 status{};
        EXPECT_EQ(GetSystemPowerStatusEx2(&status, sizeof(status), TRUE), sizeof(status));
        return status;
    }

private:
    fs::path root;
};

struct Case {
    const char* name;
    std::map<std::string, std::string> battery;  // empty: no battery
    const char* mainsOnline;                     // null: no mains entry
    BYTE acLine;
    BYTE flag;
    BYTE percent;
};

}  // namespace

TEST(PowerStatus, BatteryAndMainsStatesMapOntoTheOldFlags) {
    const Case cases[] = {
        {"nothing listed: mains",
         {},
         nullptr,
         AC_LINE_ONLINE,
         BATTERY_FLAG_NO_BATTERY,
         BATTERY_PERCENTAGE_UNKNOWN},
        {"mains only",
         {},
         "1",
         AC_LINE_ONLINE,
         BATTERY_FLAG_NO_BATTERY,
         BATTERY_PERCENTAGE_UNKNOWN},
        {"full battery, unplugged",
         {{"type", "Battery"}, {"capacity", "90"}, {"status", "Discharging"}},
         "0",
         AC_LINE_OFFLINE,
         BATTERY_FLAG_HIGH,
         90},
        {"half battery, charging",
         {{"type", "Battery"}, {"capacity", "50"}, {"status", "Charging"}},
         "1",
         AC_LINE_ONLINE,
         BATTERY_FLAG_CHARGING,
         50},
        {"low battery, no mains entry",
         {{"type", "Battery"}, {"capacity", "20"}, {"status", "Discharging"}},
         nullptr,
         AC_LINE_OFFLINE,
         BATTERY_FLAG_LOW,
         20},
        {"critical battery",
         {{"type", "Battery"}, {"capacity", "3"}, {"status", "Discharging"}},
         "0",
         AC_LINE_OFFLINE,
         BATTERY_FLAG_CRITICAL,
         3},
        {"charging without mains entry",
         {{"type", "Battery"}, {"capacity", "70"}, {"status", "Charging"}},
         nullptr,
         AC_LINE_ONLINE,
         BATTERY_FLAG_HIGH | BATTERY_FLAG_CHARGING,
         70},
        {"capacity unknown",
         {{"type", "Battery"}, {"status", "Unknown"}},
         nullptr,
         AC_LINE_UNKNOWN,
         BATTERY_FLAG_UNKNOWN,
         BATTERY_PERCENTAGE_UNKNOWN},
        {"battery slot empty",
         {{"type", "Battery"}, {"present", "0"}, {"capacity", "80"}},
         "1",
         AC_LINE_ONLINE,
         BATTERY_FLAG_NO_BATTERY,
         BATTERY_PERCENTAGE_UNKNOWN},
    };
    for (const Case& c : cases) {
        FakeSupplies supplies;
        if (!c.battery.empty()) supplies.Add("BAT0", c.battery);
        if (c.mainsOnline != nullptr)
            supplies.Add("AC", {{"type", "Mains"}, {"online", c.mainsOnline}});
        const SYSTEM_POWER_STATUS_EX2 status = supplies.Read();
        EXPECT_EQ(status.ACLineStatus, c.acLine) << c.name;
        EXPECT_EQ(status.BatteryFlag, c.flag) << c.name;
        EXPECT_EQ(status.BatteryLifePercent, c.percent) << c.name;
    }
}

TEST(PowerStatus, ElectricalReadingsAreConvertedToTheOldUnits) {
    FakeSupplies supplies;
    supplies.Add("BAT0", {{"type", "Battery"},
                          {"capacity", "64"},
                          {"status", "Discharging"},
                          {"voltage_now", "3912000"},
                          {"current_now", "850000"},
                          {"temp", "312"},
                          {"time_to_empty_now", "7200"},
                          {"technology", "Li-ion"}});
    const SYSTEM_POWER_STATUS_EX2 status = supplies.Read();
    EXPECT_EQ(status.BatteryVoltage, 3912u);
    EXPECT_EQ(static_cast<int32_t>(status.BatteryCurrent), -850);
    EXPECT_EQ(status.BatteryTemperature, 312u);
    EXPECT_EQ(status.BatteryLifeTime, 7200u);
    EXPECT_EQ(status.BatteryChemistry, BATTERY_CHEMISTRY_LION);
    EXPECT_EQ(status.BackupBatteryFlag, BATTERY_FLAG_UNKNOWN);
}

TEST(PowerStatus, FirstBatteryByNameCountsAndBrokenEntriesAreIgnored) {
    FakeSupplies supplies;
    supplies.Add("BAT1", {{"type", "Battery"}, {"capacity", "10"}, {"status", "Discharging"}});
    supplies.Add("BAT0", {{"type", "Battery"}, {"capacity", "not a number"}});
    supplies.Add("junk", {});
    const SYSTEM_POWER_STATUS_EX2 status = supplies.Read();
    EXPECT_EQ(status.BatteryLifePercent, BATTERY_PERCENTAGE_UNKNOWN);
}

TEST(PowerStatus, RefusesAMissingOrShortBuffer) {
    SYSTEM_POWER_STATUS_EX2 status{};
    EXPECT_EQ(GetSystemPowerStatusEx2(nullptr, sizeof(status), TRUE), 0u);
    EXPECT_EQ(GetSystemPowerStatusEx2(&status, sizeof(status) - 1, TRUE), 0u);
}
