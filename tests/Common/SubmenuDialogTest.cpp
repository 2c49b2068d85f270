#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <functional>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/Toolkit/ScrollMarks.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "support/LanguagePack.h"

namespace {

class Screen : public CBaseDialog {
public:
    Screen() : CBaseDialog(394) {}
    std::vector<CMenuKey*> keys;
    std::vector<UINT> handled;

protected:
    std::vector<CMenuKey*> GetMenuKeys() override {
        for (UINT id : {544u, 545u, 525u, 510u}) {
            keys.push_back(CreateMenuKey(id, id));
            OnMenuCommand(id, [this, id] { handled.push_back(id); });
        }
        return keys;
    }
};

class SubmenuTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(language.Loaded());
        ASSERT_TRUE(screen.Create());
        screen.move(0, 0);
        screen.show();
    }
    // Fills a column over the wavelength key with `count` keys, ids 0..count-1.
    void Fill(CSubmenuDialog& column, int count) {
        for (int i = 0; i < count; ++i)
            column.AddKey(UINT(i), QStringLiteral("%1 nm").arg(1300 + 10 * i));
    }
    // Runs the column; `act` runs once it is open.
    int Run(CSubmenuDialog& column, std::function<void()> act) {
        QTimer::singleShot(0, &column, std::move(act));
        return column.Show();
    }

    ScopedLanguagePack language{"english"};
    Screen screen;
};

}  // namespace

TEST_F(SubmenuTest, ArrowsMoveToAKeyAndEnterChoosesIt) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    Fill(column, 4);
    column.SetCurrentKey(1);
    const int result = Run(column, [&] {
        EXPECT_TRUE(WaitUntil([&] { return column.GetKey(1)->hasFocus(); }));
        QTest::keyClick(&column, Qt::Key_Down);
        EXPECT_EQ(column.GetCurrentKey(), 2u);
        EXPECT_TRUE(column.GetKey(2)->hasFocus());
        QTest::keyClick(&column, Qt::Key_Return);
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(column.GetSelectedId(), 2u);
    EXPECT_FALSE(column.isVisible());
}

TEST_F(SubmenuTest, TouchingAKeyChoosesIt) {
    CSubmenuDialog column(screen.keys[2], VK_F3, &screen);
    Fill(column, 3);
    EXPECT_EQ(Run(column, [&] { QTest::mouseClick(column.GetKey(2), Qt::LeftButton); }), IDOK);
    EXPECT_EQ(column.GetSelectedId(), 2u);
}

TEST_F(SubmenuTest, TapOutsideClosesWithResultTwoAndGoesNoFurther) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    Fill(column, 3);
    const int result = Run(column, [&] { QTest::mouseClick(screen.keys[3], Qt::LeftButton); });
    EXPECT_EQ(result, 2);
    EXPECT_EQ(column.GetSelectedId(), 0u);
    EXPECT_TRUE(screen.handled.empty());
}

TEST_F(SubmenuTest, EscapeOrTheOpeningKeyCloseWithoutAChoice) {
    {
        CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
        Fill(column, 3);
        EXPECT_EQ(Run(column, [&] { QTest::keyClick(&column, Qt::Key_Escape); }), IDCANCEL);
    }
    {
        CSubmenuDialog column(screen.keys[3], VK_F4, &screen);
        Fill(column, 3);
        const int result = Run(column, [&] {
            // Another function key does nothing while the column is open.
            QTest::keyClick(&column, Qt::Key_F1);
            EXPECT_TRUE(column.isVisible());
            QTest::keyClick(&column, Qt::Key_F4);
        });
        EXPECT_EQ(result, IDCANCEL);
        EXPECT_TRUE(screen.handled.empty());
    }
}

TEST_F(SubmenuTest, KeysGoToTheColumnWhicheverWindowHasTheFocus) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    Fill(column, 3);
    const int result = Run(column, [&] {
        QTest::keyClick(&screen, Qt::Key_F2);
        QTest::keyClick(&screen, Qt::Key_Down);
        QTest::keyClick(&screen, Qt::Key_Return);
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(column.GetSelectedId(), 1u);
    EXPECT_TRUE(screen.handled.empty());
}

TEST_F(SubmenuTest, ADisabledKeyCannotBeChosen) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    Fill(column, 3);
    column.GetKey(1)->setEnabled(false);
    column.SetCurrentKey(1);
    const int result = Run(column, [&] {
        QTest::keyClick(&column, Qt::Key_Return);
        QTest::mouseClick(column.GetKey(1), Qt::LeftButton);
        EXPECT_TRUE(column.isVisible());
        QTest::keyClick(&column, Qt::Key_Up);
        QTest::keyClick(&column, Qt::Key_Return);
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(column.GetSelectedId(), 0u);
}

TEST_F(SubmenuTest, ColumnOpensAboveItsAnchorKey) {
    CSubmenuDialog column(screen.keys[1], VK_F2, &screen);
    Fill(column, 3);
    Run(column, [&] {
        const QRect anchor(screen.keys[1]->mapToGlobal(QPoint(0, 0)), screen.keys[1]->size());
        const QRect placed = column.geometry();
        EXPECT_EQ(placed.bottom() + 1, anchor.top());
        EXPECT_EQ(placed.left(), anchor.left());
        EXPECT_GE(placed.width(), anchor.width());
        EXPECT_EQ(placed.height(), 3 * CSubmenuDialog::kKeyHeight);
        QTest::keyClick(&column, Qt::Key_Escape);
    });
}

TEST_F(SubmenuTest, LongColumnShowsWhatFitsScrolledToTheCurrentKey) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    Fill(column, 14);
    column.SetCurrentKey(12);
    Run(column, [&] {
        // 480 / 48: ten keys fit; the current one is the last of them.
        EXPECT_EQ(column.VisibleKeysNum(), 10u);
        EXPECT_EQ(column.FirstVisibleKey(), 3u);
        EXPECT_EQ(column.geometry().top(), screen.geometry().top());
        EXPECT_TRUE(column.GetKey(12)->isVisible());
        EXPECT_EQ(column.GetKey(12)->y(), 9 * CSubmenuDialog::kKeyHeight);
        EXPECT_FALSE(column.GetKey(2)->isVisible());
        EXPECT_FALSE(column.GetKey(13)->isVisible());
        EXPECT_TRUE(column.ScrollMarks()->MoreAbove());
        EXPECT_TRUE(column.ScrollMarks()->MoreBelow());

        QTest::keyClick(&column, Qt::Key_Down);
        EXPECT_EQ(column.FirstVisibleKey(), 4u);
        EXPECT_TRUE(column.GetKey(13)->isVisible());
        EXPECT_FALSE(column.ScrollMarks()->MoreBelow());
        // Down from the last key wraps round to the first.
        QTest::keyClick(&column, Qt::Key_Down);
        EXPECT_EQ(column.FirstVisibleKey(), 0u);
        EXPECT_EQ(column.GetCurrentKey(), 0u);
        QTest::keyClick(&column, Qt::Key_Return);
    });
    EXPECT_EQ(column.GetSelectedId(), 0u);
}

TEST_F(SubmenuTest, ShortColumnStartsAtItsFirstKey) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    Fill(column, 3);
    column.SetCurrentKey(2);
    Run(column, [&] {
        EXPECT_EQ(column.VisibleKeysNum(), 3u);
        EXPECT_EQ(column.FirstVisibleKey(), 0u);
        EXPECT_FALSE(column.ScrollMarks()->MoreAbove() || column.ScrollMarks()->MoreBelow());
        QTest::keyClick(&column, Qt::Key_Escape);
    });
}

TEST_F(SubmenuTest, FocusGoesBackWhereItWas) {
    auto* button = new QPushButton("focus", &screen);
    button->show();
    screen.activateWindow();
    button->setFocus();
    ASSERT_TRUE(WaitUntil([&] { return button->hasFocus(); }));
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    Fill(column, 2);
    Run(column, [&] {
        EXPECT_TRUE(WaitUntil([&] { return column.GetKey(0)->hasFocus(); }));
        QTest::keyClick(&column, Qt::Key_Escape);
    });
    EXPECT_TRUE(WaitUntil([&] { return button->hasFocus(); }));
}

class SubmenuDeathTest : public SubmenuTest {};

TEST_F(SubmenuDeathTest, MisuseIsFatal) {
    EXPECT_FATAL(
        {
            CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
            column.AddKey({1, nullptr});
        },
        "menuKey.get()", "SubmenuDialog");
    EXPECT_FATAL(
        {
            CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
            auto key = std::make_unique<CTextMenuKey>(1, "x", &column.KeyFont());
            key->Create(&screen, 99);
            column.AddKey({1, std::move(key)});
        },
        "(menuKey->GetSafeHwnd() == NULL) && \"Key shouldn't be created\"", "SubmenuDialog");
    EXPECT_FATAL(
        {
            CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
            Fill(column, 2);
            column.SetCurrentKey(2);
            column.Show();
        },
        "currKey < keysList.size()", "SubmenuDialog");
}

TEST(SubmenuDialogDeathTest, AScreenLowerThanOneKeyHoldsNoColumn) {
    ScopedLanguagePack language("english");
    EXPECT_FATAL_AT(
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
        "visibleKeysNum > 0", "SubmenuDialog", 174);
}
