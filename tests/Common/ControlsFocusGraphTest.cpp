#include <QApplication>
#include <QTest>

#include "Common/Toolkit/ControlsFocusGraph.h"
#include "Common/Toolkit/KeyboardControlledDialog.h"
#include "Common/ToolkitTestSupport.h"
#include "support/LanguagePack.h"

namespace {

// Buttons 601 602 / 603 604 in a grid, 605 below and outside the graph.
class GridScreen : public CKeyboardControlledDialog {
public:
    GridScreen() : CKeyboardControlledDialog(512) {}
    ControlsFocusGraph graph{*this};

protected:
    bool OnInitDialog() override {
        graph.Add(601, 0, 0, 602, 603)
            .Add(602, 601, 0, 0, 604)
            .Add(603, 0, 601, 604, 0)
            .Add(604, 603, 602, 0, 0);
        return true;
    }
    bool OnArrowPressed(int direction) override {
        graph.Move(direction);
        return true;
    }
};

struct Move {
    int from;
    Qt::Key key;
    int to;
};

class FocusGraphTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(language.Loaded());
        ASSERT_TRUE(screen.Create());
        screen.show();
        screen.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&screen));
    }
    int Focused() const {
        const QWidget* focus = QApplication::focusWidget();
        return focus != nullptr ? focus->objectName().toInt() : 0;
    }

    ScopedLanguagePack language{OPM_TOOLKIT_TEST_PACK};
    GridScreen screen;
};

}  // namespace

TEST_F(FocusGraphTest, ArrowsFollowTheGraph) {
    const Move moves[] = {
        {601, Qt::Key_Right, 602},
        {602, Qt::Key_Down, 604},
        {604, Qt::Key_Left, 603},
        {603, Qt::Key_Up, 601},
        {601, Qt::Key_Down, 603},
        {604, Qt::Key_Up, 602},
        // A zero neighbour leaves the focus where it is.
        {601, Qt::Key_Left, 601},
        {601, Qt::Key_Up, 601},
        {604, Qt::Key_Right, 604},
        {603, Qt::Key_Down, 603},
    };
    for (const Move& move : moves) {
        screen.GetDlgItem(move.from)->setFocus();
        ASSERT_EQ(Focused(), move.from);
        QTest::keyClick(QApplication::focusWidget(), move.key);
        EXPECT_EQ(Focused(), move.to) << move.from << " key " << move.key;
    }
}

TEST_F(FocusGraphTest, AControlOutsideTheGraphKeepsTheFocus) {
    screen.GetDlgItem(605)->setFocus();
    for (Qt::Key key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_Right, Qt::Key_Down}) {
        QTest::keyClick(QApplication::focusWidget(), key);
        EXPECT_EQ(Focused(), 605) << "key " << key;
    }
}

TEST_F(FocusGraphTest, MoveWithoutAFocusedControlDoesNothing) {
    screen.GetDlgItem(601)->clearFocus();
    screen.graph.Move(2);
    screen.graph.Move(7);
    EXPECT_EQ(Focused(), 0);
}

class FocusGraphDeathTest : public FocusGraphTest {};

TEST_F(FocusGraphDeathTest, EveryNamedControlMustExist) {
    EXPECT_FATAL(screen.graph.Add(9999, 0, 0, 0, 0),
                 "sourceCtrlId && parent.GetDlgItem( sourceCtrlId )", "ControlsFocusGraph");
    EXPECT_FATAL(screen.graph.Add(0, 601, 0, 0, 0),
                 "sourceCtrlId && parent.GetDlgItem( sourceCtrlId )", "ControlsFocusGraph");
    EXPECT_FATAL(screen.graph.Add(605, 9999, 0, 0, 0), "CheckControl( leftCtrlId )",
                 "ControlsFocusGraph");
    EXPECT_FATAL(screen.graph.Add(605, 0, 9999, 0, 0), "CheckControl( topCtrlId )",
                 "ControlsFocusGraph");
    EXPECT_FATAL(screen.graph.Add(605, 0, 0, 9999, 0), "CheckControl( rightCtrlId )",
                 "ControlsFocusGraph");
    EXPECT_FATAL(screen.graph.Add(605, 0, 0, 0, 9999), "CheckControl( bottomCtrlId )",
                 "ControlsFocusGraph");
}

TEST_F(FocusGraphDeathTest, ANeighbourGoneSinceItWasAddedIsFatal) {
    EXPECT_FATAL(
        {
            screen.GetDlgItem(601)->setFocus();
            delete screen.GetDlgItem(602);
            screen.graph.Move(2);
        },
        "targetWnd && targetWnd->GetSafeHwnd()", "ControlsFocusGraph");
}
