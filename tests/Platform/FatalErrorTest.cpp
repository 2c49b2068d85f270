#include <gtest/gtest.h>

#include "Platform/FatalError.h"

namespace {

TEST(FatalErrorTest, TextNamesExpressionFileWithoutDirectoryOrExtensionAndLine) {
    EXPECT_EQ(FatalAssertionText("hKey", "/src/Common/AppConfig.cpp", 32),
              "hKey\nFile: AppConfig\nLine: 32\nApplication will be closed");
    EXPECT_EQ(FatalAssertionText("x", "C:\\src\\PowerMeter.cpp", 7),
              "x\nFile: PowerMeter\nLine: 7\nApplication will be closed");
    EXPECT_EQ(FatalAssertionText("x", "Logging", 14),
              "x\nFile: Logging\nLine: 14\nApplication will be closed");
}

TEST(FatalErrorDeathTest, FailedCheckWritesTheTextAndExitsWithOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const int* missing = nullptr;
    EXPECT_EXIT(OPM_ASSERT_AT(missing && "Resource library not found", "PowerMeter", 129),
                testing::ExitedWithCode(1),
                "missing && \"Resource library not found\"\nFile: PowerMeter\nLine: 129\n"
                "Application will be closed");
    EXPECT_EXIT(OPM_ASSERT(1 + 1 == 3), testing::ExitedWithCode(1),
                "1 \\+ 1 == 3\nFile: FatalErrorTest\nLine: [0-9]+\nApplication will be closed");
}

TEST(FatalErrorDeathTest, TheBoxHookSeesTheSameTextBeforeTheExit) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            platform::SetFatalErrorBox(
                [](const std::wstring& text) { fprintf(stderr, "BOX[%ls]", text.c_str()); });
            OPM_ASSERT_AT(false, "Logging", 14);
        },
        testing::ExitedWithCode(1),
        "BOX\\[false\nFile: Logging\nLine: 14\nApplication will be closed\\]");
}

TEST(FatalErrorTest, PassingCheckDoesNothing) {
    int calls = 0;
    OPM_ASSERT(++calls == 1);
    EXPECT_EQ(calls, 1);
}

}  // namespace
