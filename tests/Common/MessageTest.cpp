#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "Common/Toolkit/DialogResults.h"
#include "Common/DialogTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/Message.h"

namespace {

class MessageTest : public testing::Test {
protected:
    dialogtest::LanguagePack pack;
};

QLabel* TextOf(QWidget* box) {
    return qobject_cast<QLabel*>(GetDlgItem(box, CMessage::IDC_TEXT));
}

TEST_F(MessageTest, ShowsTheTextAndEndsWithOk) {
    ASSERT_TRUE(pack.Loaded());
    QWidget screen;
    screen.setGeometry(0, 0, 640, 480);
    screen.show();
    CMessage box(L"Can't create OLT1 driver file", &screen);
    dialogtest::WhenModalShown<CMessage>([](CMessage* shown) {
        ASSERT_NE(TextOf(shown), nullptr);
        EXPECT_EQ(TextOf(shown)->text(), QStringLiteral("Can't create OLT1 driver file"));
        QTest::keyClick(shown, Qt::Key_Return);
    });
    EXPECT_EQ(box.DoModal(), IDOK);
}

TEST_F(MessageTest, TheStringResourceVariantShowsThePackText) {
    ASSERT_TRUE(pack.Loaded());
    CMessage box(53u, nullptr);
    EXPECT_EQ(QString::fromStdWString(box.Text()), ResourceString(53));
    EXPECT_FALSE(box.Text().empty());
}

TEST_F(MessageTest, UsesTheCommonFontAtHeightFourteen) {
    ASSERT_TRUE(pack.Loaded());
    CMessage box(L"x", nullptr);
    box.show();
    QFont expected;
    FontCreator::CreateCommonFont(expected, 14, 400);
    EXPECT_EQ(TextOf(&box)->font().pixelSize(), expected.pixelSize());
    EXPECT_EQ(TextOf(&box)->font().family(), expected.family());
    box.close();
}

TEST(MessageDeathTest, ZeroTextCodeIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(CMessage(0u, nullptr), testing::ExitedWithCode(1),
                "textCode\nFile: Message\nLine: 28\nApplication will be closed");
}

TEST(MessageDeathTest, AStringThePackLacksIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            dialogtest::LanguagePack pack;
            CMessage(59999u, nullptr);
        },
        testing::ExitedWithCode(1),
        "text.LoadString\\(textCode\\)\nFile: Message\nLine: 30\nApplication will be closed");
}

}  // namespace
