#include <dlfcn.h>
#include <gmock/gmock.h>
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

class LogFileTest : public testing::Test {
protected:
    void SetUp() override {
        platform::OverrideLocalTime([this] { return now; });
    }
    void TearDown() override { platform::OverrideLocalTime({}); }
    std::string Log() const { return ScratchDirectory::Read(path); }

    SYSTEMTIME now{2015, 3, 4, 5, 14, 7, 9, 42};
    ScratchDirectory dir;
    std::string path = dir.Path("PowerMeter.log");
};

TEST_F(LogFileTest, LinesFollowTheHeaderWithTheirTimeAndLevel) {
    TLogFile log(path.c_str(), 1, 0);
    log.Message('U', "Loading main resource dll...", nullptr);
    now = {987, 12, 0, 31, 0, 0, 0, 5};
    log.Error('M', "InitOTDR", "failed");
    log.Warning('U', "w", "");
    log.WriteValue("Board", -12345678L);
    log.WritePair("Module", "tavix_otdr.so");
    EXPECT_EQ(Log(), Rule + "\n05.03.2015 14:07:09'042\n\n" + Rule + "\n" +
                         "05.03.2015 14:07:09'042  U M\t Loading main resource dll... \n"
                         "31.12.987 00:00:00'005  M E\t InitOTDR failed\n"
                         "31.12.987 00:00:00'005  U W\t w \n"
                         "Board = -12345678\nModule tavix_otdr.so\n");
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

// Bit 0 errors, bit 1 warnings, bit 2 messages; no line, no header, no echo.
TEST_F(LogFileTest, WritesAndEchoesOnlyEnabledLevels) {
    for (const auto& [mask, letters] :
         {std::pair{-1, "EMW"}, {0, ""}, {1, "E"}, {2, "W"}, {4, "M"}, {6, "MW"}, {8, ""}}) {
        SCOPED_TRACE(mask);
        TLogFile log(path.c_str(), 1, 1);
        log.SetLevels(mask);
        testing::internal::CaptureStderr();
        log.Error('U', "e", nullptr);
        log.Message('U', "m", nullptr);
        log.Warning('U', "w", nullptr);
        const std::string echoed = testing::internal::GetCapturedStderr();
        std::string written;
        for (const char* marker : {"U E\t e \n", "U M\t m \n", "U W\t w \n"})
            if (Log().find(marker) != std::string::npos) written += marker[2];
        EXPECT_EQ(written, letters);
        // The echo repeats the lines, without the header.
        EXPECT_EQ(Log(), written.empty()
                             ? ""
                             : Rule + "\n05.03.2015 14:07:09'042\n\n" + Rule + "\n" + echoed);
    }
}

TEST_F(LogFileTest, AppendKeepsTruncateRewritesAFailedOpenIsSilent) {
    ScratchDirectory::Write(path, "previous run\n");
    for (int run = 0; run < 2; ++run) TLogFile(path.c_str(), 0, 0).Message('U', "a", nullptr);
    EXPECT_EQ(Log().rfind("previous run\n" + Rule, 0), 0u);
    EXPECT_NE(Log().find("\n\n" + Rule, Log().find("U M") + 1), std::string::npos);
    { TLogFile log(path.c_str(), 1, 0); }
    EXPECT_EQ(Log(), "");
    TLogFile missing(dir.Path("no/such/dir/x.log").c_str(), 1, 1);
    EXPECT_FALSE(missing.IsOpen());
    testing::internal::CaptureStderr();
    missing.Error('U', "e", nullptr);
    missing.WriteValue("Board", 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// The OTDR module library calls through these slots.
TEST(LogFileInterfaceTest, VirtualSlotOrderIsTheModuleInterface) {
    const std::ptrdiff_t slots[] = {
        VtableSlot(&TLogFile::SetLevels),  VtableSlot(&TLogFile::Error),
        VtableSlot(&TLogFile::Message),    VtableSlot(&TLogFile::Warning),
        VtableSlot(&TLogFile::WriteValue), VtableSlot(&TLogFile::WritePair)};
    EXPECT_THAT(slots, testing::ElementsAre(0, 1, 2, 3, 4, 5));
}

}  // namespace
