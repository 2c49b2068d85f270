// The bench file: its keys, its text, and a running process noticing a change.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Simulator/SimulatorTestSupport.h"
#include "Simulator/bench/Bench.h"
#include "Simulator/bench/BenchFile.h"
#include "Simulator/bench/BenchIniText.h"
#include "Simulator/bench/BenchKeys.h"

namespace sim {
namespace {

TEST(BenchKeys, ValuesAreCheckedAndStoredInTheirCanonicalForm) {
    struct Case {
        const char* key;
        const char* text;
        bool accepted;
        const char* stored;  // as GetBenchValue gives it back
    };
    const Case cases[] = {
        {"input.dBm", "-23.5", true, "-23.5"},
        {"input.dBm", " -7 ", true, "-7"},
        {"input.dBm", "31", false, "-20"},
        {"input.dBm", "-23.5dB", false, "-20"},
        {"input.dBm", "nan", false, "-20"},
        {"input.enabled", "off", true, "0"},
        {"input.enabled", "maybe", false, "1"},
        {"input.wavelength", "1310", true, "1310"},
        {"input.wavelength", "1310.5", false, "1550"},
        {"faults.failIoControl", "0x80062003", true, "0x80062003"},
        {"faults.failIoControl", "44", true, "0x0000002C"},
        {"faults.failIoControl", "-1", false, "0x00000000"},
        {"faults.initOtdrFailures", "2", true, "2"},
        {"bluetooth.adapter", "off", true, "off"},
        {"bluetooth.adapter", "5", true, "error"},
        {"bluetooth.adapter", "asleep", false, "running"},
        {"module.modelTag", "X+Y", true, "X+Y"},
        {"module.modelTag", "bad\ttab", false, "SIM1PM2"},
    };
    for (const Case& c : cases) {
        const BenchKey* key = FindBenchKey(c.key);
        ASSERT_NE(key, nullptr) << c.key;
        BenchSettings settings;
        std::string error;
        EXPECT_EQ(SetBenchValue(settings, *key, c.text, error), c.accepted)
            << c.key << "=" << c.text;
        EXPECT_EQ(error.empty(), c.accepted) << error;
        EXPECT_EQ(GetBenchValue(settings, *key), c.stored) << c.key << "=" << c.text;
    }
    EXPECT_EQ(FindBenchKey("input.power"), nullptr);
}

TEST(BenchKeys, EveryKeyGivesItsDefaultBackUnchanged) {
    for (const BenchKey& key : BenchKeys()) {
        BenchSettings settings;
        const std::string text = GetBenchValue(settings, key);
        std::string error;
        EXPECT_TRUE(SetBenchValue(settings, key, text, error)) << key.name << ": " << error;
        EXPECT_EQ(GetBenchValue(settings, key), text) << key.name;
    }
}

TEST(BenchIniText, SettingAKeyKeepsCommentsAndOtherLines) {
    BenchIniText ini(
        "; my bench\n[input]\n  dBm = -10   ; not a comment\nwavelength=1310\n\n"
        "[faults]\nnoOlt1 = 1\n");
    ini.Set("input", "dBm", "-3");
    ini.Set("input", "enabled", "0");
    ini.Set("loopback", "lossDb", "6");
    EXPECT_EQ(ini.Text(),
              "; my bench\n[input]\ndBm = -3\nwavelength=1310\nenabled = 0\n\n[faults]\n"
              "noOlt1 = 1\n\n[loopback]\nlossDb = 6\n");
    EXPECT_TRUE(ini.Remove("faults", "noOlt1"));
    EXPECT_FALSE(ini.Remove("faults", "noOlt1"));
    EXPECT_EQ(ini.Text().find("noOlt1"), std::string::npos);
}

TEST(BenchIniText, TheLastOfARepeatedKeyIsTheOneChanged) {
    BenchIniText ini("[input]\ndBm = 1\ndBm = 2\n");
    ini.Set("input", "dBm", "3");
    EXPECT_EQ(ini.Text(), "[input]\ndBm = 1\ndBm = 3\n");
    ASSERT_EQ(ini.Entries().size(), 2u);
    EXPECT_EQ(ini.Entries()[1].value, "3");
}

TEST(ParseBench, BadLinesAreReportedWithTheirNumberAndTheRestStillApplies) {
    const BenchLoad load = ParseBench(
        "orphan = 1\n[input]\ndBm = -42.25\nwavelength = blue\nwhat\n[nosuch]\nx = 1\n"
        "[peers]\nPhone = 127.0.0.1:6500\nLaptop = nohost\n[faults]\ninitOtdrFailures = 1\n");
    EXPECT_DOUBLE_EQ(load.settings.input.dBm, -42.25);
    EXPECT_EQ(load.settings.input.wavelength, 1550);
    EXPECT_EQ(load.settings.faults.initOtdrFailures, 1);
    ASSERT_EQ(load.settings.peers.size(), 1u);
    EXPECT_EQ(load.settings.peers[0].first, "Phone");
    EXPECT_EQ(load.settings.peers[0].second, "127.0.0.1:6500");
    const std::vector<std::string> expected = {
        "line 1: key outside any [section]: orphan",
        "line 5: not a key = value line: what",
        "line 4: input.wavelength: 'blue' is not a whole number",
        "line 7: unknown key nosuch.x",
        "line 10: peer address 'nohost' is not host:port (port 1 .. 65535)",
    };
    EXPECT_EQ(load.problems, expected);
}

TEST(ParseBench, AnEmptyOrBinaryFileGivesTheDefaults) {
    const BenchSettings defaults;
    EXPECT_DOUBLE_EQ(ParseBench("").settings.input.dBm, defaults.input.dBm);
    const char binary[] =
        "\x7f"
        "ELF\0\x01[\n=\n";
    const BenchLoad garbage = ParseBench(std::string(binary, sizeof binary - 1));
    EXPECT_DOUBLE_EQ(garbage.settings.input.dBm, defaults.input.dBm);
    EXPECT_FALSE(garbage.problems.empty());
}

TEST(Bench, AChangedFileIsReadAtTheNextAccess) {
    simtest::TempBench file("[input]\ndBm = -10\n");
    EXPECT_DOUBLE_EQ(Bench::Instance().Settings()->input.dBm, -10.0);
    file.Write("[input]\ndBm = -11\n");  // same size, new file
    EXPECT_DOUBLE_EQ(Bench::Instance().Settings()->input.dBm, -11.0);
    std::ofstream(file.path, std::ios::app) << "wavelength = 1310\n";  // edited in place
    EXPECT_EQ(Bench::Instance().Settings()->input.wavelength, 1310);
}

TEST(Bench, AnUnchangedFileIsNotParsedAgain) {
    simtest::TempBench file("[input]\ndBm = -10\n");
    const auto first = Bench::Instance().Settings();
    EXPECT_EQ(Bench::Instance().Settings(), first);
}

TEST(Bench, AMissingOrUnreadableFileGivesTheDefaults) {
    simtest::TempBench file("[input]\ndBm = -10\n");
    std::filesystem::remove(file.path);
    EXPECT_DOUBLE_EQ(Bench::Instance().Settings()->input.dBm, BenchSettings{}.input.dBm);
    std::filesystem::create_directory(file.path);  // exists, but cannot be read as a file
    testing::internal::CaptureStderr();
    EXPECT_DOUBLE_EQ(Bench::Instance().Settings()->input.dBm, BenchSettings{}.input.dBm);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("bench:"), std::string::npos);
}

TEST(Bench, ProblemsAreReportedOncePerChange) {
    simtest::TempBench file("[input]\ndBm = loud\n");
    testing::internal::CaptureStderr();
    Bench::Instance().Settings();
    Bench::Instance().Settings();
    const std::string reported = testing::internal::GetCapturedStderr();
    EXPECT_NE(reported.find("line 2: input.dBm: 'loud' is not a number"), std::string::npos);
    EXPECT_EQ(reported.find("loud"), reported.rfind("loud"));
}

TEST(Bench, TheDefaultFileIsTheEnvironmentsOrTheOneBesideTheLibraries) {
    ASSERT_EQ(setenv("TAVIX_BENCH", "/somewhere/else.ini", 1), 0);
    EXPECT_EQ(DefaultBenchPath(), "/somewhere/else.ini");
    ASSERT_EQ(unsetenv("TAVIX_BENCH"), 0);
    const std::string path = DefaultBenchPath();
    const std::string name = "/bench.ini";
    ASSERT_GT(path.size(), name.size());
    EXPECT_EQ(path.substr(path.size() - name.size()), name);
    EXPECT_TRUE(
        std::filesystem::exists(std::filesystem::path(path).parent_path() / "tavix_sim_bench.so"));
}

}  // namespace
}  // namespace sim
