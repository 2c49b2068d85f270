// The simulated OTDR module library, loaded and called as the application's
// loader does, writing through a real log file.

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Platform/Library.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"

namespace {

extern "C" {
using DllInitProc = int (*)(const char*, TLogFile*, TLenUnit*);
using InitOTDRProc = int (*)(int, const char*, int);
using ServiceFunctionProc = int (*)(int, void*, void*);
using GenericProc = int (*)();
}

class OtdrModule : public testing::Test {
protected:
    void SetUp() override {
        module = LoadLibraryW(L"tavix_otdr.dll");
        ASSERT_NE(module, nullptr);
        logPath = bench.directory + "/PowerMeter.log";
        log = std::make_unique<TLogFile>(logPath.c_str(), 1, 0);
        ASSERT_TRUE(log->IsOpen());
        init = Resolve<DllInitProc>(L"DllInit");
        initOtdr = Resolve<InitOTDRProc>(L"InitOTDR");
        service = Resolve<ServiceFunctionProc>(L"ServiceFunction");
        ASSERT_TRUE(init && initOtdr && service);
        init(bench.directory.c_str(), log.get(), &lenUnit);
    }
    void TearDown() override {
        init("", nullptr, nullptr);  // the module must not keep this test's log
        FreeLibrary(module);
    }

    template <typename Proc>
    Proc Resolve(const wchar_t* name) {
        return reinterpret_cast<Proc>(GetProcAddressW(module, name));
    }

    // The module's lines: source 'O', without the timestamp.
    std::vector<std::string> ModuleLines() const {
        std::ifstream file(logPath);
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            const size_t at = line.find("  O ");
            if (at != std::string::npos) lines.push_back(line.substr(at + 2));
        }
        return lines;
    }

    int SwitchLaser(std::uint32_t word) { return service(741, &word, nullptr); }

    simtest::TempBench bench;
    HMODULE module = nullptr;
    std::string logPath;
    std::unique_ptr<TLogFile> log;
    TLenUnit lenUnit;
    DllInitProc init = nullptr;
    InitOTDRProc initOtdr = nullptr;
    ServiceFunctionProc service = nullptr;
};

TEST_F(OtdrModule, InitialisationSaysWhichBenchItUses) {
    ASSERT_EQ(ModuleLines().size(), 1u);
    EXPECT_EQ(ModuleLines()[0], "O M\t simulated OTDR module ready, bench: " + bench.path);
}

TEST_F(OtdrModule, InitOtdrAcceptsCode109AndFailsAsOftenAsTheBenchSays) {
    bench.Write("[faults]\ninitOtdrFailures = 2\n[module]\nidDll = TVX-SIM\n");
    EXPECT_EQ(initOtdr(109, "TVX-SIM", 0), 3);
    EXPECT_EQ(initOtdr(109, "TVX-SIM", 0), 3);
    EXPECT_EQ(initOtdr(109, "TVX-SIM", 0), 0);
    EXPECT_EQ(initOtdr(109, "OTHER", 0), 4);
    EXPECT_EQ(initOtdr(110, "TVX-SIM", 0), 2);
    const std::vector<std::string> expected = {
        "O M\t simulated OTDR module ready, bench: " + bench.path,
        "O E\t OTDR board does not answer: attempt 1 (bench fault: 2 failures)",
        "O E\t OTDR board does not answer: attempt 2 (bench fault: 2 failures)",
        "O M\t OTDR board ready: OTDR-SIM TVX-SIM-0001 SIM1PM2",
        "O E\t InitOTDR: ID_DLL not accepted by this board: 'OTHER'",
        "O E\t InitOTDR called with an unknown code: 110",
    };
    EXPECT_EQ(ModuleLines(), expected);
}

TEST_F(OtdrModule, ANewRunCountsInitOtdrFailuresAfresh) {
    bench.Write("[faults]\ninitOtdrFailures = 1\n");
    EXPECT_EQ(initOtdr(109, "", 0), 3);
    EXPECT_EQ(initOtdr(109, "", 0), 0);
    init(bench.directory.c_str(), log.get(), &lenUnit);
    EXPECT_EQ(initOtdr(109, "", 0), 3);
}

TEST_F(OtdrModule, Command715AnswersFourFieldsTheLastTheModelTag) {
    int inOut = 0;
    char* text = nullptr;
    EXPECT_EQ(service(715, &inOut, &text), 1);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "OTDR-SIM+TVX-SIM-0001+1.0.0+SIM1PM2");

    bench.Write("[module]\nmodelTag = X7\nhardwareId = 2\n");
    char* changed = nullptr;
    EXPECT_EQ(service(715, &inOut, &changed), 1);
    EXPECT_STREQ(changed, "OTDR-SIM+2+1.0.0+X7");
    EXPECT_STREQ(text, "OTDR-SIM+TVX-SIM-0001+1.0.0+SIM1PM2") << "an earlier answer stays valid";
}

TEST_F(OtdrModule, Command741SwitchesByIdentifierAndModeBit) {
    struct Case {
        std::uint32_t word;
        int result;
        const char* line;
    };
    const Case cases[] = {
        {0x002, 1, "O M\t laser on: id 2, 1550 nm, continuous"},
        {0x101, 1, "O M\t laser on: id 1, 1310 nm, modulated"},
        {0x000, 1, "O M\t lasers off "},
        {0x009, 0, "O E\t laser command refused: word 0x9: no such laser"},
        {0x403, 0, "O E\t laser command refused: word 0x403: bad bits"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(SwitchLaser(c.word), c.result) << std::hex << c.word;
        EXPECT_EQ(ModuleLines().back(), c.line);
    }
    EXPECT_EQ(service(741, nullptr, nullptr), 0);
}

TEST_F(OtdrModule, TheSwitchedLaserIsWhatTheBenchSees) {
    ASSERT_EQ(SwitchLaser(0x103), 1);
    EXPECT_EQ(sim::Bench::Instance().Lasers().id, 3);
    EXPECT_EQ(sim::Bench::Instance().Lasers().mode, 1);
    ASSERT_EQ(SwitchLaser(0), 1);
    EXPECT_EQ(sim::Bench::Instance().Lasers().id, 0);
}

TEST_F(OtdrModule, Command743ListsTheLasersForTheCallerToFree) {
    int count = 0;
    std::uint16_t(*list)[2] = nullptr;
    EXPECT_EQ(service(743, &count, &list), 1);
    ASSERT_EQ(count, 3);
    ASSERT_NE(list, nullptr);
    const std::uint16_t expected[3][2] = {{1, 1310}, {2, 1550}, {3, 1625}};
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(list[i][0], expected[i][0]);
        EXPECT_EQ(list[i][1], expected[i][1]);
    }
    delete[] list;
}

TEST_F(OtdrModule, UnknownCommandsAreRefusedAndLogged) {
    int value = 0;
    EXPECT_EQ(service(700, &value, nullptr), 0);
    EXPECT_EQ(ModuleLines().back(), "O E\t unknown service function: 700");
}

TEST_F(OtdrModule, EntryPointsTheApplicationNeverCallsAreThereAndRefuse) {
    const wchar_t* const names[] = {
        L"InitOTDREx",      L"MeasFull",       L"MeasStep",           L"MeasStop",
        L"MeasPrepare",     L"MD_AddContext",  L"MD_AddDevice",       L"MD_DeleteContext",
        L"MD_DeleteDevice", L"MD_InitOTDR",    L"MD_MeasFull",        L"MD_MeasStep",
        L"MD_MeasStop",     L"MD_MeasPrepare", L"MD_ServiceFunction", L"GetSorSize",
        L"GetSorData",      L"CreateSorPtr",   L"DestroySorPtr",
    };
    for (const wchar_t* name : names) {
        const auto entry = Resolve<GenericProc>(name);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry(), -1);
        std::string narrow;
        for (const wchar_t* c = name; *c; ++c) narrow += static_cast<char>(*c);
        EXPECT_EQ(ModuleLines().back(),
                  "O E\t entry point not available in the simulated module: " + narrow);
    }
    EXPECT_NE(Resolve<GenericProc>(L"DllInit2"), nullptr);
}

}  // namespace
