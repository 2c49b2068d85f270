// Replacing a file keeps what the target is: its mode, its write protection,
// the link it is reached through. Torn writes are the crash-injection test's.

#include <gtest/gtest.h>

#include "Platform/AtomicFile.h"
#include "Support/ScratchDirectory.h"

namespace fs = std::filesystem;

namespace {

class AtomicFileTest : public testing::Test {
protected:
    size_t Files(const std::string& in = "") const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(dir.Path(in)), {}));
    }
    ScratchDirectory dir;
    std::string target = dir.Path("opm.ini");
};

TEST_F(AtomicFileTest, ReplacesTheContentAndKeepsTheMode) {
    ScratchDirectory::Write(target, "old");
    ScratchDirectory::Write(target + ".tmp", "stale, from a cut write");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    testing::internal::CaptureStderr();
    {
        platform::AtomicFileWriter abandoned(target);
        ASSERT_NE(abandoned.Stream(), nullptr);
        fputs("half writ", abandoned.Stream());
    }
    EXPECT_EQ(ScratchDirectory::Read(target), "old");
    ASSERT_TRUE(platform::WriteFileAtomically(target, "new content"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(ScratchDirectory::Read(target), "new content");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(Files(), 1u);
}

// No write bit refuses even the superuser, whom access() would let through.
TEST_F(AtomicFileTest, AReadOnlyTargetOrADirectoryIsNotReplaced) {
    ScratchDirectory::Write(target, "old");
    fs::permissions(target, fs::perms::owner_read | fs::perms::group_read);
    fs::create_directory(dir.Path("sub"));
    for (const char* name : {"opm.ini", "sub", "no/such.ini"}) {
        EXPECT_FALSE(platform::WriteFileAtomically(dir.Path(name), "new")) << name;
        EXPECT_FALSE(platform::AtomicFileWriter(dir.Path(name)).Commit()) << name;
    }
    EXPECT_EQ(ScratchDirectory::Read(target), "old");
    EXPECT_EQ(Files(), 2u);
}

TEST_F(AtomicFileTest, ALinkIsWrittenThroughToItsDestination) {
    fs::create_directory(dir.Path("etc"));
    ScratchDirectory::Write(dir.Path("etc/opm.ini"), "old");
    fs::create_symlink("etc/opm.ini", target);
    {
        platform::AtomicFileWriter writer(target);
        EXPECT_TRUE(fs::exists(dir.Path("etc/opm.ini.tmp")));
    }
    ASSERT_TRUE(platform::WriteFileAtomically(target, "new"));
    EXPECT_TRUE(fs::is_symlink(target));
    EXPECT_EQ(ScratchDirectory::Read(dir.Path("etc/opm.ini")), "new");
    EXPECT_EQ(Files() + Files("etc"), 3u);
}

// Once renamed, the new content is the file's: a failed directory flush is
// worth a note, not a failure the caller would wrongly report.
TEST_F(AtomicFileTest, AFailedDirectoryFlushAfterTheRenameIsStillASuccess) {
    platform::InjectAtomicFileFaults().failNextDirectorySync = true;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(platform::WriteFileAtomically(target, "new"));
    EXPECT_NE(testing::internal::GetCapturedStderr().find(dir.Root().string()), std::string::npos);
    EXPECT_EQ(ScratchDirectory::Read(target), "new");
}

}  // namespace
