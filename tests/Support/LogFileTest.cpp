#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/LocalTime.h"
#include "Support/LogFile.h"
#include "Support/ScratchDirectory.h"
#include "Support/VtableSlot.h"

// What each sync found: the file's size, or -1 for a directory.
std::vector<long> synced;

// Stand in for the C library's, recording what reached storage.
extern "C" int fdatasync(int fd) {
    struct stat status {};
    fstat(fd, &status);
    synced.push_back(S_ISDIR(status.st_mode) ? -1 : static_cast<long>(status.st_size));
    static const auto real = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fdatasync"));
    return real(fd);
}
extern "C" int fsync(int fd) {
    static const auto real = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"));
    return fdatasync(fd) == 0 ? real(fd) : -1;
}

namespace {

const std::string Rule(61, '-');

SYSTEMTIME At(WORD hour, WORD minute, WORD second, WORD millisecond) {
    SYSTEMTIME time{};
    time.wYear = 2015;
    time.wMonth = 3;
    time.wDay = 5;
    time.wHour = hour;
    time.wMinute = minute;
    time.wSecond = second;
    time.wMilliseconds = millisecond;
    return time;
}

class LogFileTest : public testing::Test {
protected:
    void SetUp() override {
        platform::OverrideLocalTime([this] { return now; });
    }
    void TearDown() override { platform::OverrideLocalTime({}); }

    std::string Log() const { return ScratchDirectory::Read(path); }

    SYSTEMTIME now = At(14, 7, 9, 42);
    ScratchDirectory dir;
    std::string path = dir.Path("PowerMeter.log");
};

TEST_F(LogFileTest, FirstLineFollowsHeaderWithItsTime) {
    TLogFile log(path.c_str(), 1, 0);
    ASSERT_TRUE(log.IsOpen());
    log.Message('U', "Loading main resource dll...", nullptr);
    now = At(23, 59, 58, 999);
    log.Error('M', "InitOTDR", "failed");
    // Every line is flushed at once: the file is complete while the log is open.
    EXPECT_EQ(Log(), Rule + "\n05.03.2015 14:07:09'042\n\n" + Rule +
                         "\n"
                         "05.03.2015 14:07:09'042  U M\t Loading main resource dll... \n"
                         "05.03.2015 23:59:58'999  M E\t InitOTDR failed\n");
}

// A power cut loses nothing a call has written, the new file's name included.
TEST_F(LogFileTest, EveryLineIsOnStorageWhenItsCallReturns) {
    synced.clear();
    TLogFile log(path.c_str(), 1, 0);
    EXPECT_EQ(synced, std::vector<long>{-1});
    const auto onStorage = [&] {
        return !synced.empty() &&
               synced.back() == static_cast<long>(std::filesystem::file_size(path));
    };
    log.Message('U', "m", nullptr);
    EXPECT_TRUE(onStorage());
    log.WriteValue("Board", 1);
    EXPECT_TRUE(onStorage());
    log.WritePair("Module", "x");
    EXPECT_TRUE(onStorage());
}

TEST_F(LogFileTest, TimestampPadsFieldsButNotYear) {
    now.wYear = 987;
    now.wMonth = 12;
    now.wDay = 31;
    now.wHour = 0;
    now.wMinute = 0;
    now.wSecond = 0;
    now.wMilliseconds = 5;
    TLogFile log(path.c_str(), 1, 0);
    log.Warning('U', "w", "");
    EXPECT_NE(Log().find("\n31.12.987 00:00:00'005  U W\t w \n"), std::string::npos);
}

struct LevelCase {
    int mask;
    const char* letters;  // level letters written, in call order E, M, W
};

class LogFileLevels : public LogFileTest, public testing::WithParamInterface<LevelCase> {};

TEST_P(LogFileLevels, WritesOnlyEnabledLevels) {
    TLogFile log(path.c_str(), 1, 0);
    log.SetLevels(GetParam().mask);
    log.Error('U', "e", nullptr);
    log.Message('U', "m", nullptr);
    log.Warning('U', "w", nullptr);
    std::string letters;
    const std::string content = Log();
    for (const char* marker : {"U E\t", "U M\t", "U W\t"})
        if (content.find(marker) != std::string::npos) letters += marker[2];
    EXPECT_EQ(letters, GetParam().letters);
    // No line, no header.
    EXPECT_EQ(content.empty(), letters.empty());
}

INSTANTIATE_TEST_SUITE_P(Masks, LogFileLevels,
                         testing::Values(LevelCase{-1, "EMW"}, LevelCase{0, ""}, LevelCase{1, "E"},
                                         LevelCase{2, "W"}, LevelCase{4, "M"}, LevelCase{3, "EW"},
                                         LevelCase{6, "MW"}, LevelCase{8, ""}));

TEST_F(LogFileTest, AllLevelsEnabledAfterConstruction) {
    TLogFile log(path.c_str(), 1, 0);
    log.Error('U', "e", nullptr);
    log.Message('U', "m", nullptr);
    log.Warning('U', "w", nullptr);
    const std::string content = Log();
    EXPECT_NE(content.find("U E\t e \n"), std::string::npos);
    EXPECT_NE(content.find("U M\t m \n"), std::string::npos);
    EXPECT_NE(content.find("U W\t w \n"), std::string::npos);
}

TEST_F(LogFileTest, TruncateRewritesAppendKeepsAndEachObjectHasItsHeader) {
    ScratchDirectory::Write(path, "previous run\n");
    {
        TLogFile log(path.c_str(), 0, 0);
        log.Message('U', "a", nullptr);
    }
    EXPECT_EQ(Log().rfind("previous run\n" + Rule, 0), 0u);
    {
        TLogFile log(path.c_str(), 0, 0);
        log.Message('U', "b", nullptr);
    }
    size_t headers = 0;
    for (size_t at = Log().find("\n\n" + Rule); at != std::string::npos;
         at = Log().find("\n\n" + Rule, at + 1))
        ++headers;
    EXPECT_EQ(headers, 2u);
    { TLogFile log(path.c_str(), 1, 0); }
    EXPECT_EQ(Log(), "");
}

TEST_F(LogFileTest, UnlevelledWritesHaveNoTimeNoHeaderNoLevelCheck) {
    TLogFile log(path.c_str(), 1, 0);
    log.SetLevels(0);
    log.WriteValue("Board", -12345678L);
    log.WritePair("Module", "tavix_otdr.so");
    EXPECT_EQ(Log(), "Board = -12345678\nModule tavix_otdr.so\n");
}

TEST_F(LogFileTest, EchoRepeatsLinesWithoutHeaderOnStderr) {
    TLogFile log(path.c_str(), 1, 1);
    testing::internal::CaptureStderr();
    log.Message('U', "shown twice", "x");
    log.SetLevels(1);
    log.Message('U', "dropped", "x");
    const std::string echoed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(echoed, "05.03.2015 14:07:09'042  U M\t shown twice x\n");
    EXPECT_NE(Log().find(Rule), std::string::npos);
}

TEST_F(LogFileTest, NoEchoWithoutFlag) {
    TLogFile log(path.c_str(), 1, 0);
    testing::internal::CaptureStderr();
    log.Message('U', "quiet", nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LogFileTest, FailedOpenIsSilent) {
    const std::string missing = dir.Path("no/such/dir/PowerMeter.log");
    TLogFile log(missing.c_str(), 1, 1);
    EXPECT_FALSE(log.IsOpen());
    testing::internal::CaptureStderr();
    log.Error('U', "e", nullptr);
    log.Message('U', "m", nullptr);
    log.Warning('U', "w", nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(std::filesystem::exists(missing));
}

// The OTDR module library calls through these slots.
TEST(LogFileInterfaceTest, VirtualSlotOrderIsTheModuleInterface) {
    EXPECT_EQ(VtableSlot(&TLogFile::SetLevels), 0);
    EXPECT_EQ(VtableSlot(&TLogFile::Error), 1);
    EXPECT_EQ(VtableSlot(&TLogFile::Message), 2);
    EXPECT_EQ(VtableSlot(&TLogFile::Warning), 3);
    EXPECT_EQ(VtableSlot(&TLogFile::WriteValue), 4);
    EXPECT_EQ(VtableSlot(&TLogFile::WritePair), 5);
}

}  // namespace
