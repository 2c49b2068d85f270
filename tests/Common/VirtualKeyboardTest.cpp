#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "Common/Toolkit/DialogResults.h"
#include "Common/DialogTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/VirtualKeyboard.h"

namespace {

class VirtualKeyboardTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(pack.Loaded()); }

    static QLineEdit* TextOf(QWidget* box) {
        return qobject_cast<QLineEdit*>(GetDlgItem(box, CVirtualKeyboard::IDC_TEXT));
    }
    // The character key whose caption is `c` (in the current case).
    static QPushButton* KeyFor(QWidget* box, QChar c) {
        for (int id = CVirtualKeyboard::IDC_FIRST_CHARACTER;
             id <= CVirtualKeyboard::IDC_LAST_CHARACTER; ++id) {
            auto* key = qobject_cast<QPushButton*>(GetDlgItem(box, id));
            if (key != nullptr && key->text() == QString(c)) return key;
        }
        return nullptr;
    }

    dialogtest::LanguagePack pack;
};

TEST_F(VirtualKeyboardTest, ReturnsTextTypedOnAPcKeyboard) {
    CVirtualKeyboard box(L"File name", L"temp", nullptr);
    QTimer::singleShot(0, &box, [&] {
        EXPECT_EQ(box.focusWidget(), TextOf(&box));
        QTest::keyClick(TextOf(&box), Qt::Key_Backspace);
        QTest::keyClicks(TextOf(&box), QStringLiteral("ting span A"));
        // Typing leaves the mark on OK, so Enter confirms.
        EXPECT_EQ(box.MarkedKey(), IDOK);
        QTest::keyClick(TextOf(&box), Qt::Key_Return);
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(box.GetText(), L"temting span A");
}

TEST_F(VirtualKeyboardTest, ArrowsAndEnterTypeOnTheOnScreenKeys) {
    CVirtualKeyboard box(L"Enter Description", L"", nullptr);
    QTimer::singleShot(0, &box, [&] {
        QWidget* focus = TextOf(&box);
        EXPECT_EQ(box.MarkedKey(), IDOK);
        // From OK (bottom left): up to Shift, up to 'z', up to 'a', up to 'q'.
        for (Qt::Key key : {Qt::Key_Up, Qt::Key_Up, Qt::Key_Up, Qt::Key_Up})
            QTest::keyClick(focus, key);
        EXPECT_EQ(box.MarkedKey(), CVirtualKeyboard::IDC_FIRST_CHARACTER + 10);
        QTest::keyClick(focus, Qt::Key_Return);  // q
        QTest::keyClick(focus, Qt::Key_Right);
        QTest::keyClick(focus, Qt::Key_Return);  // w
        QTest::keyClick(focus, Qt::Key_Up);
        QTest::keyClick(focus, Qt::Key_Return);                            // 2
        for (int i = 0; i < 6; ++i) QTest::keyClick(focus, Qt::Key_Down);  // down to OK
        EXPECT_EQ(box.MarkedKey(), IDOK);
        QTest::keyClick(focus, Qt::Key_Return);
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(box.GetText(), L"qw2");
}

TEST_F(VirtualKeyboardTest, TouchTypesShiftedLettersAndEdits) {
    CVirtualKeyboard box(L"File name", L"", nullptr);
    QTimer::singleShot(0, &box, [&] {
        auto tap = [&](QWidget* key) {
            ASSERT_NE(key, nullptr);
            QTest::mouseClick(key, Qt::LeftButton);
        };
        tap(GetDlgItem(&box, CVirtualKeyboard::IDC_SHIFT));
        tap(KeyFor(&box, QLatin1Char('A')));
        tap(GetDlgItem(&box, CVirtualKeyboard::IDC_SHIFT));
        tap(KeyFor(&box, QLatin1Char('b')));
        tap(GetDlgItem(&box, CVirtualKeyboard::IDC_SPACE));
        tap(KeyFor(&box, QLatin1Char('1')));
        tap(GetDlgItem(&box, CVirtualKeyboard::IDC_CURSOR_LEFT));
        tap(GetDlgItem(&box, CVirtualKeyboard::IDC_BACKSPACE));  // the blank before '1'
        tap(GetDlgItem(&box, IDOK));
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(box.GetText(), L"Ab1");
}

TEST_F(VirtualKeyboardTest, CancelKeepsTheInitialText) {
    CVirtualKeyboard box(L"File name", L"temp", nullptr);
    QTimer::singleShot(0, &box, [&] {
        QTest::keyClicks(TextOf(&box), QStringLiteral("xyz"));
        QTest::keyClick(TextOf(&box), Qt::Key_Escape);
    });
    EXPECT_EQ(box.DoModal(), IDCANCEL);
    EXPECT_EQ(box.GetText(), L"temp");
}

TEST_F(VirtualKeyboardTest, TheNameCheckKeepsTheKeyboardOpenWithItsComplaint) {
    CVirtualKeyboard box(L"File name", L"meas", nullptr);
    std::vector<std::wstring> checked;
    box.SetNameCheck([&](const std::wstring& text, std::wstring& complaint) {
        checked.push_back(text);
        if (text == L"meas") {
            complaint = L"The name meas is reserved.";
            return false;
        }
        return true;
    });
    QString shown;
    QTimer::singleShot(0, &box, [&] {
        dialogtest::WhenModalShown<CMessage>([&](CMessage* message) {
            shown = QString::fromStdWString(message->Text());
            QTest::keyClick(message, Qt::Key_Return);
            QTest::keyClicks(TextOf(&box), QStringLiteral("1"));
            QTest::keyClick(TextOf(&box), Qt::Key_Return);
        });
        QTest::keyClick(TextOf(&box), Qt::Key_Return);
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(shown, QStringLiteral("The name meas is reserved."));
    EXPECT_EQ(checked, (std::vector<std::wstring>{L"meas", L"meas1"}));
    EXPECT_EQ(box.GetText(), L"meas1");
}

}  // namespace
