#include <gtest/gtest.h>

#include <QMessageBox>
#include <QThread>
#include <QTimer>

#include "Common/DialogTestSupport.h"
#include "Common/Toolkit/FatalErrorBox.h"
#include "Platform/FatalError.h"

namespace {

TEST(FatalErrorBoxTest, ShowsTheTextTitledUnrecoverableErrorWithTheErrorIcon) {
    QString title, text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    dialogtest::WhenModalShown<QMessageBox>([&](QMessageBox* box) {
        title = box->windowTitle();
        text = box->informativeText();
        icon = box->icon();
        EXPECT_EQ(box->text(), QStringLiteral("Unrecoverable error"));
        box->accept();
    });
    CFatalErrorBox::Show(L"hKey\nFile: AppConfig\nLine: 32\nApplication will be closed");
    EXPECT_EQ(title, QStringLiteral("Unrecoverable error"));
    EXPECT_EQ(text, QStringLiteral("hKey\nFile: AppConfig\nLine: 32\nApplication will be closed"));
    EXPECT_EQ(icon, QMessageBox::Critical);
}

TEST(FatalErrorBoxTest, AWorkerThreadsBoxIsShownByTheUiThread) {
    QString text;
    bool onUiThread = false;
    dialogtest::WhenModalShown<QMessageBox>([&](QMessageBox* box) {
        text = box->informativeText();
        onUiThread = QThread::currentThread() == qApp->thread();
        box->accept();
    });
    bool returned = false;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        CFatalErrorBox::Show(L"opmMeter.get()");
        returned = true;
    }));
    worker->start();
    while (!worker->wait(10)) QCoreApplication::processEvents();
    EXPECT_TRUE(returned);
    EXPECT_TRUE(onUiThread);
    EXPECT_EQ(text, QStringLiteral("opmMeter.get()"));
}

TEST(FatalErrorBoxTest, NoBoxWithoutAScreen) {
    // The tests run offscreen: nobody could read a box, so none may block.
    EXPECT_FALSE(CFatalErrorBox::CanShow());
}

TEST(FatalErrorBoxDeathTest, InstalledOffscreenTheProcessStillEndsWithOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CFatalErrorBox::Install();
            OPM_ASSERT_AT(false && "checked", "PowerMeter", 63);
        },
        testing::ExitedWithCode(1), "false && \"checked\"\nFile: PowerMeter\nLine: 63");
}

}  // namespace
