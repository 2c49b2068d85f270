#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <utility>
#include <vector>

#include "Common/Toolkit/DialogResults.h"
#include "Common/DialogTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/PopupFrame.h"

namespace {

// The countdown's clock, driven by the test: the window timer records what the
// box asks for and ticks only when the test says so.
class SteppedMessageBox : public CMessageBoxEx {
public:
    using CMessageBoxEx::CMessageBoxEx;

    void Tick(UINT id = kCountdownTimerId) { OnTimer(id); }

    std::vector<std::pair<UINT, UINT>> started;
    std::vector<UINT> killed;

protected:
    UINT SetTimer(UINT id, UINT periodMs) override {
        started.emplace_back(id, periodMs);
        return id;
    }
    void KillTimer(UINT id) override { killed.push_back(id); }
};

class MessageBoxExTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(pack.Loaded()); }

    static QLabel* TextOf(QWidget* box) {
        return qobject_cast<QLabel*>(GetDlgItem(box, CMessageBoxEx::IDC_TEXT));
    }
    static QPushButton* OkOf(QWidget* box) {
        return qobject_cast<QPushButton*>(GetDlgItem(box, IDOK));
    }

    dialogtest::LanguagePack pack;
};

TEST_F(MessageBoxExTest, WithoutSecondsTheKeyReadsOkAndNoTimerRuns) {
    SteppedMessageBox box(L">-50dBm!", L"Warning!", 0, nullptr);
    box.show();
    EXPECT_EQ(box.OkLabel(), QStringLiteral("OK"));
    EXPECT_TRUE(box.started.empty());
    EXPECT_EQ(box.windowTitle(), QStringLiteral("Warning!"));
    EXPECT_EQ(TextOf(&box)->text(), QStringLiteral(">-50dBm!"));
    box.Tick();
    EXPECT_TRUE(box.isVisible());
    box.close();
}

TEST_F(MessageBoxExTest, CountsThreeTwoOneAndEndsWithOk) {
    SteppedMessageBox box(L"Saved", L"!", 3, nullptr);
    QStringList labels;
    QTimer::singleShot(0, &box, [&] {
        labels << box.OkLabel();
        for (int second = 0; second < 3; ++second) {
            box.Tick();
            labels << box.OkLabel();
        }
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(labels, (QStringList{"OK(3)", "OK(2)", "OK(1)", "OK"}));
    EXPECT_EQ(box.started, (std::vector<std::pair<UINT, UINT>>{{777, 1000}}));
    EXPECT_EQ(box.killed, std::vector<UINT>{777});
}

// The window timer itself: one real second, then the box ends on its own.
TEST_F(MessageBoxExTest, TheWindowTimerEndsTheCountdown) {
    CMessageBoxEx box(L"Saved", L"!", 1, nullptr);
    // Only matters when the timer never fires: the box then ends as cancelled.
    QTimer::singleShot(20000, &box, [&] { box.reject(); });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(box.OkLabel(), QStringLiteral("OK"));
    EXPECT_EQ(box.SecondsLeft(), 0u);
}

TEST_F(MessageBoxExTest, OtherTimersLeaveTheCountAlone) {
    SteppedMessageBox box(L"Saved", L"!", 2, nullptr);
    box.show();
    box.Tick(304);
    EXPECT_EQ(box.SecondsLeft(), 2u);
    EXPECT_EQ(box.OkLabel(), QStringLiteral("OK(2)"));
    box.close();
}

// A key or a press on the box stops the count; the box then waits.
TEST_F(MessageBoxExTest, InputInterruptsTheCountdown) {
    const std::vector<std::function<void(QWidget*)>> inputs = {
        [](QWidget* box) { QTest::keyClick(box, Qt::Key_Down); },
        [](QWidget* box) { QTest::keyClick(OkOf(box), Qt::Key_Left); },
        [](QWidget* box) { QTest::mousePress(TextOf(box), Qt::LeftButton); },
        [](QWidget* box) { QTest::mousePress(box, Qt::LeftButton, {}, QPoint(5, 5)); },
    };
    for (size_t i = 0; i < inputs.size(); ++i) {
        SCOPED_TRACE(i);
        SteppedMessageBox box(L"Sending", L"!", 5, nullptr);
        box.show();
        box.Tick();
        ASSERT_EQ(box.OkLabel(), QStringLiteral("OK(4)"));
        inputs[i](&box);
        EXPECT_EQ(box.SecondsLeft(), 0u);
        EXPECT_EQ(box.OkLabel(), QStringLiteral("OK"));
        EXPECT_EQ(box.killed, std::vector<UINT>{777});
        box.Tick();
        EXPECT_TRUE(box.isVisible());
        EXPECT_EQ(box.OkLabel(), QStringLiteral("OK"));
        box.close();
    }
}

TEST_F(MessageBoxExTest, AnInterruptedBoxClosesWithTheOkKey) {
    SteppedMessageBox box(L"Sending", L"!", 5, nullptr);
    QTimer::singleShot(0, &box, [&] {
        QTest::keyClick(&box, Qt::Key_Right);
        QTest::keyClick(OkOf(&box), Qt::Key_Return);
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(box.killed, std::vector<UINT>{777});
}

TEST_F(MessageBoxExTest, GivesTheFocusBackWhenItCloses) {
    QWidget screen;
    auto* field = new QLineEdit(&screen);
    auto* other = new QLineEdit(&screen);
    screen.show();
    QApplication::setActiveWindow(&screen);
    field->setFocus();
    ASSERT_EQ(QApplication::focusWidget(), field);
    SteppedMessageBox box(L"Done", L"!", 1, &screen);
    QTimer::singleShot(0, &box, [&] {
        // Something moves the screen's focus while the box is up; closing gives
        // it back to where it was when the box opened.
        other->setFocus();
        box.Tick();
    });
    box.DoModal();
    EXPECT_EQ(screen.focusWidget(), field);
}

TEST_F(MessageBoxExTest, WithoutShowOkTheKeyIsHidden) {
    SteppedMessageBox box(L"Busy", L"!", 2, nullptr, false);
    box.show();
    EXPECT_FALSE(OkOf(&box)->isVisible());
    EXPECT_EQ(box.OkLabel(), QStringLiteral("OK(2)"));
    box.close();
}

TEST_F(MessageBoxExTest, LaysTheTextOutWithinTwoThirdsOfTheScreen) {
    const std::wstring longText =
        L"Error during factory calibration data changing to def: the calibration file could not "
        L"be written because the flash memory is full or write protected";
    SteppedMessageBox box(longText, L"!", 0, nullptr);
    box.show();
    const QRect screen = CPopupFrame::ScreenRect();
    QLabel* text = TextOf(&box);
    QPushButton* ok = OkOf(&box);
    const QFontMetrics metrics(text->font());
    const QStringList lines = text->text().split(QLatin1Char('\n'));
    EXPECT_GT(lines.size(), 1);
    for (const QString& line : lines)
        EXPECT_LE(metrics.horizontalAdvance(line), screen.width() * 2 / 3) << line.toStdString();
    EXPECT_EQ(text->y(), 10);
    EXPECT_EQ(ok->y(), text->geometry().bottom() + 1 + 20);
    const QWidget* client = text->parentWidget();
    EXPECT_NEAR(ok->geometry().center().x(), client->width() / 2, 1);
    EXPECT_EQ(client->height(), text->height() + ok->height() + 60);
    EXPECT_EQ(text->width(), client->width() - 60);
    box.close();
}

TEST_F(MessageBoxExTest, IsCentredOverItsParent) {
    const QRect screen = CPopupFrame::ScreenRect();
    QWidget parent;
    parent.setGeometry(QRect(screen.topLeft() + QPoint(40, 30), QSize(560, 420)));
    parent.show();
    SteppedMessageBox box(L"Error ocurred during manual calibrating", L"!", 0, &parent);
    box.show();
    EXPECT_NEAR(box.frameGeometry().center().x(), parent.frameGeometry().center().x(), 1);
    EXPECT_NEAR(box.frameGeometry().center().y(), parent.frameGeometry().center().y(), 1);
    box.close();
}

TEST_F(MessageBoxExTest, IsCentredOnTheScreenWhenItsParentLiesAtTheEdge) {
    const QRect screen = CPopupFrame::ScreenRect();
    QWidget parent;
    parent.setGeometry(QRect(screen.bottomRight() - QPoint(120, 90), QSize(120, 90)));
    parent.show();
    SteppedMessageBox box(L"Error during NoOPM key", L"!", 0, &parent);
    box.show();
    EXPECT_TRUE(screen.contains(box.frameGeometry()));
    EXPECT_NEAR(box.frameGeometry().center().x(), screen.center().x(), 1);
    EXPECT_NEAR(box.frameGeometry().center().y(), screen.center().y(), 1);
    box.close();
}

TEST(PopupPlacementTest, CentresOverTheTargetOrElseOnTheScreen) {
    const QRect screen(0, 0, 640, 480);
    const QSize box(300, 200);
    EXPECT_EQ(CPopupFrame::CentredRect(box, QRect(100, 100, 400, 300), screen).center(),
              QRect(100, 100, 400, 300).center());
    EXPECT_EQ(CPopupFrame::CentredRect(box, QRect(0, 0, 100, 100), screen).center(),
              screen.center());
    EXPECT_EQ(CPopupFrame::CentredRect(box, QRect(560, 400, 80, 80), screen).center(),
              screen.center());
    EXPECT_EQ(CPopupFrame::CentredRect(box, screen, screen).center(), screen.center());
}

}  // namespace
