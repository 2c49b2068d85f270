#include <gtest/gtest.h>

#include "Platform/FatalError.h"

namespace {

// The box shows the text a technician quotes, file without directory or
// extension; then the program ends with 1.
TEST(FatalErrorDeathTest, AFailedCheckShowsItsTextAndExitsWithOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            platform::SetFatalErrorBox(
                [](const std::wstring& text) { fprintf(stderr, "BOX[%ls]", text.c_str()); });
            OPM_ASSERT_AT(1 + 1 == 3, "/src/Common/Logging.cpp", 14);
        },
        testing::ExitedWithCode(1),
        "BOX\\[1 \\+ 1 == 3\nFile: Logging\nLine: 14\nApplication will be closed\\]");
}

}  // namespace
