// opm-bench: what it writes is what the simulator reads.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "Platform/ModulePath.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Simulator/bench/Bench.h"
#include "Simulator/tools/BenchTool.h"

namespace sim {
namespace {

struct Outcome {
    int code;
    std::string out;
    std::string err;
};

Outcome RunTool(const simtest::TempBench& file, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--file", file.path});
    std::ostringstream out;
    std::ostringstream err;
    BenchTool tool;
    const int code = tool.Run(arguments, out, err);
    return {code, out.str(), err.str()};
}

TEST(BenchTool, SetThenGetGivesTheValueAndTheSimulatorReadsIt) {
    simtest::TempBench file("; keep me\n[adc]\nconversionUs = 0\n");
    EXPECT_EQ(RunTool(file, {"set", "input.dBm", "-23.5"}).code, BenchTool::kDone);
    EXPECT_EQ(RunTool(file, {"set", "faults.failIoControl", "0x80062003"}).code, BenchTool::kDone);
    EXPECT_EQ(RunTool(file, {"set", "peers.Phone", "127.0.0.1:6500"}).code, BenchTool::kDone);
    EXPECT_EQ(RunTool(file, {"get", "input.dBm"}).out, "-23.5\n");
    EXPECT_EQ(RunTool(file, {"get", "input.wavelength"}).out, "1550\n");
    EXPECT_EQ(RunTool(file, {"get", "peers.Phone"}).out, "127.0.0.1:6500\n");

    const auto settings = Bench::Instance().Settings();
    EXPECT_DOUBLE_EQ(settings->input.dBm, -23.5);
    EXPECT_EQ(settings->faults.failIoControl, 0x80062003u);
    ASSERT_EQ(settings->peers.size(), 1u);
    EXPECT_EQ(settings->adc.conversionMicros, 0);
    EXPECT_EQ(file.Read().rfind("; keep me\n", 0), 0u);
}

TEST(BenchTool, UnsetGoesBackToTheDefault) {
    simtest::TempBench file;
    ASSERT_EQ(RunTool(file, {"set", "loopback.enabled", "yes"}).code, BenchTool::kDone);
    EXPECT_EQ(RunTool(file, {"get", "loopback.enabled"}).out, "1\n");
    EXPECT_EQ(RunTool(file, {"unset", "loopback.enabled"}).code, BenchTool::kDone);
    EXPECT_EQ(RunTool(file, {"get", "loopback.enabled"}).out, "0\n");
    EXPECT_EQ(file.Read().find("enabled"), std::string::npos);
}

TEST(BenchTool, BadRequestsSayWhyAndLeaveTheFileAlone) {
    simtest::TempBench file;
    const std::string before = file.Read();
    struct Case {
        std::vector<std::string> arguments;
        const char* complaint;
    };
    const Case cases[] = {
        {{"set", "input.power", "1"}, "unknown key input.power"},
        {{"set", "input.dBm", "loud"}, "input.dBm: 'loud' is not a number"},
        {{"set", "input.dBm", "40"}, "input.dBm: 40 is outside -200 .. 30"},
        {{"set", "peers.Phone", "localhost"}, "is not host:port"},
        {{"get", "nothing.here"}, "unknown key nothing.here"},
        {{"get", "peers.Nobody"}, "no peer Nobody"},
        {{"set", "input.dBm"}, "usage: opm-bench"},
        {{"frobnicate"}, "usage: opm-bench"},
    };
    for (const Case& c : cases) {
        const Outcome outcome = RunTool(file, c.arguments);
        EXPECT_EQ(outcome.code, BenchTool::kBadUsage) << c.complaint;
        EXPECT_NE(outcome.err.find(c.complaint), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(file.Read(), before);
}

TEST(BenchTool, AFileThatCannotBeWrittenIsReported) {
    simtest::TempBench file;
    BenchTool tool;
    std::ostringstream out;
    std::ostringstream err;
    const std::string path = file.directory + "/missing/bench.ini";
    EXPECT_EQ(tool.Run({"--file", path, "set", "input.dBm", "-1"}, out, err),
              BenchTool::kWriteFailed);
    EXPECT_NE(err.str().find("cannot write " + path), std::string::npos);
}

TEST(BenchTool, ShowMarksWhatTheFileChangesAndListsIgnoredLines) {
    simtest::TempBench file("[input]\ndBm = -3\nbogus = 1\n");
    const std::string shown = RunTool(file, {"show"}).out;
    EXPECT_NE(shown.find("* input.dBm"), std::string::npos);
    EXPECT_NE(shown.find("  input.wavelength"), std::string::npos);
    EXPECT_NE(shown.find("ignored: line 3: unknown key input.bogus"), std::string::npos);
}

TEST(BenchTool, TheProgramWritesAtomicallyAndExitsWithTheToolsCodes) {
    simtest::TempBench file;
    const std::string tool = platform::ApplicationDirectory() + "opm-bench --file " + file.path;
    ASSERT_TRUE(std::filesystem::exists(platform::ApplicationDirectory() + "opm-bench"));
    EXPECT_EQ(std::system((tool + " set input.wavelength 1310").c_str()), 0);
    EXPECT_EQ(Bench::Instance().Settings()->input.wavelength, 1310);
    EXPECT_EQ(WEXITSTATUS(std::system((tool + " set input.wavelength x 2>/dev/null").c_str())),
              BenchTool::kBadUsage);
    for (const auto& entry : std::filesystem::directory_iterator(file.directory))
        EXPECT_EQ(entry.path().filename(), "bench.ini") << "no temporary file is left behind";
}

}  // namespace
}  // namespace sim
