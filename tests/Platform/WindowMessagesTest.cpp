#include <gtest/gtest.h>

#include <QCoreApplication>
#include <memory>
#include <thread>
#include <vector>

#include "Platform/WindowMessages.h"

namespace {

class Recorder : public QObject {
public:
    std::vector<std::tuple<UINT, WPARAM, LPARAM>> received;

protected:
    bool event(QEvent* e) override {
        if (e->type() >= QEvent::User) {
            auto* message = static_cast<WindowMessageEvent*>(e);
            received.emplace_back(message->Message(), message->WParam(), message->LParam());
            return true;
        }
        return QObject::event(e);
    }
};

QCoreApplication& App() {
    static int argc = 1;
    static char name[] = "WindowMessagesTest";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

TEST(WindowMessagesTest, PostedMessagesArriveInOrderFromAnotherThread) {
    App();
    Recorder recorder;
    HWND window = WindowHandleOf(&recorder);
    EXPECT_EQ(WindowHandleOf(&recorder), window);
    std::thread worker([window] {
        for (int i = 0; i < 3; ++i) PostMessageW(window, 1051, 7, i);
    });
    worker.join();
    QCoreApplication::processEvents();
    ASSERT_EQ(recorder.received.size(), 3u);
    EXPECT_EQ(recorder.received[2], std::make_tuple(1051u, WPARAM{7}, LPARAM{2}));
}

TEST(WindowMessagesTest, PostingToAGoneWindowIsANoOp) {
    App();
    auto recorder = std::make_unique<Recorder>();
    HWND window = WindowHandleOf(recorder.get());
    EXPECT_TRUE(PostMessageW(window, 1051, 0, 0));
    recorder.reset();  // the queued message goes with it
    EXPECT_FALSE(PostMessageW(window, 1051, 0, 0));
    QCoreApplication::processEvents();
    EXPECT_FALSE(PostMessageW(nullptr, 1051, 0, 0));
}

TEST(WindowMessagesTest, MessagesOutsideTheUserRangeAreRefused) {
    App();
    Recorder recorder;
    EXPECT_FALSE(PostMessageW(WindowHandleOf(&recorder), 15, 0, 0));
    QCoreApplication::processEvents();
    EXPECT_TRUE(recorder.received.empty());
}

}  // namespace
