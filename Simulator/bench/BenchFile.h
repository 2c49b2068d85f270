#pragma once
// Reading the bench file into settings. Unknown keys and bad values are
// reported and skipped, so a half-broken file still gives a usable bench.

#include <string>
#include <string_view>
#include <vector>

#include "Simulator/bench/BenchSettings.h"

namespace sim {

struct BenchLoad {
    BenchSettings settings;
    std::vector<std::string> problems;  // "line 7: ..." for each rejected line
};

BenchLoad ParseBench(std::string_view text);

// $TAVIX_BENCH, else bench.ini beside the simulator's libraries (the image).
std::string DefaultBenchPath();

}  // namespace sim
