#include <QTest>
#include <QTimer>
#include <string>
#include <vector>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/ToolkitTestSupport.h"
#include "support/LanguagePack.h"

namespace {

using Calls = std::vector<std::string>;

// A screen that records what the chain calls during initialisation and after.
class RecordingScreen : public CBaseDialog {
public:
    explicit RecordingScreen(UINT templateId = 394) : CBaseDialog(templateId) {}

    Calls calls;
    QRect barPlaceWhenTextsSet;
    std::vector<CMenuKey*> keys;

    using CBaseDialog::OnMenuCommand;
    void Tick(UINT id) { OnTimer(id); }

protected:
    std::vector<CMenuKey*> GetMenuKeys() override {
        calls.push_back("menu keys");
        for (UINT id : {544u, 545u, 525u, 510u}) keys.push_back(CreateMenuKey(id, id));
        return keys;
    }
    void OnStatusHook(UINT timerId) override {
        calls.push_back("status " + std::to_string(timerId));
    }
    void OnSetTexts() override {
        calls.push_back("texts");
        barPlaceWhenTextsSet = GetBatteryBar().geometry();
    }
    void OnDestroy() override { calls.push_back("destroy"); }
};

class BaseDialogTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(language.Loaded()); }
    ScopedLanguagePack language{"english"};
};

}  // namespace

TEST_F(BaseDialogTest, InitialisationRunsInTheChainsOrder) {
    RecordingScreen screen;
    ASSERT_TRUE(screen.Create());
    EXPECT_EQ(screen.calls, (Calls{"menu keys", "status 304", "texts"}));
    EXPECT_TRUE(screen.IsTimerRunning(304));
    for (unsigned slot = 0; slot < 4; ++slot)
        EXPECT_EQ(screen.GetMenuCtrl().GetCurrentKey(slot), screen.keys[slot]);
}

TEST_F(BaseDialogTest, BatteryBarLiesExactlyOverItsPlaceholderAndOnTop) {
    RecordingScreen screen;
    ASSERT_TRUE(screen.Create());
    const QWidget* placeholder = screen.GetDlgItem(IDC_BATTERY_BAR_PLACEHOLDER);
    ASSERT_NE(placeholder, nullptr);
    EXPECT_EQ(screen.barPlaceWhenTextsSet, placeholder->geometry());
    EXPECT_EQ(screen.GetBatteryBar().geometry(), QRect(436, 6, 196, 36));
    EXPECT_EQ(screen.children().last(), &screen.GetBatteryBar());
    EXPECT_EQ(screen.GetDlgItem(IDD_BATTARY_BAR), &screen.GetBatteryBar());
}

TEST_F(BaseDialogTest, FunctionKeysRunTheHandlersOfTheirSlotsKeys) {
    RecordingScreen screen;
    ASSERT_TRUE(screen.Create());
    std::vector<UINT> handled;
    for (UINT id : {544u, 545u, 525u, 510u})
        screen.OnMenuCommand(id, [&handled, id] { handled.push_back(id); });
    screen.show();
    for (Qt::Key key : {Qt::Key_F4, Qt::Key_F1, Qt::Key_F3, Qt::Key_F2})
        QTest::keyClick(&screen, key);
    EXPECT_EQ(handled, (std::vector<UINT>{510, 544, 525, 545}));

    // Touch reaches the same table; a disabled key reaches nothing.
    screen.keys[3]->setEnabled(false);
    QTest::keyClick(&screen, Qt::Key_F4);
    QTest::mouseClick(screen.keys[3], Qt::LeftButton);
    QTest::mouseClick(screen.keys[0], Qt::LeftButton);
    EXPECT_EQ(handled, (std::vector<UINT>{510, 544, 525, 545, 544}));
}

TEST_F(BaseDialogTest, StatusTimerDrivesTheStatusHook) {
    RecordingScreen screen;
    ASSERT_TRUE(screen.Create());
    screen.Tick(304);
    screen.Tick(305);
    EXPECT_EQ(screen.calls, (Calls{"menu keys", "status 304", "texts", "status 304"}));
    // And the real one-second timer does so by itself.
    EXPECT_TRUE(WaitUntil([&] { return screen.calls.size() >= 5; }));
    EXPECT_EQ(screen.calls.back(), "status 304");
}

TEST_F(BaseDialogTest, MenuRowFollowsTheBottomOfAResizedScreen) {
    RecordingScreen screen;
    ASSERT_TRUE(screen.Create());
    screen.show();
    screen.resize(800, 600);
    EXPECT_TRUE(WaitUntil([&] { return screen.GetMenuCtrl().width() == 800; }));
    EXPECT_EQ(screen.GetMenuCtrl().geometry(), QRect(0, 600 - 66, 800, 66));
    EXPECT_EQ(screen.keys[3]->x(), 3 * 200 + (200 - 152) / 2);
}

TEST_F(BaseDialogTest, ModalRunEndsWithTheGivenResultAndDestroys) {
    RecordingScreen screen;
    QTimer::singleShot(0, &screen, [&screen] { screen.EndDialog(IDOK); });
    EXPECT_EQ(screen.DoModal(), IDOK);
    EXPECT_EQ(screen.calls.back(), "destroy");
    EXPECT_FALSE(screen.IsTimerRunning(304));
}

TEST_F(BaseDialogTest, ModalRunOfAMissingTemplateFails) {
    RecordingScreen screen(9999);
    EXPECT_EQ(screen.DoModal(), -1);
    EXPECT_TRUE(screen.calls.empty());
}

TEST(BaseDialogDeathTest, TemplateMustHoldThePlaceholders) {
    ScopedLanguagePack language(OPM_TOOLKIT_TEST_PACK);
    EXPECT_FATAL(
        {
            CBaseDialog screen(510);
            screen.Create();
        },
        "batteryBarPlaceholder && \"Did you forget to add IDC_BATTERY_BAR_PLACEHOLDER to "
        "dialog in editor ?\"",
        "BaseDialog");
    EXPECT_FATAL(
        {
            CBaseDialog screen(511);
            screen.Create();
        },
        "placeholder && \"Menu placeholder is missing from the dialog template\"", "MenuCtrl");
}
