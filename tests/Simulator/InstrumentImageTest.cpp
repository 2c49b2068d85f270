// scripts/make-image.sh: a throw-away image holds the simulated instrument,
// and rebuilding an image keeps what the running instrument changed.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Platform/ModulePath.h"
#include "Platform/Registry.h"
#include "Platform/RegistryHive.h"
#include "Platform/WideText.h"
#include "Simulator/bench/BenchFile.h"

namespace {

namespace fs = std::filesystem;

std::string ReadText(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class InstrumentImage : public testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/opm-image-XXXXXX";
        root = mkdtemp(pattern);
        image = root / "image";
    }
    void TearDown() override { fs::remove_all(root); }

    int MakeImage(const std::string& options = {}) {
        // The build directory is the one above bin/, where this test lies.
        const fs::path build =
            fs::path(platform::ApplicationDirectory()).parent_path().parent_path();
        const std::string command = std::string(OPM_SOURCE_DIR "/scripts/make-image.sh ") +
                                    options + " " + build.string() + " " + image.string() + " 2>" +
                                    (root / "errors").string();
        return WEXITSTATUS(std::system(command.c_str()));
    }

    fs::path root;
    fs::path image;
};

TEST_F(InstrumentImage, HoldsTheSimulatedInstrumentAndItsData) {
    ASSERT_EQ(MakeImage(), 0) << ReadText(root / "errors");
    for (const char* file :
         {"tavix_otdr.so", "tavix_sim_bench.so", "tavix_sim_olt.so", "tavix_sim_btd.so",
          "opm-bench", "etc_gui/opm.ini", "registry.reg", "bench.ini"})
        EXPECT_TRUE(fs::exists(image / file)) << file;
    EXPECT_EQ(ReadText(image / "etc_gui/opm.ini"),
              ReadText(OPM_SOURCE_DIR "/Resources/sim/etc_gui/opm.ini"));
    EXPECT_TRUE(sim::ParseBench(ReadText(image / "bench.ini")).problems.empty());
}

TEST_F(InstrumentImage, TheHiveRegistersTheDriversAndTheApplicationsValues) {
    ASSERT_EQ(MakeImage(), 0);
    int rejected = 0;
    platform::RegistryHive hive = platform::RegistryHive::Parse(
        ReadText(image / "registry.reg"), [&](int, const std::string&) { ++rejected; });
    EXPECT_EQ(rejected, 0);
    struct Expected {
        const wchar_t* key;
        const wchar_t* value;
        const wchar_t* text;
    };
    const Expected values[] = {
        {L"HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\OLT1", L"Dll", L"tavix_sim_olt.dll"},
        {L"HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\OLT1", L"Prefix", L"OLT"},
        {L"HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0", L"Dll", L"tavix_sim_btd.dll"},
        {L"HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0", L"Prefix", L"BTD"},
        {L"HKEY_LOCAL_MACHINE\\Software\\Tavix", L"DefaultLanguageDLL", L"english.rcc"},
        {L"HKEY_LOCAL_MACHINE\\Software\\Tavix", L"ID_DLL", L"TVX-SIM"},
        {L"HKEY_LOCAL_MACHINE\\Software\\Tavix", L"UIDistanceUnit", L"0"},
    };
    for (const Expected& e : values) {
        platform::RegistryKeyData* key = hive.FindKey(e.key);
        ASSERT_NE(key, nullptr);
        const platform::RegistryValue* value = platform::RegistryHive::FindValue(*key, e.value);
        ASSERT_NE(value, nullptr) << platform::ToUtf8(e.value);
        EXPECT_EQ(value->text, e.text);
    }
    for (const wchar_t* driver : {L"OLT1", L"BTD0"}) {
        platform::RegistryKeyData* key =
            hive.FindKey(std::wstring(L"HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\") + driver);
        ASSERT_NE(key, nullptr);
        const platform::RegistryValue* index = platform::RegistryHive::FindValue(*key, L"Index");
        ASSERT_NE(index, nullptr);
        EXPECT_EQ(index->number, static_cast<DWORD>(driver[3] - L'0'));
    }
}

TEST_F(InstrumentImage, RebuildingKeepsTheUnitsDataUnlessFresh) {
    ASSERT_EQ(MakeImage(), 0);
    std::ofstream(image / "bench.ini", std::ios::app) << "[input]\ndBm = -3\n";
    std::ofstream(image / "etc_gui/opm.ini", std::ios::app) << "; calibrated\n";
    const std::string bench = ReadText(image / "bench.ini");
    const std::string ini = ReadText(image / "etc_gui/opm.ini");
    ASSERT_EQ(MakeImage(), 0);
    EXPECT_EQ(ReadText(image / "bench.ini"), bench);
    EXPECT_EQ(ReadText(image / "etc_gui/opm.ini"), ini);
    ASSERT_EQ(MakeImage("--fresh"), 0);
    EXPECT_EQ(ReadText(image / "bench.ini"), ReadText(OPM_SOURCE_DIR "/Resources/sim/bench.ini"));
}

TEST_F(InstrumentImage, AMissingBuildSaysWhatToBuild) {
    const std::string command = std::string(OPM_SOURCE_DIR "/scripts/make-image.sh ") +
                                root.string() + " " + image.string() + " 2>" +
                                (root / "errors").string();
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
    EXPECT_NE(ReadText(root / "errors").find("build the target 'simulator' first"),
              std::string::npos);
    EXPECT_FALSE(fs::exists(image));
}

TEST_F(InstrumentImage, StartingAnImageWithoutTheProgramSaysSo) {
    ASSERT_EQ(MakeImage(), 0);
    fs::remove(image / "PowerMeter");
    const std::string command = std::string(OPM_SOURCE_DIR "/scripts/run-simulated.sh ") +
                                image.string() + " 2>" + (root / "errors").string();
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
    EXPECT_NE(ReadText(root / "errors").find("the application executable is not built yet"),
              std::string::npos);
}

}  // namespace
