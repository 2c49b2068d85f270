#pragma once
// Helpers shared by the toolkit's tests: readable QStrings and the one
// bounded way to reach a box that runs its own event loop.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>

#include "Platform/FatalError.h"
#include "support/LanguagePack.h"

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace toolkittest {

constexpr int kDeadlineMs = 5000;

// Polls events until `condition` holds; false after the deadline.
template <class Condition>
bool WaitUntil(Condition condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > kDeadlineMs) return false;
        QTest::qWait(5);
    }
    return true;
}

// Every box that is up, so that a failed test ends instead of waiting for ever.
inline void CloseAllBoxes() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QDialog*>(window);
        if (box == nullptr || !box->isVisible()) continue;
        QTest::keyClick(box, Qt::Key_Escape);  // a submenu ends its loop on Escape only
        if (box->isVisible()) box->reject();
    }
}

// Runs `script` inside the event loop of the first visible window of type T
// other than `outer`, once it shows, and then waits for it to close. Past the
// deadline, either way, the test fails with "waiting for <what>" and every box
// is closed; a test still stuck 10 s later ends the run rather than hang it.
// That last guard is a thread of its own: a box that swallows every event
// (the application's too) starves any timer of the loop.
template <typename T>
void WhenShown(const char* what, std::function<void(T*)> script, QWidget* outer = nullptr) {
    // A child of the application: a watch whose end the event loop never
    // reached goes with the application.
    struct Watch : QObject {
        QTimer poll{this};
        QElapsedTimer clock;
        QPointer<T> box;
        bool seen = false;
    };
    auto* watch = new Watch;
    watch->setParent(qApp);
    watch->clock.start();
    auto closed = std::make_shared<std::atomic<bool>>(false);
    std::thread([closed, test = testing::UnitTest::GetInstance()->current_test_info(), what] {
        const auto end =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(kDeadlineMs + 10000);
        while (std::chrono::steady_clock::now() < end)
            if (closed->load())
                return;
            else
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (testing::UnitTest::GetInstance()->current_test_info() != test) return;
        std::fprintf(stderr, "waiting for %s: it does not end, ending the run\n", what);
        std::_Exit(1);
    }).detach();
    QObject::connect(&watch->poll, &QTimer::timeout, watch, [=] {
        if (!watch->seen) {
            for (QWidget* window : QApplication::topLevelWidgets()) {
                auto* box = qobject_cast<T*>(window);
                if (box == nullptr || box == outer || !box->isVisible()) continue;
                watch->box = box;
                watch->seen = true;
                // Not from this slot: a script that opens a box of its own
                // must leave this deadline running.
                QTimer::singleShot(0, box, [script, box] { script(box); });
                return;
            }
        } else if (watch->box.isNull() || !watch->box->isVisible()) {
            closed->store(true);
            watch->poll.stop();
            return watch->deleteLater();
        }
        if (watch->clock.elapsed() < kDeadlineMs) return;
        ADD_FAILURE() << "waiting for " << what << (watch->seen ? " to close" : " to show");
        watch->poll.stop();
        CloseAllBoxes();
        watch->deleteLater();
    });
    watch->poll.start(5);
}

}  // namespace toolkittest
