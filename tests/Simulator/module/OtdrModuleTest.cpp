// The simulated OTDR module library, loaded and called as the application's
// loader does, writing through a real log file: each call's result and the
// line the module writes for it, with source 'O'.

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

#include "Platform/Library.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"

namespace {

extern "C" {
using DllInitProc = int (*)(const char*, TLogFile*, TLenUnit*);
using InitOTDRProc = int (*)(int, const char*, int);
using ServiceFunctionProc = int (*)(int, void*, void*);
}

TEST(OtdrModule, EachCallAnswersAndLogsAsTheBenchSays) {
    simtest::TempBench bench;
    TLogFile log((bench.directory + "/PowerMeter.log").c_str(), 1, 0);
    TLenUnit lenUnit;
    const HMODULE module = LoadLibraryW(L"tavix_otdr.dll");
    ASSERT_TRUE(module && log.IsOpen());
    const auto init = reinterpret_cast<DllInitProc>(GetProcAddressW(module, L"DllInit"));
    const auto initOtdr = reinterpret_cast<InitOTDRProc>(GetProcAddressW(module, L"InitOTDR"));
    const auto service =
        reinterpret_cast<ServiceFunctionProc>(GetProcAddressW(module, L"ServiceFunction"));
    ASSERT_TRUE(init && initOtdr && service);
    // The module's last line, without the timestamp.
    auto lastLine = [&] {
        std::istringstream file(ScratchDirectory::Read(bench.directory + "/PowerMeter.log"));
        std::string last;
        for (std::string line; std::getline(file, line);)
            if (line.find("  O ") != std::string::npos) last = line.substr(line.find("  O ") + 2);
        return last;
    };

    enum Call { kDllInit, kInitOtdr, kLaser, kService };
    struct Step {
        const char* bench;  // written first; nullptr keeps the file
        Call call;
        int argument;  // InitOTDR's code, the laser word, the service number
        const char* id;
        int result;
        std::string line;
    };
    const std::string ready = "O M\t simulated OTDR module ready, bench: " + bench.path;
    const std::string failing = "O E\t OTDR board does not answer: attempt ";
    // clang-format off
    const Step steps[] = {
        {"[faults]\ninitOtdrFailures = 2\n[module]\nidDll = TVX-SIM\n", kDllInit, 0, "", 0, ready},
        {nullptr, kInitOtdr, 109, "TVX-SIM", 3, failing + "1 (bench fault: 2 failures)"},
        {nullptr, kInitOtdr, 109, "TVX-SIM", 3, failing + "2 (bench fault: 2 failures)"},
        {nullptr, kInitOtdr, 109, "TVX-SIM", 0, "O M\t OTDR board ready: OTDR-SIM TVX-SIM-0001 SIM1PM2"},
        {nullptr, kInitOtdr, 109, "OTHER", 4, "O E\t InitOTDR: ID_DLL not accepted by this board: 'OTHER'"},
        {nullptr, kInitOtdr, 110, "TVX-SIM", 2, "O E\t InitOTDR called with an unknown code: 110"},
        // A new run counts the failures afresh.
        {nullptr, kDllInit, 0, "", 0, ready},
        {nullptr, kInitOtdr, 109, "TVX-SIM", 3, failing + "1 (bench fault: 2 failures)"},
        {"", kLaser, 0x002, "", 1, "O M\t laser on: id 2, 1550 nm, continuous"},
        {nullptr, kLaser, 0x101, "", 1, "O M\t laser on: id 1, 1310 nm, modulated"},
        {nullptr, kLaser, 0x000, "", 1, "O M\t lasers off "},
        {nullptr, kLaser, 0x009, "", 0, "O E\t laser command refused: word 0x9: no such laser"},
        {nullptr, kLaser, 0x403, "", 0, "O E\t laser command refused: word 0x403: bad bits"},
        {nullptr, kService, 700, "", 0, "O E\t unknown service function: 700"},
        {"[module]\nmodelTag = X7\n", kService, 715, "", 1, "O M\t identification: OTDR-SIM+TVX-SIM-0001+1.0.0+X7"},
    };
    // clang-format on
    for (const Step& step : steps) {
        if (step.bench) bench.Write(step.bench);
        std::uint32_t word = static_cast<std::uint32_t>(step.argument);
        int size = 0;
        char* text = nullptr;
        const int result = step.call == kDllInit    ? init(bench.directory.c_str(), &log, &lenUnit)
                           : step.call == kInitOtdr ? initOtdr(step.argument, step.id, 0)
                           : step.call == kLaser    ? service(741, &word, nullptr)
                                                    : service(step.argument, &size, &text);
        EXPECT_EQ(result, step.result) << step.line;
        EXPECT_EQ(lastLine(), step.line);
        EXPECT_EQ(text ? step.line.substr(step.line.rfind(' ') + 1) : "", text ? text : "");
    }
    EXPECT_EQ(service(741, nullptr, nullptr), 0) << "no laser word";
    init("", nullptr, nullptr);  // the module must not keep this test's log
    FreeLibrary(module);
}

}  // namespace
