#include <QLabel>
#include <QTemporaryDir>
#include <fstream>
#include <map>

#include "Common/Toolkit/BattaryBar.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/LocalTime.h"
#include "Platform/PowerStatus.h"
#include "support/LanguagePack.h"
#include "support/Screenshot.h"

namespace {

class BattaryBarTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(language.Loaded());
        ASSERT_TRUE(root.isValid());
        platform::SetPowerSupplyRoot(root.path().toStdString());
        SetClock(9, 5);
        parent.resize(300, 60);
        ASSERT_TRUE(bar.Create(&parent, IDD_BATTARY_BAR, CBRS_NOALIGN, IDD_BATTARY_BAR));
    }
    void TearDown() override {
        platform::SetPowerSupplyRoot("");
        platform::OverrideLocalTime({});
    }
    void SetClock(WORD hour, WORD minute) {
        platform::OverrideLocalTime([hour, minute] {
            SYSTEMTIME t{};
            t.wYear = 2026;
            t.wMonth = 11;
            t.wDay = 22;
            t.wHour = hour;
            t.wMinute = minute;
            return t;
        });
    }
    void SetBattery(int capacity, const char* status) {
        const QString dir = root.filePath("BAT0");
        QDir().mkpath(dir);
        const std::map<std::string, std::string> files{
            {"type", "Battery"}, {"capacity", std::to_string(capacity)}, {"status", status}};
        for (const auto& [name, value] : files)
            std::ofstream((dir + "/" + QString::fromStdString(name)).toStdString()) << value;
    }
    QString ClockLabel() const {
        return qobject_cast<QLabel*>(GetDlgItem(const_cast<CBattaryBar*>(&bar), IDC_BATTERY_CLOCK))
            ->text();
    }

    ScopedLanguagePack language{"english"};
    QTemporaryDir root;
    QWidget parent;
    CBattaryBar bar;
};

}  // namespace

TEST_F(BattaryBarTest, WithoutABatteryItShowsMainsAndTheClock) {
    EXPECT_TRUE(bar.OnMainsWithoutBattery());
    EXPECT_EQ(bar.Level(), -1);
    EXPECT_EQ(bar.ClockText(), "09:05");
    EXPECT_EQ(ClockLabel(), "09:05");
    EXPECT_EQ(bar.size(), QSize(196, 36));
}

TEST_F(BattaryBarTest, RefreshFollowsLevelChargingAndTime) {
    SetBattery(57, "Discharging");
    SetClock(23, 59);
    bar.Refresh();
    EXPECT_FALSE(bar.OnMainsWithoutBattery());
    EXPECT_EQ(bar.Level(), 57);
    EXPECT_FALSE(bar.IsCharging());
    EXPECT_EQ(ClockLabel(), "23:59");

    SetBattery(58, "Charging");
    bar.Refresh();
    EXPECT_EQ(bar.Level(), 58);
    EXPECT_TRUE(bar.IsCharging());
}

TEST_F(BattaryBarTest, GaugeLooksDifferentForEachState) {
    parent.show();
    const QImage mains = bar.grab().toImage();
    screenshot::Save("battery-bar-mains", &bar);
    SetBattery(80, "Discharging");
    bar.Refresh();
    const QImage full = bar.grab().toImage();
    screenshot::Save("battery-bar-80", &bar);
    SetBattery(80, "Charging");
    bar.Refresh();
    const QImage charging = bar.grab().toImage();
    screenshot::Save("battery-bar-charging", &bar);
    SetBattery(9, "Discharging");
    bar.Refresh();
    const QImage low = bar.grab().toImage();
    screenshot::Save("battery-bar-9", &bar);
    EXPECT_NE(mains, full);
    EXPECT_NE(full, charging);
    EXPECT_NE(full, low);
}

TEST(BattaryBar, CreationNeedsItsTemplateAndHappensOnce) {
    ScopedLanguagePack language("english");
    QWidget parent;
    CBattaryBar missing;
    EXPECT_FALSE(missing.Create(&parent, 9999, CBRS_NOALIGN, IDD_BATTARY_BAR));
    missing.setParent(nullptr);
    CBattaryBar bar;
    EXPECT_TRUE(bar.Create(&parent, IDD_BATTARY_BAR, CBRS_NOALIGN, IDD_BATTARY_BAR));
    EXPECT_FALSE(bar.Create(&parent, IDD_BATTARY_BAR, CBRS_NOALIGN, IDD_BATTARY_BAR));
    bar.setParent(nullptr);
}
