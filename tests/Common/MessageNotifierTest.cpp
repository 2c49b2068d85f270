#include <gtest/gtest.h>

#include <QLabel>
#include <QTest>

#include "Common/DialogTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/MessageNotifier.h"

namespace {

TEST(MessageNotifierTest, ShowsTheTextInAMessageOverTheActiveWindowAndWaits) {
    dialogtest::LanguagePack pack;
    ASSERT_TRUE(pack.Loaded());
    QWidget screen;
    screen.setGeometry(0, 0, 640, 480);
    screen.show();
    QApplication::setActiveWindow(&screen);

    bool seen = false;
    dialogtest::WhenModalShown<CMessage>([&](CMessage* box) {
        seen = true;
        auto* text = qobject_cast<QLabel*>(GetDlgItem(box, CMessage::IDC_TEXT));
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->text(), QStringLiteral("No connection with the OTDR!"));
        EXPECT_EQ(box->parentWidget(), &screen);
        QTest::keyClick(box, Qt::Key_Escape);
    });
    CMessageNotifier notifier;
    IUserNotifier& user = notifier;
    user.ShowMessage(L"No connection with the OTDR!");
    EXPECT_TRUE(seen);
}

}  // namespace
