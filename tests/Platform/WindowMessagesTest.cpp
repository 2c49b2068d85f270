#include <gtest/gtest.h>

#include <QCoreApplication>
#include <memory>
#include <thread>
#include <vector>

#include "Platform/WindowMessages.h"

namespace {

struct Recorder : QObject {
    std::vector<LPARAM> received;  // of message 1051
    bool event(QEvent* e) override {
        if (e->type() == 1051) received.push_back(static_cast<WindowMessageEvent*>(e)->LParam());
        return e->type() == 1051 || QObject::event(e);
    }
};

// Handles are weak: a post to a window that has gone does nothing.
TEST(WindowMessagesTest, PostsArriveInOrderUntilTheWindowGoes) {
    static int argc = 1;
    static char* argv[] = {const_cast<char*>("WindowMessagesTest"), nullptr};
    static QCoreApplication app(argc, argv);
    auto recorder = std::make_unique<Recorder>();
    const HWND window = WindowHandleOf(recorder.get());
    std::thread([window] {
        for (int i = 0; i < 3; ++i) PostMessageW(window, 1051, 7, i);
    }).join();
    EXPECT_FALSE(PostMessageW(window, 15, 0, 0)) << "below the user range";
    QCoreApplication::processEvents();
    EXPECT_EQ(recorder->received, (std::vector<LPARAM>{0, 1, 2}));
    EXPECT_TRUE(PostMessageW(window, 1051, 0, 0));
    recorder.reset();  // the queued message goes with it
    EXPECT_FALSE(PostMessageW(window, 1051, 0, 0));
}

}  // namespace
