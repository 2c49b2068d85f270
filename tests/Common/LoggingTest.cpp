#include <gtest/gtest.h>

#include <string>

#include "Common/Settings/Logging.h"
#include "Platform/LocalTime.h"
#include "Support/FatalTextPattern.h"
#include "Support/LogFile.h"
#include "Support/ScratchDirectory.h"

namespace {

class LoggingTest : public testing::Test {
protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        platform::OverrideLocalTime([] {
            SYSTEMTIME time{};
            time.wYear = 2015;
            time.wMonth = 3;
            time.wDay = 5;
            time.wHour = 14;
            time.wMinute = 7;
            time.wSecond = 9;
            time.wMilliseconds = 42;
            return time;
        });
    }
    void TearDown() override {
        SetLogFile(nullptr);
        platform::OverrideLocalTime({});
    }

    ScratchDirectory dir;
    std::string path = dir.Path("PowerMeter.log");
};

TEST_F(LoggingTest, MessagesGoToTheInstalledLogAsApplicationLines) {
    TLogFile log(path.c_str(), 1, 0);
    SetLogFile(&log);
    EXPECT_EQ(&LogFile(), &log);
    LogMessage("Loading main resource dll...", std::wstring(L"English_ä.rcc"));
    LogMessage("Loading main resource dll sucessfull");
    const std::string content = ScratchDirectory::Read(path);
    EXPECT_NE(content.find("'042  U M\t Loading main resource dll... English_ä.rcc\n"),
              std::string::npos);
    EXPECT_NE(content.find("'042  U M\t Loading main resource dll sucessfull \n"),
              std::string::npos);
}

TEST_F(LoggingTest, AccessWithoutLogIsFatal) {
    const std::string pattern = FatalTextPattern("LogFile", "Logging", 14);
    EXPECT_EXIT(LogFile(), testing::ExitedWithCode(1), pattern);
    EXPECT_EXIT(LogMessage("x"), testing::ExitedWithCode(1), pattern);
    EXPECT_EXIT(
        {
            TLogFile log(path.c_str(), 1, 0);
            SetLogFile(&log);
            SetLogFile(nullptr);
            LogMessage("after removal");
        },
        testing::ExitedWithCode(1), pattern);
}

}  // namespace
