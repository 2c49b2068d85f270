#pragma once
// Helpers shared by the toolkit's tests.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <string>

#include "Platform/FatalError.h"

// A fatal assertion: exit code 1 and the exact text (expression, file, line).
#define EXPECT_FATAL_AT(statement, expression, file, line)                             \
    do {                                                                               \
        GTEST_FLAG_SET(death_test_style, "threadsafe");                                \
        EXPECT_EXIT(statement, ::testing::ExitedWithCode(1),                           \
                    ::testing::HasSubstr(FatalAssertionText(expression, file, line))); \
    } while (false)

// A fatal assertion whose line is not documented: expression and file.
#define EXPECT_FATAL(statement, expression, file)                                         \
    do {                                                                                  \
        GTEST_FLAG_SET(death_test_style, "threadsafe");                                   \
        EXPECT_EXIT(statement, ::testing::ExitedWithCode(1),                              \
                    ::testing::HasSubstr(std::string(expression) + "\nFile: " + (file))); \
    } while (false)

// Polls events until `condition` holds; false when it still does not after
// `timeoutMs` (which only matters when the test fails).
template <class Condition>
bool WaitUntil(Condition condition, int timeoutMs = 5000) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > timeoutMs) return false;
        QTest::qWait(10);
    }
    return true;
}

// Lets posted events and deferred deletes run.
inline void ProcessEvents() {
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
