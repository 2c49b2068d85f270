#pragma once
// A bench file of its own for each test, in a temporary directory, so that
// no test sees another's bench or the one beside the build; and child
// processes that cannot hang a test.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "Simulator/bench/Bench.h"
#include "Support/ScratchDirectory.h"

namespace simtest {

// Runs a shell command for at most two minutes; its exit code, or -1 (with a
// failure naming what hung) when it had to be stopped.
inline int RunBounded(const std::string& command, const std::string& what) {
    const int status = std::system(("timeout -k 5 120 " + command).c_str());
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (code != 124 && code != 137) return code;
    ADD_FAILURE() << what << " did not finish within 120 s";
    return -1;
}

class TempBench {
public:
    // Reads are instant unless a test asks for the ADC's pace.
    static constexpr const char* kFast = "[adc]\nconversionUs = 0\n";

    explicit TempBench(const std::string& text = kFast) {
        Write(text);
        sim::Bench::Instance().UsePath(path);
        sim::Bench::Instance().ResetRun();
    }
    ~TempBench() { sim::Bench::Instance().UsePath(directory + "/absent.ini"); }
    TempBench(const TempBench&) = delete;
    TempBench& operator=(const TempBench&) = delete;

    // Replaces the file as an editor that saves atomically would.
    void Write(const std::string& text) const {
        std::ofstream(path + ".new") << text;
        std::filesystem::rename(path + ".new", path);
    }

    ScratchDirectory scratch;
    std::string directory = scratch.Root().string();
    std::string path = directory + "/bench.ini";
};

}  // namespace simtest
