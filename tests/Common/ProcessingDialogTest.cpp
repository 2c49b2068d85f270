#include <gtest/gtest.h>

#include <QLabel>
#include <QTest>

#include "Common/DialogTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/ProcessingDialog.h"

namespace {

TEST(ProcessingDialogTest, ShowsAtOnceOverItsParentWithoutBlockingAndCloses) {
    dialogtest::LanguagePack pack;
    ASSERT_TRUE(pack.Loaded());
    QWidget screen;
    screen.setGeometry(0, 0, 640, 480);
    screen.show();

    CProcessingDialog busy(&screen);
    busy.Create();
    EXPECT_TRUE(busy.isVisible());
    EXPECT_FALSE(busy.isModal());
    EXPECT_EQ(busy.frameGeometry().center(), screen.frameGeometry().center());
    auto* text = qobject_cast<QLabel*>(GetDlgItem(&busy, CProcessingDialog::IDC_TEXT));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(), QStringLiteral("Please wait..."));

    // The indicator turns while the event loop runs.
    const int phase = busy.Phase();
    QTRY_VERIFY_WITH_TIMEOUT(busy.Phase() != phase, 10000);

    busy.Close();
    EXPECT_FALSE(busy.isVisible());
    // Built once: a second Create shows the same box again.
    busy.Create();
    EXPECT_TRUE(busy.isVisible());
    EXPECT_EQ(busy.findChildren<QLabel*>().size(), 2);
    busy.Close();
}

TEST(ProcessingDialogTest, TakesTheCallersText) {
    dialogtest::LanguagePack pack;
    CProcessingDialog busy(nullptr, L"Zeroing...");
    busy.Create();
    auto* text = qobject_cast<QLabel*>(GetDlgItem(&busy, CProcessingDialog::IDC_TEXT));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(), QStringLiteral("Zeroing..."));
}

}  // namespace
