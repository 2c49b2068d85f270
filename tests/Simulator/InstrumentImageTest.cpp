// scripts/make-image.sh: a throw-away image holds the simulated instrument,
// rebuilding an image keeps what the running instrument changed, and a
// missing build says what to build.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Platform/ModulePath.h"
#include "Simulator/SimulatorTestSupport.h"

namespace {

namespace fs = std::filesystem;

class InstrumentImage : public testing::Test {
protected:
    // make-image.sh [options] <build> <image>; the build is the directory above
    // bin/, where this test lies.
    int MakeImage(const std::string& options = {}) {
        return simtest::RunBounded(OPM_SOURCE_DIR "/scripts/make-image.sh " + options + " " +
                                       build + " " + image + " 2>" + root.directory + "/errors",
                                   "make-image.sh");
    }
    // The data a running instrument changes.
    std::string Data(const std::string& dir) {
        return ScratchDirectory::Read(dir + "/bench.ini") +
               ScratchDirectory::Read(dir + "/etc_gui/opm.ini");
    }

    simtest::TempBench root;
    std::string image = root.directory + "/image";
    std::string build = fs::path(platform::ApplicationDirectory()).parent_path().parent_path();
};

TEST_F(InstrumentImage, HoldsTheSimulatedInstrumentAndRebuildingKeepsTheUnitsDataUnlessFresh) {
    ASSERT_EQ(MakeImage(), 0) << ScratchDirectory::Read(root.directory + "/errors");
    for (const char* file : {"tavix_otdr.so", "tavix_sim_bench.so", "tavix_sim_olt.so",
                             "tavix_sim_btd.so", "opm-bench", "registry.reg"})
        EXPECT_TRUE(fs::exists(image + "/" + file)) << file;
    const std::string shipped = OPM_SOURCE_DIR "/Resources/sim";
    EXPECT_EQ(Data(image), Data(shipped));

    std::ofstream(image + "/bench.ini", std::ios::app) << "[input]\ndBm = -3\n";
    std::ofstream(image + "/etc_gui/opm.ini", std::ios::app) << "; calibrated\n";
    const std::string changed = Data(image);
    ASSERT_EQ(MakeImage(), 0);
    EXPECT_EQ(Data(image), changed);
    ASSERT_EQ(MakeImage("--fresh"), 0);
    EXPECT_EQ(Data(image), Data(shipped));
}

TEST_F(InstrumentImage, AMissingBuildSaysWhatToBuild) {
    build = root.directory;
    EXPECT_EQ(MakeImage(), 1);
    EXPECT_NE(
        ScratchDirectory::Read(root.directory + "/errors").find("build the target 'simulator'"),
        std::string::npos);
    EXPECT_FALSE(fs::exists(image));
}

}  // namespace
