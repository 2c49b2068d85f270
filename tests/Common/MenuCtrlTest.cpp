#include <QFrame>
#include <QSignalSpy>
#include <QTest>
#include <vector>

#include "Common/Toolkit/BitmapMenuKey.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/MenuCtrl.h"
#include "Common/Toolkit/NotifyEvent.h"
#include "Common/ToolkitTestSupport.h"
#include "support/LanguagePack.h"

namespace {

struct Notification {
    WPARAM wParam;
    HWND from;
    UINT id;
    UINT code;
};

// A screen stand-in with the menu's placeholder; records notifications.
class Screen : public QWidget {
public:
    Screen() {
        resize(640, 480);
        auto* placeholder = new QFrame(this);
        placeholder->setObjectName("1000");
        placeholder->setGeometry(0, 414, 640, 66);
    }
    std::vector<Notification> received;

protected:
    bool event(QEvent* event) override {
        if (event->type() != CNotifyEvent::EventType()) return QWidget::event(event);
        auto* notify = static_cast<CNotifyEvent*>(event);
        const NMHDR* h = notify->Header();
        received.push_back({notify->WParam(), h->hwndFrom, h->idFrom, h->code});
        return true;
    }
};

class MenuCtrlTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(language.Loaded());
        menu.SubclassDlgItem(1000, &screen);
        screen.show();
    }
    CMenuKey* AddKey(UINT id) { return menu.AddKey(std::make_unique<CBitmapMenuKey>(id, id, id)); }
    std::vector<CMenuKey*> AddScreenKeys() {
        return {AddKey(544), AddKey(545), AddKey(525), AddKey(510)};
    }
    std::vector<UINT> Codes() const {
        std::vector<UINT> codes;
        for (const Notification& n : screen.received) codes.push_back(n.code);
        return codes;
    }

    ScopedLanguagePack language{"english"};
    Screen screen;
    CMenuCtrl menu;
};

using CodeList = std::vector<UINT>;

}  // namespace

TEST_F(MenuCtrlTest, FreshMenuShowsFourBlankKeysInThePlaceholdersPlace) {
    EXPECT_EQ(GetDlgItem(&screen, 1000), &menu);
    EXPECT_EQ(menu.geometry(), QRect(0, 414, 640, 66));
    EXPECT_EQ(menu.GetKeysCount(), 4u);
    for (unsigned slot = 0; slot < 4; ++slot) {
        auto* key = dynamic_cast<CBitmapMenuKey*>(menu.GetCurrentKey(slot));
        ASSERT_NE(key, nullptr);
        EXPECT_EQ(key->NormalBitmapId(), 478u);
        EXPECT_EQ(key->FocusedBitmapId(), 478u);
        EXPECT_EQ(key->GetDlgCtrlID(), slot + 1);
        EXPECT_TRUE(key->isVisible());
    }
}

TEST_F(MenuCtrlTest, KeysAreCentredInFourEqualColumns) {
    menu.SetCurrentKeys(AddScreenKeys());
    for (unsigned slot = 0; slot < 4; ++slot) {
        const QRect key = menu.GetCurrentKey(slot)->geometry();
        EXPECT_EQ(key.topLeft(), QPoint(int(slot) * 160 + (160 - 152) / 2, (66 - 58) / 2));
        EXPECT_EQ(key.size(), QSize(152, 58));
    }
}

TEST_F(MenuCtrlTest, FunctionKeysPressSlotsZeroToThree) {
    menu.SetCurrentKeys(AddScreenKeys());
    QSignalSpy spy(&menu, &CMenuCtrl::KeyNotified);
    for (unsigned slot : {3u, 0u, 2u, 1u}) menu.PressKey(slot);
    EXPECT_EQ(Codes(), (CodeList{510, 544, 525, 545}));
    for (const Notification& n : screen.received) {
        EXPECT_EQ(n.wParam, 1000u);
        EXPECT_EQ(n.id, 1000u);
        EXPECT_EQ(n.from, WindowHandleOf(&screen));
    }
    ASSERT_EQ(spy.count(), 4);
    EXPECT_EQ(spy[0][0].toUInt(), 1000u);
    EXPECT_EQ(spy[0][1].toUInt(), 510u);
}

TEST_F(MenuCtrlTest, TouchingAKeyNotifiesItsCommand) {
    const std::vector<CMenuKey*> keys = AddScreenKeys();
    menu.SetCurrentKeys(keys);
    QTest::mouseClick(keys[2], Qt::LeftButton);
    QTest::mouseClick(keys[0], Qt::LeftButton);
    EXPECT_EQ(Codes(), (CodeList{525, 544}));
}

TEST_F(MenuCtrlTest, DisabledKeyIgnoresItsFunctionKeyAndTouch) {
    const std::vector<CMenuKey*> keys = AddScreenKeys();
    menu.SetCurrentKeys(keys);
    keys[1]->setEnabled(false);
    menu.PressKey(1);
    QTest::mouseClick(keys[1], Qt::LeftButton);
    EXPECT_TRUE(screen.received.empty());
    keys[1]->setEnabled(true);
    menu.PressKey(1);
    EXPECT_EQ(Codes(), (CodeList{545}));
}

TEST_F(MenuCtrlTest, FewerKeysLeaveBlankKeysInTheRemainingSlots) {
    CMenuKey* blank2 = menu.GetCurrentKey(2);
    CMenuKey* blank3 = menu.GetCurrentKey(3);
    CMenuKey* blank0 = menu.GetCurrentKey(0);
    CMenuKey* a = AddKey(544);
    CMenuKey* b = AddKey(545);
    menu.SetCurrentKeys({a, b});
    EXPECT_EQ(menu.GetCurrentKey(0), a);
    EXPECT_EQ(menu.GetCurrentKey(1), b);
    EXPECT_EQ(menu.GetCurrentKey(2), blank2);
    EXPECT_EQ(menu.GetCurrentKey(3), blank3);
    EXPECT_EQ(a->GetOverlayId(), 572u);
    EXPECT_EQ(b->GetOverlayId(), 573u);
    EXPECT_FALSE(blank0->isVisible());
    EXPECT_TRUE(blank2->isVisible() && a->isVisible() && b->isVisible());
}

TEST_F(MenuCtrlTest, EmptyEntryLeavesItsSlotAlone) {
    const std::vector<CMenuKey*> keys = AddScreenKeys();
    menu.SetCurrentKeys(keys);
    CMenuKey* other = AddKey(544);
    menu.SetCurrentKeys({nullptr, nullptr, other});
    EXPECT_EQ(menu.GetCurrentKey(0), keys[0]);
    EXPECT_EQ(menu.GetCurrentKey(1), keys[1]);
    EXPECT_EQ(menu.GetCurrentKey(2), other);
    EXPECT_EQ(menu.GetCurrentKey(3), keys[3]);
    EXPECT_FALSE(keys[2]->isVisible());
}

TEST_F(MenuCtrlTest, OverlayIsReloadedOnlyWhenItChanges) {
    CMenuKey* key = AddKey(544);
    menu.SetCurrentKeys({nullptr, key});
    const qint64 loaded = key->GetOverlay().Pixmap().cacheKey();
    menu.SetCurrentKeys({nullptr, key});
    menu.ReplaceKey(1, key);
    EXPECT_EQ(key->GetOverlay().Pixmap().cacheKey(), loaded);
    menu.SetCurrentKeys({nullptr, nullptr, key});
    EXPECT_EQ(key->GetOverlayId(), 574u);
    EXPECT_NE(key->GetOverlay().Pixmap().cacheKey(), loaded);
}

TEST_F(MenuCtrlTest, ReplacedKeyIsHiddenAndTheNewOneTakesItsSlot) {
    const std::vector<CMenuKey*> keys = AddScreenKeys();
    menu.SetCurrentKeys(keys);
    CMenuKey* byIndex = AddKey(544);
    menu.ReplaceKey(3, byIndex);
    EXPECT_EQ(menu.GetCurrentKey(3), byIndex);
    EXPECT_EQ(byIndex->GetOverlayId(), 575u);
    EXPECT_EQ(byIndex->geometry(), keys[3]->geometry());
    EXPECT_TRUE(byIndex->isVisible());
    EXPECT_FALSE(keys[3]->isVisible());

    CMenuKey* byKey = AddKey(545);
    menu.ReplaceKey(keys[1], byKey);
    EXPECT_EQ(menu.GetCurrentKey(1), byKey);
    EXPECT_EQ(byKey->GetOverlayId(), 573u);
    EXPECT_FALSE(keys[1]->isVisible());
}

TEST_F(MenuCtrlTest, AddedKeysGetTheNextWindowIdAndStayHidden) {
    CMenuKey* key = AddKey(544);
    EXPECT_EQ(key->GetDlgCtrlID(), 5u);
    EXPECT_FALSE(key->isVisible());
    EXPECT_EQ(key->parentWidget(), &menu);
    EXPECT_EQ(AddKey(545)->GetDlgCtrlID(), 6u);
}

TEST(MenuCtrl, SlotOverlaysAreF1ToF4) {
    const UINT expected[] = {572, 573, 574, 575};
    for (unsigned slot = 0; slot < 4; ++slot)
        EXPECT_EQ(CMenuCtrl::SlotOverlayId(slot), expected[slot]);
}

class MenuCtrlDeathTest : public MenuCtrlTest {};

TEST_F(MenuCtrlDeathTest, MisuseIsFatalWithTheDocumentedTexts) {
    EXPECT_FATAL_AT(menu.AddKey(nullptr), "key.get() && \"Key shouldn't be null\"", "MenuCtrl",
                    179);
    EXPECT_FATAL_AT(menu.ReplaceKey(4u, AddKey(544)), "oldKeyIndex < keysNum", "MenuCtrl", 47);
    EXPECT_FATAL_AT(menu.ReplaceKey(0u, nullptr), "newKey", "MenuCtrl", 48);
    EXPECT_FATAL(
        {
            CBitmapMenuKey stranger(544, 544, 544);
            menu.ReplaceKey(0u, &stranger);
        },
        "KeyInStorage(newKey) && \"Key should be owned by this instance of CMenuCtrl\"",
        "MenuCtrl");
    EXPECT_FATAL_AT(menu.ReplaceKey(AddKey(544), AddKey(545)),
                    "KeyInCurrents(oldKey) && \"Old key should be in current keys list\"",
                    "MenuCtrl", 59);
    EXPECT_FATAL_AT(menu.PressKey(4), "keyIndex < lenof(currentKeys)", "MenuCtrl", 122);
    EXPECT_FATAL_AT(CMenuCtrl::SlotOverlayId(4), "keyIndex < keysNum", "MenuCtrl", 229);
}

TEST(MenuCtrlParentDeathTest, AMenuNeedsItsKeysAndItsParent) {
    ScopedLanguagePack language("english");
    EXPECT_FATAL_AT(
        {
            CMenuCtrl detached;
            detached.PressKey(0);
        },
        "currentKeys[keyIndex]", "MenuCtrl", 123);
    EXPECT_FATAL(
        {
            Screen screen;
            CMenuCtrl menu;
            menu.SubclassDlgItem(1000, &screen);
            menu.setParent(nullptr);
            menu.PressKey(0);
        },
        "p_parent && \"CMenuCtrl can be used without parent set\"", "MenuCtrl");
}
