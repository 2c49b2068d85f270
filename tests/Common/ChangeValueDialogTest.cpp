#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "Common/Toolkit/ChangeValueDialog.h"
#include "Common/Toolkit/DialogResults.h"
#include "Common/DialogTestSupport.h"
#include "Common/Toolkit/DigitEdit.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/Message.h"

namespace {

class ChangeValueDialogTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(pack.Loaded()); }

    static void Keys(QWidget* box, std::initializer_list<Qt::Key> keys) {
        for (Qt::Key key : keys) QTest::keyClick(box, key);
    }

    dialogtest::LanguagePack pack;
};

TEST_F(ChangeValueDialogTest, ArrowsEditTheDigitsAndEnterConfirms) {
    // "Ref = " editor: -3.25 shows as "-03.25", cursor on the units digit.
    CChangeValueDialog box(L"Ref = ", -3.25, -99.0, 99.0, 2, nullptr);
    QTimer::singleShot(0, &box, [&] {
        EXPECT_EQ(box.Digits().Text(), "-03.25");
        Keys(&box, {Qt::Key_Up, Qt::Key_Up,                                // -05.25
                    Qt::Key_Left, Qt::Key_Up,                              // -15.25
                    Qt::Key_Right, Qt::Key_Right, Qt::Key_Down,            // -15.15
                    Qt::Key_Left, Qt::Key_Left, Qt::Key_Left, Qt::Key_Up,  // +15.15
                    Qt::Key_Return});
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_DOUBLE_EQ(box.GetValue(), 15.15);
}

TEST_F(ChangeValueDialogTest, DigitsTypedOnAKeyboardOverwrite) {
    CChangeValueDialog box(L"P, dBm", -10.0, -99.9, 99.99, 3, nullptr);
    QTimer::singleShot(0, &box, [&] {
        Keys(&box, {Qt::Key_Left, Qt::Key_Left, Qt::Key_Minus, Qt::Key_2, Qt::Key_3, Qt::Key_4,
                    Qt::Key_5, Qt::Key_6, Qt::Key_Enter});
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_DOUBLE_EQ(box.GetValue(), -23.456);
}

TEST_F(ChangeValueDialogTest, OkRefusesAValueOutsideTheRangeWithTheMessage) {
    CChangeValueDialog box(L"P, dBm", 99.99, -99.9, 99.99, 3, nullptr);
    QString shown;
    QTimer::singleShot(0, &box, [&] {
        Keys(&box, {Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Up});  // +99.991
        dialogtest::WhenModalShown<CMessage>([&](CMessage* message) {
            shown = QString::fromStdWString(message->Text());
            QTest::keyClick(message, Qt::Key_Return);
            // Still open after the refusal: the user corrects the digit.
            EXPECT_TRUE(box.isVisible());
            Keys(&box, {Qt::Key_Down, Qt::Key_Return});
        });
        QTest::keyClick(&box, Qt::Key_Return);
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(shown, QStringLiteral("P, dBm\n-99.900...99.990."));
    EXPECT_DOUBLE_EQ(box.GetValue(), 99.99);
}

TEST_F(ChangeValueDialogTest, TheRangeMessageFollowsTheDecimals) {
    const CChangeValueDialog box(L"Ref = ", 0.0, -99.0, 99.0, 2, nullptr);
    EXPECT_EQ(box.RangeMessage(), L"Ref = \n-99.00...99.00.");
}

TEST_F(ChangeValueDialogTest, CancelGivesTheStartValueBack) {
    const std::vector<std::function<void(QWidget*)>> cancels = {
        [](QWidget* box) { QTest::keyClick(box, Qt::Key_Escape); },
        [](QWidget* box) { QTest::mouseClick(GetDlgItem(box, IDCANCEL), Qt::LeftButton); },
    };
    for (const auto& cancel : cancels) {
        CChangeValueDialog box(L"Ref = ", -3.25, -99.0, 99.0, 2, nullptr);
        QTimer::singleShot(0, &box, [&] {
            Keys(&box, {Qt::Key_Up, Qt::Key_Up});
            cancel(&box);
        });
        EXPECT_EQ(box.DoModal(), IDCANCEL);
        EXPECT_DOUBLE_EQ(box.GetValue(), -3.25);
    }
}

TEST_F(ChangeValueDialogTest, TouchMovesTheCursorAndTurnsTheDigit) {
    CChangeValueDialog box(L"Ref = ", 1.0, -99.0, 99.0, 2, nullptr);
    QTimer::singleShot(0, &box, [&] {
        auto* edit = qobject_cast<CDigitEdit*>(GetDlgItem(&box, CChangeValueDialog::IDC_VALUE));
        ASSERT_NE(edit, nullptr);
        QTest::mouseClick(edit, Qt::LeftButton, {}, edit->CellRect(4).center());  // "+01.00"
        EXPECT_EQ(box.Digits().Cursor(), 4);
        QTest::mouseClick(GetDlgItem(&box, CChangeValueDialog::IDC_DIGIT_UP), Qt::LeftButton);
        QTest::mouseClick(GetDlgItem(&box, CChangeValueDialog::IDC_CURSOR_LEFT), Qt::LeftButton);
        QTest::mouseClick(GetDlgItem(&box, CChangeValueDialog::IDC_DIGIT_DOWN), Qt::LeftButton);
        QTest::mouseClick(GetDlgItem(&box, IDOK), Qt::LeftButton);
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_DOUBLE_EQ(box.GetValue(), 0.1);
}

}  // namespace
