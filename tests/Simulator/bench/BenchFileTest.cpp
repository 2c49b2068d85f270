// The bench file and opm-bench: what the tool writes is what the simulator
// reads, bad requests say why and leave the file alone, a running process
// notices a change, and the shipped factory data is the model's.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "Platform/ModulePath.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Simulator/bench/BenchFile.h"
#include "Simulator/bench/BenchKeys.h"
#include "Simulator/bench/FactoryIni.h"
#include "Simulator/tools/BenchTool.h"

namespace sim {
namespace {

struct ToolRow {
    std::string before;  // the bench file
    std::vector<std::string> arguments;
    int code;
    std::string output;         // part of standard output, or of standard error on failure
    std::string after = {};     // the file afterwards, when the request changes it
    const char* key = nullptr;  // and the value the simulator then reads
    std::string value = {};
};

// clang-format off
const ToolRow kToolRows[] = {
    {"; keep me\n", {"set", "input.dBm", "-23.5"}, 0, "", "; keep me\n\n[input]\ndBm = -23.5\n",
     "input.dBm", "-23.5"},
    {"[input]\n  dBm = -10   ; not a comment\ndBm = 2\nwavelength=1310\n", {"set", "input.dBm", " -7 "},
     0, "", "[input]\n  dBm = -10   ; not a comment\ndBm = -7\nwavelength=1310\n", "input.dBm", "-7"},
    {"", {"set", "faults.failIoControl", "44"}, 0, "", "[faults]\nfailIoControl = 0x0000002C\n",
     "faults.failIoControl", "0x0000002C"},
    {"", {"set", "bluetooth.adapter", "5"}, 0, "", "[bluetooth]\nadapter = error\n",
     "bluetooth.adapter", "error"},
    {"[loopback]\nenabled = 1\n", {"unset", "loopback.enabled"}, 0, "", "[loopback]\n",
     "loopback.enabled", "0"},
    {"[peers]\nPhone = 127.0.0.1:6500\n", {"get", "peers.Phone"}, 0, "127.0.0.1:6500\n"},
    {"[input]\ndBm = -3\nbogus = 1\n", {"show"}, 0, "* input.dBm"},
    {"[input]\nbogus = 1\n", {"show"}, 0, "ignored: line 2: unknown key input.bogus"},
    {"", {"set", "input.dBm", "31"}, 1, "input.dBm: 31 is outside -200 .. 30"},
    {"", {"set", "input.dBm", "-23.5dB"}, 1, "'-23.5dB' is not a number"},
    {"", {"set", "input.wavelength", "1310.5"}, 1, "not a whole number"},
    {"", {"set", "peers.Phone", "localhost"}, 1, "is not host:port"},
    {"", {"set", "peers.Pc", " ::1:650   {00001105-0000-1000-8000-00805f9b34fb};{00001106-0000-1000-8000-00805F9B34FB} "},
     0, "", "[peers]\nPc = ::1:650 {00001105-0000-1000-8000-00805f9b34fb};{00001106-0000-1000-8000-00805F9B34FB}\n"},
    {"", {"set", "peers.Pc", "::1:650 {00001105-0000-1000-8000-00805f9b34fb};"}, 1, "not braced UUIDs"},
    {"", {"set", "peers.Pc", "::1:650 {00001105-0000-1000-8000+00805f9b34fb}"}, 1, "not braced UUIDs"},
    {"", {"get", "peers.Nobody"}, 1, "no peer Nobody"},
    {"", {"set", "input.power", "1"}, 1, "unknown key input.power"},
    {"", {"set", "input.dBm"}, 1, "usage: opm-bench"},
};
// clang-format on

TEST(BenchTool, EachRequestGivesItsCodeAndTheSimulatorReadsTheFile) {
    for (const ToolRow& row : kToolRows) {
        SCOPED_TRACE(testing::PrintToString(row.arguments) + " on " + row.before);
        simtest::TempBench file(row.before);
        std::vector<std::string> arguments = {"--file", file.path};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(BenchTool().Run(arguments, out, err), row.code) << err.str();
        EXPECT_NE((row.code == 0 ? out : err).str().find(row.output), std::string::npos)
            << out.str() << err.str();
        EXPECT_EQ(ScratchDirectory::Read(file.path), row.after.empty() ? row.before : row.after);
        if (row.key) {
            EXPECT_EQ(GetBenchValue(*Bench::Instance().Settings(), *FindBenchKey(row.key)),
                      row.value);
        }
    }
}

TEST(BenchTool, TheProgramWritesAtomicallyAndReportsAFileItCannotWrite) {
    simtest::TempBench file;
    const std::string tool = platform::ApplicationDirectory() + "opm-bench --file ";
    EXPECT_EQ(simtest::RunBounded(tool + file.path + " set input.wavelength 1310", "opm-bench"), 0);
    EXPECT_EQ(Bench::Instance().Settings()->input.wavelength, 1310);
    for (const auto& entry : std::filesystem::directory_iterator(file.directory))
        EXPECT_EQ(entry.path().filename(), "bench.ini") << "no temporary file is left behind";
    const std::string missing = file.directory + "/missing/bench.ini";
    EXPECT_EQ(simtest::RunBounded(tool + missing + " set input.dBm -1 2>" + file.directory + "/err",
                                  "opm-bench"),
              BenchTool::kWriteFailed);
    EXPECT_NE(ScratchDirectory::Read(file.directory + "/err").find("cannot write " + missing),
              std::string::npos);
}

TEST(ParseBench, BadLinesAreReportedWithTheirNumberAndTheRestStillApplies) {
    const BenchLoad load = ParseBench(
        "orphan = 1\n[input]\ndBm = -42.25\nwavelength = blue\nwhat\n[nosuch]\nx = 1\n"
        "[peers]\nPhone = 127.0.0.1:6500\nLaptop = nohost\n[faults]\ninitOtdrFailures = 1\n");
    EXPECT_DOUBLE_EQ(load.settings.input.dBm, -42.25);
    EXPECT_EQ(load.settings.faults.initOtdrFailures, 1);
    EXPECT_EQ(load.settings.peers, (decltype(load.settings.peers){{"Phone", "127.0.0.1:6500"}}));
    const std::vector<std::string> expected = {
        "line 1: key outside any [section]: orphan",
        "line 5: not a key = value line: what",
        "line 4: input.wavelength: 'blue' is not a whole number",
        "line 7: unknown key nosuch.x",
        "line 10: peer address 'nohost' is not host:port (port 1 .. 65535)",
    };
    EXPECT_EQ(load.problems, expected);
}

TEST(Bench, AChangeIsReadAtTheNextAccessAndProblemsAreReportedOnce) {
    simtest::TempBench file("[input]\ndBm = -10\n");
    const auto first = Bench::Instance().Settings();
    EXPECT_EQ(Bench::Instance().Settings(), first) << "an unchanged file is not parsed again";
    file.Write("[input]\ndBm = -11\n");  // same size, new file
    EXPECT_DOUBLE_EQ(Bench::Instance().Settings()->input.dBm, -11.0);
    testing::internal::CaptureStderr();
    std::ofstream(file.path, std::ios::app) << "wavelength = loud\n";  // edited in place
    EXPECT_DOUBLE_EQ(Bench::Instance().Settings()->input.dBm, -11.0);
    Bench::Instance().Settings();
    std::filesystem::remove(file.path);
    std::filesystem::create_directory(file.path);  // there, but not a file
    EXPECT_DOUBLE_EQ(Bench::Instance().Settings()->input.dBm, BenchSettings{}.input.dBm);
    const std::string reported = testing::internal::GetCapturedStderr();
    EXPECT_NE(reported.find("line 3: input.wavelength: 'loud' is not a whole number"),
              std::string::npos)
        << reported;
    EXPECT_EQ(reported.find("loud"), reported.rfind("loud")) << reported;
    EXPECT_NE(reported.find("cannot be read, using the defaults"), std::string::npos);
}

TEST(Bench, TheDefaultFileIsTheEnvironmentsOrTheOneBesideTheLibraries) {
    ASSERT_EQ(setenv("TAVIX_BENCH", "/somewhere/else.ini", 1), 0);
    EXPECT_EQ(DefaultBenchPath(), "/somewhere/else.ini");
    ASSERT_EQ(unsetenv("TAVIX_BENCH"), 0);
    EXPECT_TRUE(std::filesystem::exists(
        std::filesystem::path(DefaultBenchPath()).replace_filename("tavix_sim_bench.so")));
}

TEST(FactoryIni, TheShippedFileIsTheOneTheModelWritesAndFitsTheReadersLines) {
    EXPECT_EQ(ScratchDirectory::Read(OPM_SOURCE_DIR "/Resources/sim/etc_gui/opm.ini"),
              FactoryIniText(BenchSettings{}))
        << "regenerate it with: opm-bench factory > Resources/sim/etc_gui/opm.ini";
    std::istringstream text(FactoryIniText(BenchSettings{}));
    for (std::string line; std::getline(text, line);) EXPECT_LT(line.size(), 255u) << line;
}

}  // namespace
}  // namespace sim
