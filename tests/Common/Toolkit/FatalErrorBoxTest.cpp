#include <unistd.h>

#include <QMessageBox>
#include <QThread>
#include <atomic>
#include <memory>

#include "Common/Toolkit/FatalErrorBox.h"
#include "Common/ToolkitTestSupport.h"

namespace {

int BoxesUp() {
    int boxes = 0;
    for (QWidget* window : QApplication::topLevelWidgets())
        boxes += qobject_cast<QMessageBox*>(window) != nullptr && window->isVisible();
    return boxes;
}

TEST(FatalErrorBoxTest, ShowsTheTextTitledUnrecoverableErrorWithTheErrorIcon) {
    QString title, text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    bool onUiThread = false;
    toolkittest::WhenShown<QMessageBox>("the fatal error box", [&](QMessageBox* box) {
        title = box->windowTitle();
        text = box->text() + "|" + box->informativeText();
        icon = box->icon();
        onUiThread = QThread::currentThread() == qApp->thread();
        box->accept();
    });
    // From a worker thread: the UI thread shows it, the worker waits for it.
    std::unique_ptr<QThread> worker(
        QThread::create([] { CFatalErrorBox::Show(L"hKey\nFile: AppConfig\nLine: 32"); }));
    worker->start();
    EXPECT_TRUE(toolkittest::WaitUntil([&] { return worker->isFinished(); }));
    EXPECT_EQ(title, "Unrecoverable error");
    EXPECT_EQ(text, "Unrecoverable error|hKey\nFile: AppConfig\nLine: 32");
    EXPECT_EQ(icon, QMessageBox::Critical);
    EXPECT_TRUE(onUiThread);
}

TEST(FatalErrorBoxDeathTest, InstalledOffscreenTheProcessStillEndsWithOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            alarm(20);  // a box nobody can read would wait for ever
            CFatalErrorBox::Install();
            OPM_ASSERT_AT(false && "checked", "PowerMeter", 63);
        },
        testing::ExitedWithCode(1), "false && \"checked\"\nFile: PowerMeter\nLine: 63");
}

// A check failing under the box (a timer of its loop) and one on a worker
// thread: neither ends the process nor puts up a box of its own; the process
// ends once the first box is closed.
void FailThreeTimes() {
    alarm(20);  // the child fails rather than hangs
    static std::atomic<int> failures{0};
    platform::SetFatalErrorBox([](const std::wstring& text) {
        ++failures;
        CFatalErrorBox::Show(text);
    });
    QThread* worker = QThread::create([] { OPM_ASSERT_AT(false, "Worker", 3); });
    QTimer underTheBox;
    QObject::connect(&underTheBox, &QTimer::timeout, [&] {
        if (BoxesUp() == 0) return;
        underTheBox.stop();
        worker->start();
        OPM_ASSERT_AT(false, "Timer", 2);
    });
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (failures < 3) return;
        closer.stop();
        QTest::qWait(100);  // time for a box that should not be there
        std::fprintf(stderr, "boxes up: %d, closing the first\n", BoxesUp());
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* box = qobject_cast<QMessageBox*>(window)) box->accept();
    });
    underTheBox.start(5);
    closer.start(5);
    OPM_ASSERT_AT(false, "First", 1);
}

TEST(FatalErrorBoxDeathTest, LaterChecksWaitUntilTheFirstBoxIsClosed) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(FailThreeTimes(), testing::ExitedWithCode(1),
                "File: First.*boxes up: 1, closing the first\n");
}

}  // namespace
