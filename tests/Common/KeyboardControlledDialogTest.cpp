#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <string>
#include <vector>

#include "Common/Toolkit/KeyboardControlledDialog.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Toolkit/VirtualKeys.h"

namespace {

// Records every operation the dispatch calls, in order.
class RecordingDialog : public CKeyboardControlledDialog {
public:
    RecordingDialog() : CKeyboardControlledDialog(0) { resize(320, 240); }

    std::vector<std::string> calls;
    bool consumeKeyDown = false;
    bool consumeOperations = true;

protected:
    bool Record(const std::string& call) {
        calls.push_back(call);
        return consumeOperations;
    }
    bool OnF1Pressed() override { return Record("F1"); }
    bool OnF2Pressed() override { return Record("F2"); }
    bool OnF3Pressed() override { return Record("F3"); }
    bool OnF4Pressed() override { return Record("F4"); }
    bool OnArrowPressed(int direction) override {
        return Record("arrow " + std::to_string(direction));
    }
    bool OnSpacePressed() override { return Record("Space"); }
    bool OnEscapePressed() override { return Record("Escape"); }
    bool OnEnterPressed() override { return Record("Enter"); }
    bool OnTabPressed() override { return Record("Tab"); }
    bool OnLButtonUp(QMouseEvent*) override { return Record("button up"); }
    bool OnLButtonDown(QMouseEvent*) override { return Record("button down"); }
    bool OnKeyDown(UINT virtualKey, QKeyEvent*) override {
        calls.push_back("down " + std::to_string(virtualKey));
        return consumeKeyDown;
    }
    bool OnKeyUp(UINT virtualKey, QKeyEvent*) override {
        calls.push_back("up " + std::to_string(virtualKey));
        return false;
    }
};

struct DispatchCase {
    Qt::Key key;
    std::vector<std::string> calls;
};

using Calls = std::vector<std::string>;

}  // namespace

TEST(KeyboardControlledDialog, KeysGoThroughKeyDownThenTheKeyTable) {
    const DispatchCase cases[] = {
        {Qt::Key_Tab, {"down 9", "Tab", "up 9"}},
        {Qt::Key_Return, {"down 13", "Enter", "up 13"}},
        {Qt::Key_Enter, {"down 13", "Enter", "up 13"}},
        {Qt::Key_Escape, {"down 27", "Escape", "up 27"}},
        {Qt::Key_Space, {"down 32", "Space", "up 32"}},
        {Qt::Key_Left, {"down 37", "arrow 0", "up 37"}},
        {Qt::Key_Up, {"down 38", "arrow 1", "up 38"}},
        {Qt::Key_Right, {"down 39", "arrow 2", "up 39"}},
        {Qt::Key_Down, {"down 40", "arrow 3", "up 40"}},
        {Qt::Key_F1, {"down 112", "F1", "up 112"}},
        {Qt::Key_F2, {"down 113", "F2", "up 113"}},
        {Qt::Key_F3, {"down 114", "F3", "up 114"}},
        {Qt::Key_F4, {"down 115", "F4", "up 115"}},
        // Keys outside the table reach only the key hooks.
        {Qt::Key_A, {"down 65", "up 65"}},
        {Qt::Key_F5, {"down 0", "up 0"}},
    };
    for (const DispatchCase& c : cases) {
        RecordingDialog dialog;
        QTest::keyClick(&dialog, c.key);
        EXPECT_EQ(dialog.calls, c.calls) << "Qt key " << c.key;
    }
}

TEST(KeyboardControlledDialog, ConsumedKeyDownReachesNoOtherOperation) {
    for (Qt::Key key : {Qt::Key_F1, Qt::Key_F4, Qt::Key_Left, Qt::Key_Down, Qt::Key_Return,
                        Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Space}) {
        RecordingDialog dialog;
        dialog.consumeKeyDown = true;
        dialog.show();
        QTest::keyClick(&dialog, key);
        const std::string vk = std::to_string(VirtualKeyFromQt(key));
        EXPECT_EQ(dialog.calls, (Calls{"down " + vk, "up " + vk})) << "Qt key " << key;
        // Nor does it reach the dialog's own handling: Escape does not close it.
        EXPECT_TRUE(dialog.isVisible()) << "Qt key " << key;
    }
}

TEST(KeyboardControlledDialog, UnconsumedKeysGoOnToOrdinaryHandling) {
    RecordingDialog dialog;
    dialog.consumeOperations = false;
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(dialog.calls, (Calls{"down 27", "Escape", "up 27"}));
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), IDCANCEL);
}

TEST(KeyboardControlledDialog, KeysOfAFocusedControlAreDispatchedOnce) {
    RecordingDialog dialog;
    auto* button = new QPushButton("B", &dialog);
    dialog.show();
    button->setFocus();
    // The button ignores F2, so Qt hands the same event on to the dialog.
    dialog.consumeOperations = false;
    QTest::keyClick(button, Qt::Key_F2);
    EXPECT_EQ(dialog.calls, (Calls{"down 113", "F2", "up 113"}));
}

TEST(KeyboardControlledDialog, AKeyConsumedForAControlDoesNotReachIt) {
    RecordingDialog dialog;
    auto* button = new QPushButton("B", &dialog);
    int clicks = 0;
    QObject::connect(button, &QPushButton::clicked, [&clicks] { ++clicks; });
    dialog.show();
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(dialog.calls, (Calls{"down 32", "Space", "up 32"}));
    EXPECT_EQ(clicks, 0);
}

TEST(KeyboardControlledDialog, TouchesOfControlsAreSeenOnce) {
    RecordingDialog dialog;
    dialog.consumeOperations = false;
    auto* label = new QLabel("text", &dialog);
    label->setGeometry(10, 10, 100, 30);
    dialog.show();
    QTest::mouseClick(label, Qt::LeftButton);
    EXPECT_EQ(dialog.calls, (Calls{"button down", "button up"}));
    dialog.calls.clear();
    QTest::mouseClick(label, Qt::RightButton);
    EXPECT_TRUE(dialog.calls.empty());
}

TEST(KeyboardControlledDialog, BoxesOverTheDialogKeepTheirKeys) {
    RecordingDialog dialog;
    dialog.show();
    QDialog box(&dialog);
    auto* boxButton = new QPushButton("OK", &box);
    box.show();
    QTest::keyClick(boxButton, Qt::Key_F1);
    QTest::mouseClick(boxButton, Qt::LeftButton);
    EXPECT_TRUE(dialog.calls.empty());
}
