#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "Platform/AtomicFile.h"

namespace fs = std::filesystem;

namespace {

std::string Read(const fs::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

class AtomicFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("atomic-" + std::to_string(getpid()));
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    size_t FilesInDir() const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(dir), {}));
    }
    fs::path dir;
};

TEST_F(AtomicFileTest, ReplacesContentAndLeavesNoTemporaryBehind) {
    const fs::path target = dir / "opm.ini";
    ASSERT_TRUE(platform::WriteFileAtomically(target.string(), "old\n"));
    ASSERT_TRUE(platform::WriteFileAtomically(target.string(), "new content\n"));
    EXPECT_EQ(Read(target), "new content\n");
    EXPECT_EQ(FilesInDir(), 1u);
}

TEST_F(AtomicFileTest, UncommittedWriteKeepsTheOldFile) {
    const fs::path target = dir / "results.txt";
    ASSERT_TRUE(platform::WriteFileAtomically(target.string(), "kept"));
    {
        platform::AtomicFileWriter writer(target.string());
        ASSERT_NE(writer.Stream(), nullptr);
        fputs("half writ", writer.Stream());
    }
    EXPECT_EQ(Read(target), "kept");
    EXPECT_EQ(FilesInDir(), 1u);
}

TEST_F(AtomicFileTest, AStaleTemporaryFromACutWriteIsReplacedNotAccumulated) {
    const fs::path target = dir / "registry.reg";
    std::ofstream(dir / "registry.reg.tmp") << "torn";
    ASSERT_TRUE(platform::WriteFileAtomically(target.string(), "whole"));
    EXPECT_EQ(Read(target), "whole");
    EXPECT_EQ(FilesInDir(), 1u);
}

TEST_F(AtomicFileTest, MissingDirectoryFailsWithoutCreatingAnything) {
    platform::AtomicFileWriter writer((dir / "no" / "such.txt").string());
    EXPECT_EQ(writer.Stream(), nullptr);
    EXPECT_FALSE(writer.Commit());
    EXPECT_FALSE(platform::WriteFileAtomically((dir / "no" / "x").string(), "x"));
}

}  // namespace
