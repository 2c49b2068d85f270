#pragma once
// The device layer on the simulated instrument: an instrument image that the
// image script assembles once per process and that the platform takes as the
// application directory, the shipped hive, and a bench file of each test's own.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "Common/Settings/Logging.h"
#include "Platform/ModulePath.h"
#include "Platform/Registry.h"
#include "Platform/StreamDeviceFaults.h"
#include "Platform/WideText.h"
#include "PowerMeter/ModuleDll.h"
#include "PowerMeter/PowerMeter.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"

namespace devicetest {

inline void WriteFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The image's directory with its trailing '/'. Removed by the process that
// made it, not by a death test's child leaving through exit().
inline const std::string& Image() {
    static const struct Made {
        pid_t owner = getpid();
        std::string dir;
        Made() {
            std::string pattern =
                (std::filesystem::temp_directory_path() / "opm-device-XXXXXX").string();
            if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
            dir = pattern + "/";
            const std::string script = OPM_MAKE_IMAGE " --fresh " OPM_BUILD_DIR " " + dir;
            if (std::system(script.c_str()) != 0) throw std::runtime_error(script + " failed");
            // Beside the simulated module: fakes of a board whose InitOTDR throws.
            std::filesystem::copy(FAKE_OTDR, dir);
        }
        ~Made() {
            if (getpid() == owner) std::filesystem::remove_all(dir);
        }
    } image;
    return image.dir;
}

// A fatal assertion's text from its expression on, whatever its line.
inline std::string FatalPattern(const std::string& expression, const std::string& file) {
    std::string pattern = "(^|\n)";
    for (char c : expression + "\nFile: " + file + "\n") {
        if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) pattern += '\\';
        pattern += c;
    }
    return pattern;
}

class SimulatedDevices : public testing::Test {
protected:
    void SetUp() override {
        platform::OverrideModuleFileName(platform::FromUtf8(Image() + "PowerMeter"));
        platform::LoadHiveFromText(ReadFile(Image() + "registry.reg"));
        platform::DeactivateStreamDevices();
        log = std::make_unique<TLogFile>((bench.directory + "/PowerMeter.log").c_str(), 1, 0);
        SetLogFile(log.get());
        SetLenUnit(&lenUnit);
        Bench("");
    }
    void TearDown() override {
        // The program never unloads its loader; each test starts afresh.
        delete ModuleDll;
        ModuleDll = nullptr;
        SetLogFile(nullptr);
        SetLenUnit(nullptr);
        platform::OverrideModuleFileName(L"");
    }
    // A quiet, instant bench, then the test's own keys (a later key wins).
    void Bench(const std::string& keys) {
        bench.Write(std::string(simtest::TempBench::kFast) +
                    "[noise]\nadcCounts = 0\nrelative = 0\n" + keys);
    }
    // Loads `file` of the image (its simulated module by default) as the process-wide loader.
    bool LoadModule(const std::string& file = "tavix_otdr.dll") {
        delete ModuleDll;
        ModuleDll = new TModuleDll(Image().c_str());
        return ModuleDll->Load(file.c_str(), &lenUnit);
    }

    simtest::TempBench bench;
    std::unique_ptr<TLogFile> log;
    TLenUnit lenUnit;
};

}  // namespace devicetest
