#include <QLabel>
#include <QPushButton>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/BitmapMenuKey.h"
#include "Common/Toolkit/BrevoLayouter.h"
#include "Common/Toolkit/CompositedBitmapMenuKey.h"
#include "Common/Toolkit/ControlsFocusGraph.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/KeysCombinationCatcher.h"
#include "Common/Toolkit/ScrollMarks.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Utilities/LanguageResources.h"

using toolkittest::WaitUntil;

namespace {

const UINT kCommands[] = {544, 545, 525, 510};

// The measuring screen's template with soft keys; their commands, the chain's
// hooks and the key operations all go into one trace.
class Screen : public CBaseDialog {
public:
    explicit Screen(UINT templateId = 394, size_t keyCount = 4)
        : CBaseDialog(templateId), keyCount(keyCount) {}
    using CBaseDialog::OnTimer;
    QStringList trace;
    std::vector<CMenuKey*> keys;
    bool consumeKeyDown = false, consumeOperations = true;
    QRect barWhenTextsSet;

protected:
    std::vector<CMenuKey*> GetMenuKeys() override {
        trace << "keys";
        for (UINT id : std::vector<UINT>(kCommands, kCommands + keyCount)) {
            keys.push_back(CreateMenuKey(id, id));
            OnMenuCommand(id, [this, id] { trace << QStringLiteral("cmd%1").arg(id); });
        }
        return keys;
    }
    void OnStatusHook(UINT id) override { trace << QStringLiteral("status%1").arg(id); }
    void OnSetTexts() override {
        trace << "texts";
        barWhenTextsSet = GetBatteryBar().geometry();
    }
    void OnDestroy() override { trace << "destroy"; }
    bool OnKeyDown(UINT key, QKeyEvent*) override {
        trace << QStringLiteral("down%1").arg(key);
        return consumeKeyDown;
    }
    bool OnKeyUp(UINT key, QKeyEvent*) override { return Op(QStringLiteral("up%1").arg(key), false); }
    bool OnTabPressed() override { return Op("Tab"); }
    bool OnEnterPressed() override { return Op("Enter"); }
    bool OnEscapePressed() override { return Op("Esc"); }
    bool OnSpacePressed() override { return Op("Space"); }
    bool OnArrowPressed(int direction) override { return Op(QStringLiteral("arrow%1").arg(direction)); }
    bool OnLButtonDown(QMouseEvent*) override { return Op("press", false); }
    bool OnLButtonUp(QMouseEvent*) override { return Op("release", false); }

private:
    bool Op(const QString& name, bool consume = true) {
        trace << name;
        return consume && consumeOperations;
    }
    size_t keyCount;
};

// Keys by name; "tapN"/"offN" tap or disable soft key N; "consume" key-down
// hooks, "pass" the operations; "button" focuses a push button, "label" and
// "rlabel" click a label left and right, "box" opens a box over the screen and
// "boxtap" taps its button.
TEST(ScreenKeys, ReachTheOperationsAndTheSoftKeysOnce) {
    const std::pair<const char*, const char*> cases[] = {
        {"Tab Return Enter", "down9 Tab up9 down13 Enter up13 down13 Enter up13"},
        {"Esc Space", "down27 Esc up27 down32 Space up32"},
        {"Left Up Right Down",
         "down37 arrow0 up37 down38 arrow1 up38 down39 arrow2 up39 down40 arrow3 up40"},
        {"F1 F2 F3 F4",
         "down112 cmd544 up112 down113 cmd545 up113 down114 cmd525 up114 down115 cmd510 up115"},
        {"A Z 0 9 F5 Backspace Del Home End",
         "down65 up65 down90 up90 down48 up48 down57 up57 down0 up0 down8 up8 down46 up46 "
         "down36 up36 down35 up35"},
        {"tap2 tap0", "press release cmd525 press release cmd544"},
        {"off3 F4 tap3 tap0", "down115 up115 press release press release cmd544"},
        {"consume F1 Esc Left", "down112 up112 down27 up27 down37 up37"},
        {"pass Esc", "down27 Esc up27 closed"},
        {"button F2 Space", "down113 cmd545 up113 down32 Space up32"},
        {"button pass F2", "down113 cmd545 up113"},
        {"label rlabel", "press release"},
        {"box F1 boxtap", ""},
    };
    ScopedLanguagePack pack;
    for (const auto& [steps, expected] : cases) {
        Screen screen;
        ASSERT_TRUE(screen.Create());
        screen.show();
        screen.trace.clear();
        QWidget* target = &screen;
        auto* label = new QLabel("text", &screen);
        label->setGeometry(10, 100, 100, 30);
        QDialog box(&screen);
        auto* boxButton = new QPushButton("OK", &box);
        for (const QString& step : QString(steps).split(' ')) {
            if (step.startsWith("tap")) {
                QTest::mouseClick(screen.keys[step.mid(3).toInt()], Qt::LeftButton);
            } else if (step.startsWith("off")) {
                screen.keys[step.mid(3).toInt()]->setEnabled(false);
            } else if (step == "consume" || step == "pass") {
                (step == "consume" ? screen.consumeKeyDown : screen.consumeOperations) = step == "consume";
            } else if (step == "button") {
                target = new QPushButton("B", &screen);
                QObject::connect(static_cast<QPushButton*>(target), &QPushButton::clicked,
                                 [&screen] { screen.trace << "clicked"; });
                target->show();
                target->setFocus();
            } else if (step.endsWith("label")) {
                label->show();
                QTest::mouseClick(label, step == "label" ? Qt::LeftButton : Qt::RightButton);
            } else if (step.startsWith("box")) {
                box.show();
                target = boxButton;
                if (step == "boxtap") QTest::mouseClick(boxButton, Qt::LeftButton);
            } else {
                QTest::keyClick(target, QKeySequence(step)[0].key());
                EXPECT_EQ(VirtualKeyFromQt(QtKeyFromVirtualKey(VirtualKeyFromQt(QKeySequence(step)[0].key()))),
                          VirtualKeyFromQt(QKeySequence(step)[0].key()));
            }
        }
        if (!screen.isVisible()) screen.trace << "closed";
        EXPECT_EQ(screen.trace.join(' '), expected) << steps;
    }
}

TEST(BaseDialog, InitialisesInTheChainsOrderWithTheBarOverItsPlaceholder) {
    ScopedLanguagePack pack;
    Screen screen;
    ASSERT_TRUE(screen.Create());
    EXPECT_EQ(screen.trace.join(' '), "keys status304 texts");
    EXPECT_TRUE(screen.IsTimerRunning(kStatusTimerId));
    for (unsigned slot = 0; slot < 4; ++slot)
        EXPECT_EQ(screen.GetMenuCtrl().GetCurrentKey(slot), screen.keys[slot]);
    EXPECT_EQ(screen.barWhenTextsSet, screen.GetDlgItem(IDC_BATTERY_BAR_PLACEHOLDER)->geometry());
    EXPECT_EQ(screen.GetBatteryBar().geometry(), QRect(436, 6, 196, 36));
    EXPECT_EQ(screen.children().last(), &screen.GetBatteryBar());
    EXPECT_EQ(screen.GetDlgItem(IDD_BATTARY_BAR), &screen.GetBatteryBar());
    // The status timer, stepped here, drives the hook; other timers do not.
    screen.OnTimer(kStatusTimerId);
    screen.OnTimer(kStatusTimerId + 1);
    EXPECT_EQ(screen.trace.join(' '), "keys status304 texts status304");
    // The soft-key row follows the bottom of a resized screen.
    screen.show();
    screen.resize(800, 600);
    EXPECT_TRUE(WaitUntil([&] { return screen.GetMenuCtrl().geometry() == QRect(0, 534, 800, 66); }));
    EXPECT_EQ(screen.keys[3]->x(), 3 * 200 + (200 - 152) / 2);
}

TEST(BaseDialog, AModalRunEndsWithItsResultAndDestroys) {
    ScopedLanguagePack pack;
    Screen screen;
    toolkittest::WhenShown<CBaseDialog>("the screen", [](CBaseDialog* shown) { shown->EndDialog(IDOK); });
    EXPECT_EQ(screen.DoModal(), IDOK);
    EXPECT_EQ(screen.trace.last(), "destroy");
    EXPECT_FALSE(screen.IsTimerRunning(kStatusTimerId));
    Screen missing(9999);
    EXPECT_EQ(missing.DoModal(), -1);
    EXPECT_TRUE(missing.trace.isEmpty());
}

TEST(BaseDialogDeathTest, ATemplateWithoutItsPlaceholdersIsFatal) {
    ScopedLanguagePack pack(OPM_TOOLKIT_TEST_PACK);
    EXPECT_FATAL(Screen(510, 0).Create(),
                 "batteryBarPlaceholder && \"Did you forget to add IDC_BATTERY_BAR_PLACEHOLDER to "
                 "dialog in editor ?\"",
                 "BaseDialog");
    EXPECT_FATAL(Screen(511, 0).Create(),
                 "placeholder && \"Menu placeholder is missing from the dialog template\"", "MenuCtrl");
}

TEST(MenuCtrl, SlotsHoldTheScreensKeysOrBlanksAndTheirOverlays) {
    ScopedLanguagePack pack;
    Screen screen(394, 2);
    ASSERT_TRUE(screen.Create());
    screen.show();
    CMenuCtrl& menu = screen.GetMenuCtrl();
    EXPECT_EQ(screen.GetDlgItem(IDC_MENU_CTRL), &menu);
    EXPECT_EQ(menu.geometry(), QRect(0, 414, 640, 66));
    for (unsigned slot = 0; slot < 4; ++slot) {
        CMenuKey* key = menu.GetCurrentKey(slot);
        EXPECT_EQ(key->geometry(), QRect(int(slot) * 160 + 4, 4, 152, 58));
        EXPECT_TRUE(key->isVisible());
        auto* blank = dynamic_cast<CBitmapMenuKey*>(key);
        if (slot < 2) {
            EXPECT_EQ(key, screen.keys[slot]);
            EXPECT_EQ(key->GetOverlayId(), 572 + slot);
        } else {
            EXPECT_EQ(key->GetDlgCtrlID(), slot + 1);
            EXPECT_EQ(blank->NormalBitmapId(), 478u);
        }
    }
    CMenuKey* blank = menu.GetCurrentKey(3);
    CMenuKey* added = menu.AddKey(std::make_unique<CBitmapMenuKey>(544, 544, 544));
    EXPECT_EQ(added->GetDlgCtrlID(), 7u);  // after the four blanks and the screen's two
    EXPECT_FALSE(added->isVisible());
    menu.ReplaceKey(3, added);
    EXPECT_EQ(menu.GetCurrentKey(3), added);
    EXPECT_EQ(added->GetOverlayId(), 575u);
    EXPECT_EQ(added->geometry(), blank->geometry());
    EXPECT_TRUE(added->isVisible() && !blank->isVisible());
    CMenuKey* other = menu.AddKey(std::make_unique<CBitmapMenuKey>(545, 545, 545));
    menu.ReplaceKey(screen.keys[1], other);
    EXPECT_EQ(menu.GetCurrentKey(1), other);
    EXPECT_FALSE(screen.keys[1]->isVisible());
    // An empty entry leaves its slot alone; an overlay loads again only when it changes.
    const qint64 loaded = other->GetOverlay().Pixmap().cacheKey();
    menu.SetCurrentKeys({nullptr, other});
    EXPECT_EQ(other->GetOverlay().Pixmap().cacheKey(), loaded);
    EXPECT_EQ(menu.GetCurrentKey(0), screen.keys[0]);
    menu.SetCurrentKeys({nullptr, nullptr, other});
    EXPECT_EQ(other->GetOverlayId(), 574u);
    EXPECT_NE(other->GetOverlay().Pixmap().cacheKey(), loaded);
    EXPECT_EQ(menu.GetCurrentKey(3), added);
}

class Submenu : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(screen.Create());
        screen.move(0, 0);
        screen.show();
        screen.activateWindow();
        focused->show();
        focused->setFocus();
        ASSERT_TRUE(WaitUntil([&] { return focused->hasFocus(); }));
    }
    // Runs the column; `script` runs once it is open.
    int Run(CSubmenuDialog& column, std::function<void()> script) {
        toolkittest::WhenShown<CSubmenuDialog>("the submenu", [script](CSubmenuDialog*) { script(); });
        return column.Show();
    }

    ScopedLanguagePack pack;
    Screen screen;
    QPushButton* focused = new QPushButton("focus", &screen);
};

// Keys go to the column ("screen:" ones to the screen underneath); "tapN"
// taps key N, "outside" a soft key of the screen; "?" checks that the column
// is still open with the focus on its current key.
TEST_F(Submenu, KeysAndTapsChooseOrCancelAndTheFocusGoesBack) {
    const struct {
        const char* steps;
        unsigned slot;
        int keys;
        size_t current;
        int disabled;
        int result;
        UINT chosen;
    } cases[] = {
        {"? Down ? Return", 0, 4, 1, -1, IDOK, 2},
        {"Down Space", 0, 3, 0, -1, IDOK, 1},
        {"Up ? Return", 0, 3, 0, -1, IDOK, 2},  // round from the first to the last
        {"Tab ? Return", 0, 3, 1, -1, IDOK, 1},
        {"tap2", 2, 3, 0, -1, IDOK, 2},
        {"Return tap1 ? Up Return", 0, 3, 1, 1, IDOK, 0},
        {"outside", 0, 3, 0, -1, IDCANCEL, 0},
        {"Esc", 0, 3, 0, -1, IDCANCEL, 0},
        {"F1 ? F4", 3, 3, 0, -1, IDCANCEL, 0},  // only the opening key closes it
        {"screen:F2 screen:Down screen:Return", 0, 3, 0, -1, IDOK, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.steps);
        CSubmenuDialog column(screen.keys[c.slot], VK_F1 + c.slot, &screen);
        for (int i = 0; i < c.keys; ++i) column.AddKey(UINT(i), QStringLiteral("%1 nm").arg(1300 + 10 * i));
        column.SetCurrentKey(c.current);
        if (c.disabled >= 0) column.GetKey(c.disabled)->setEnabled(false);
        const int result = Run(column, [&] {
            for (const QString& step : QString(c.steps).split(' ')) {
                if (step == "?") {
                    CTextMenuKey* current = column.GetKey(column.GetCurrentKey());
                    EXPECT_TRUE(column.isVisible());
                    EXPECT_TRUE(!current->isEnabled() || WaitUntil([&] { return current->hasFocus(); }));
                } else if (step.startsWith("tap")) {
                    QTest::mouseClick(column.GetKey(step.mid(3).toInt()), Qt::LeftButton);
                } else if (step == "outside") {
                    QTest::mouseClick(screen.keys[3], Qt::LeftButton);
                } else {
                    QTest::keyClick(step.startsWith("screen:") ? static_cast<QWidget*>(&screen) : &column,
                                    QKeySequence(step.mid(step.indexOf(':') + 1))[0].key());
                }
            }
        });
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(column.GetSelectedId(), c.chosen);
        EXPECT_FALSE(column.isVisible());
        EXPECT_TRUE(screen.trace.filter("cmd").isEmpty());
        EXPECT_TRUE(WaitUntil([&] { return focused->hasFocus(); }));
    }
}

TEST_F(Submenu, OpensAboveItsKeyAsWideAsItsWidestCaptionWithinTheScreen) {
    for (unsigned slot : {0u, 3u}) {
        CSubmenuDialog column(screen.keys[slot], VK_F1 + slot, &screen);
        column.AddKey(0, "1310 nm");
        if (slot == 3) column.AddKey(1, "Switch every laser off at once");
        Run(column, [&] {
            const QRect anchor(screen.keys[slot]->mapToGlobal(QPoint(0, 0)), screen.keys[slot]->size());
            const QRect placed = column.geometry();
            EXPECT_EQ(placed.bottom() + 1, anchor.top());
            EXPECT_EQ(placed.height(), int(column.GetKeysCount()) * CSubmenuDialog::kKeyHeight);
            // Left edges aligned, or as wide as the widest caption and kept on the screen.
            const QRect expected = slot == 0 ? QRect(anchor.left(), 0, anchor.width(), 1)
                                             : QRect(0, 0, column.GetKey(1)->NeededWidth(), 1);
            EXPECT_EQ(placed.width(), expected.width());
            EXPECT_EQ(slot == 0 ? placed.left() : placed.right(),
                      slot == 0 ? expected.left() : screen.geometry().right());
            EXPECT_EQ(column.GetKey(column.GetKeysCount()), nullptr);
            QTest::keyClick(&column, Qt::Key_Escape);
        });
    }
}

TEST_F(Submenu, ALongColumnShowsWhatFitsScrolledToTheCurrentKey) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    for (int i = 0; i < 14; ++i) column.AddKey(UINT(i), QStringLiteral("%1 nm").arg(1250 + 25 * i));
    column.SetCurrentKey(12);
    Run(column, [&] {
        // 480 / 48: ten keys fit; the current one is the last of them.
        EXPECT_EQ(column.VisibleKeysNum(), 10u);
        EXPECT_EQ(column.FirstVisibleKey(), 3u);
        EXPECT_EQ(column.geometry().top(), screen.geometry().top());
        EXPECT_EQ(column.GetKey(12)->y(), 9 * CSubmenuDialog::kKeyHeight);
        EXPECT_TRUE(column.GetKey(3)->isVisible() && column.GetKey(12)->isVisible());
        EXPECT_FALSE(column.GetKey(2)->isVisible() || column.GetKey(13)->isVisible());
        EXPECT_TRUE(column.ScrollMarks()->MoreAbove() && column.ScrollMarks()->MoreBelow());
        QTest::keyClick(&column, Qt::Key_Down);
        EXPECT_EQ(column.FirstVisibleKey(), 4u);
        EXPECT_TRUE(column.GetKey(13)->isVisible());
        EXPECT_FALSE(column.ScrollMarks()->MoreBelow());
        QTest::keyClick(&column, Qt::Key_Down);  // round to the first
        EXPECT_EQ(column.FirstVisibleKey(), 0u);
        EXPECT_FALSE(column.ScrollMarks()->MoreAbove());
        QTest::keyClick(&column, Qt::Key_Up);
        EXPECT_EQ(column.FirstVisibleKey(), 4u);
        QTest::keyClick(&column, Qt::Key_Return);
    });
    EXPECT_EQ(column.GetSelectedId(), 13u);
}

TEST(SubmenuDeathTest, AScreenLowerThanOneKeyHoldsNoColumn) {
    ScopedLanguagePack pack;
    EXPECT_FATAL(
        {
            QWidget tiny;
            tiny.resize(200, 40);
            QFont font;
            auto* anchor = new CTextMenuKey(0, "a", &font);
            anchor->setParent(&tiny);
            CSubmenuDialog column(anchor, VK_F1, &tiny);
            column.AddKey(1, "one");
            column.Show();
        },
        "visibleKeysNum > 0", "SubmenuDialog");
}

// Buttons 601 602 / 603 604 in a grid of the test pack, 605 outside the graph.
class GridScreen : public CKeyboardControlledDialog {
public:
    GridScreen() : CKeyboardControlledDialog(512) {}
    ControlsFocusGraph graph{*this};

protected:
    bool OnInitDialog() override {
        graph.Add(601, 0, 0, 602, 603).Add(602, 601, 0, 0, 604).Add(603, 0, 601, 604, 0).Add(604, 603, 602, 0, 0);
        return true;
    }
    bool OnArrowPressed(int direction) override {
        graph.Move(direction);
        return true;
    }
};

TEST(FocusGraph, ArrowsFollowTheGraphAndZeroOrNoNeighbourKeepsTheFocus) {
    ScopedLanguagePack pack(OPM_TOOLKIT_TEST_PACK);
    GridScreen screen;
    ASSERT_TRUE(screen.Create());
    screen.show();
    screen.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&screen));
    const int moves[][3] = {{601, Qt::Key_Right, 602}, {602, Qt::Key_Down, 604}, {604, Qt::Key_Left, 603},
                            {603, Qt::Key_Up, 601},    {601, Qt::Key_Down, 603}, {604, Qt::Key_Up, 602},
                            {601, Qt::Key_Left, 601},  {601, Qt::Key_Up, 601},   {604, Qt::Key_Right, 604},
                            {603, Qt::Key_Down, 603},  {605, Qt::Key_Left, 605}, {605, Qt::Key_Down, 605}};
    for (const auto& [from, key, to] : moves) {
        screen.GetDlgItem(from)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
        EXPECT_EQ(QApplication::focusWidget(), screen.GetDlgItem(to)) << from << " key " << key;
    }
    QApplication::focusWidget()->clearFocus();
    screen.graph.Move(kArrowRight);
    EXPECT_EQ(QApplication::focusWidget(), nullptr);
}

TEST(KeysCombination, IsCaughtOnlyInOrderAndStartsOverOnAStrangerOrWhenOutgrown) {
    const std::pair<std::vector<UINT>, bool> sequences[] = {
        {{VK_LEFT, VK_RIGHT, VK_F1}, true},
        {{VK_LEFT, VK_LEFT, VK_RIGHT, VK_F1}, false},  // four keys, cleared only by the next
        {{VK_LEFT, VK_UP, VK_LEFT, VK_RIGHT, VK_F1}, true},
        {{VK_RIGHT, VK_LEFT, VK_F1}, false},
        {{VK_LEFT, VK_RIGHT, VK_F2}, false},
        {{VK_LEFT, VK_LEFT, VK_RIGHT, VK_F1, VK_LEFT, VK_RIGHT, VK_F1}, true},
        {{VK_LEFT, VK_LEFT, VK_RIGHT, VK_F1, VK_F1, VK_LEFT, VK_RIGHT, VK_F1}, false},
    };
    for (const auto& [keys, caught] : sequences) {
        KeysCombinationCatcher catcher({VK_LEFT, VK_RIGHT, VK_F1});
        for (UINT key : keys) catcher.OnKey(key);
        EXPECT_EQ(catcher.IsCaught(), caught) << keys.size();
        catcher.Reset();
        EXPECT_TRUE(catcher.CaughtKeys().empty());
    }
    KeysCombinationCatcher catcher({VK_LEFT, VK_RIGHT, VK_F2});
    EXPECT_TRUE(catcher.OnKey(VK_LEFT) && catcher.OnKey(VK_F2));
    EXPECT_EQ(catcher.CaughtKeys().size(), 2u);
    EXPECT_FALSE(catcher.OnKey(VK_RETURN));
    EXPECT_TRUE(catcher.CaughtKeys().empty());
}

TEST(MenuKey, EveryStateLooksDifferentAndACompositedKeyDrawsWhereItIsTold) {
    ScopedLanguagePack pack;
    QFont font;
    FontCreator::CreateCommonFont(font, 16, 700);
    QWidget window;
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (CMenuKey* key : {static_cast<CMenuKey*>(new CBitmapMenuKey(544, 544, 544)),
                          static_cast<CMenuKey*>(new CTextMenuKey(3, "1550 nm", &font))}) {
        key->setParent(&window);
        key->setFocusPolicy(Qt::StrongFocus);
        key->show();
        key->SetOverlay(572);
        std::vector<QImage> looks{key->grab().toImage()};
        key->setFocus();
        EXPECT_TRUE(WaitUntil([&] { return key->State() == CToolkitStyle::KeyState::Focused; }));
        looks.push_back(key->grab().toImage());
        key->setDown(true);
        looks.push_back(key->grab().toImage());
        key->setDown(false);
        key->setEnabled(false);
        looks.push_back(key->grab().toImage());
        for (size_t i = 0; i < looks.size(); ++i)
            for (size_t j = i + 1; j < looks.size(); ++j) EXPECT_NE(looks[i], looks[j]) << i << j;
    }
    ScopedLanguagePack testPack(OPM_TOOLKIT_TEST_PACK);
    CCompositedBitmapMenuKey key(9, 700, 701, QPoint(10, 24), QSize(), QPoint(110, 4), QSize(36, 24));
    key.SetOverlay(702);
    EXPECT_EQ(key.TextRect(), QRect(QPoint(10, 24), LoadResourceBitmap(701).size()));
    const QImage picture = key.grab().toImage();
    EXPECT_EQ(picture.pixelColor(110 + 18, 4 + 12).rgb(), CToolkitStyle::BadgeFill().rgb());
    EXPECT_NE(picture.pixelColor(6 + 15, 5 + 10).rgb(), CToolkitStyle::BadgeFill().rgb());
}

TEST(BrevoLayouter, ControlsFollowTheEdgesTheyAreAnchoredTo) {
    const unsigned L = LayoutOptions::kLeft, T = LayoutOptions::kTop, R = LayoutOptions::kRight,
                   B = LayoutOptions::kBottom;
    const std::tuple<unsigned, int, QRect> placements[] = {  // from 640x480 to 800x600
        {L | T, 0, QRect(100, 200, 50, 40)},      {R | B, 0, QRect(260, 320, 50, 40)},
        {L | R | T, 0, QRect(100, 200, 210, 40)}, {L | T | B, 0, QRect(100, 200, 50, 160)},
        {0, 0, QRect(180, 260, 50, 40)},          {L | R | B, 30, QRect(100, 330, 210, 30)},
        {L | T, 30, QRect(100, 200, 50, 30)}};
    for (const auto& [anchors, height, expected] : placements) {
        QWidget dialog;
        dialog.resize(640, 480);
        dialog.show();
        auto* control = new QWidget(&dialog);
        control->setGeometry(100, 200, 50, 40);
        auto* gone = new QWidget(&dialog);
        BrevoLayouter layouter;
        layouter.Bind(&dialog);
        layouter.AddControl(*gone, {});
        layouter.AddControl(*control, LayoutOptions{anchors, height});
        delete gone;  // skipped from now on
        dialog.resize(800, 600);
        EXPECT_TRUE(WaitUntil([&] { return control->geometry() == expected; })) << anchors << " " << height;
    }
}

TEST(FontCreator, FacesAndHeightsComeFromThePackAndAreReadOnceUntilReset) {
    ScopedLanguagePack english;
    QFont common, tahoma;
    FontCreator::CreateCommonFont(common, 14, 400);
    FontCreator::CreateFont(tahoma, 28, 700);
    EXPECT_EQ(common.family(), "DejaVu Sans");
    EXPECT_EQ(common.pixelSize(), 14 + 6);
    EXPECT_EQ(common.weight(), QFont::Normal);
    EXPECT_EQ(tahoma.family(), "Tahoma");
    EXPECT_EQ(tahoma.pixelSize(), 28 + 6);
    EXPECT_EQ(tahoma.weight(), QFont::Bold);
    const HMODULE test = LoadLibraryW(L"" OPM_TOOLKIT_TEST_PACK);
    AfxSetResourceHandle(test);
    EXPECT_EQ(FontCreator::CommonSettings().heightOffset, 6);  // a switch alone changes nothing
    FontCreator::ResetCommonFontSettings();
    QFont fallback;
    FontCreator::CreateCommonFont(fallback, 16, 700);
    EXPECT_EQ(fallback.family(), "Tahoma");  // an empty face string
    EXPECT_EQ(fallback.pixelSize(), 16 - 2);
    FreeLibrary(test);
}

}  // namespace
