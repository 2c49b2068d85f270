#pragma once
// A bench file of its own for each test, in a temporary directory, so that
// no test sees another's bench or the one beside the build.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Simulator/bench/Bench.h"

namespace simtest {

class TempBench {
public:
    // Reads are instant unless a test asks for the ADC's pace.
    static constexpr const char* kFast = "[adc]\nconversionUs = 0\n";

    explicit TempBench(const std::string& text = kFast) {
        char pattern[] = "/tmp/opm-sim-XXXXXX";
        directory = mkdtemp(pattern);
        path = directory + "/bench.ini";
        Write(text);
        sim::Bench::Instance().UsePath(path);
        sim::Bench::Instance().ResetRun();
    }
    ~TempBench() {
        sim::Bench::Instance().UsePath(directory + "/absent.ini");
        std::filesystem::remove_all(directory);
    }
    TempBench(const TempBench&) = delete;
    TempBench& operator=(const TempBench&) = delete;

    // Replaces the file as an editor that saves atomically would.
    void Write(const std::string& text) const {
        const std::string next = path + ".new";
        std::ofstream(next) << text;
        std::filesystem::rename(next, path);
    }
    std::string Read() const {
        std::ifstream file(path);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    std::string directory;
    std::string path;
};

}  // namespace simtest
