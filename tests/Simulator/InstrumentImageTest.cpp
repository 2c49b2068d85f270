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

// The build directory is the one above bin/, where this test lies.
int MakeImage(const fs::path& image, const std::string& options = {},
              fs::path build = fs::path(platform::ApplicationDirectory()).parent_path().parent_path()) {
    return simtest::RunBounded(OPM_SOURCE_DIR "/scripts/make-image.sh " + options + " " +
                                   build.string() + " " + image.string() + " 2>" +
                                   (image.parent_path() / "errors").string(),
                               "make-image.sh");
}

TEST(InstrumentImage, HoldsTheSimulatedInstrumentAndRebuildingKeepsTheUnitsDataUnlessFresh) {
    simtest::TempBench root;
    const fs::path image = root.directory + "/image";
    ASSERT_EQ(MakeImage(image), 0) << simtest::ReadText(root.directory + "/errors");
    for (const char* file : {"tavix_otdr.so", "tavix_sim_bench.so", "tavix_sim_olt.so",
                             "tavix_sim_btd.so", "opm-bench", "registry.reg"})
        EXPECT_TRUE(fs::exists(image / file)) << file;
    const std::string shipped = OPM_SOURCE_DIR "/Resources/sim/";
    const std::string bench = (image / "bench.ini").string();
    const std::string ini = (image / "etc_gui/opm.ini").string();
    EXPECT_EQ(simtest::ReadText(ini), simtest::ReadText(shipped + "etc_gui/opm.ini"));

    std::ofstream(bench, std::ios::app) << "[input]\ndBm = -3\n";
    std::ofstream(ini, std::ios::app) << "; calibrated\n";
    const std::string changed = simtest::ReadText(bench) + simtest::ReadText(ini);
    ASSERT_EQ(MakeImage(image), 0);
    EXPECT_EQ(simtest::ReadText(bench) + simtest::ReadText(ini), changed);
    ASSERT_EQ(MakeImage(image, "--fresh"), 0);
    EXPECT_EQ(simtest::ReadText(bench) + simtest::ReadText(ini),
              simtest::ReadText(shipped + "bench.ini") + simtest::ReadText(shipped + "etc_gui/opm.ini"));
}

TEST(InstrumentImage, AMissingBuildSaysWhatToBuild) {
    simtest::TempBench root;
    const fs::path image = root.directory + "/image";
    EXPECT_EQ(MakeImage(image, {}, root.directory), 1);
    EXPECT_NE(simtest::ReadText(root.directory + "/errors").find("build the target 'simulator' first"),
              std::string::npos);
    EXPECT_FALSE(fs::exists(image));
}

}  // namespace
