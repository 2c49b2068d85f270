// opm-bench: sets up the simulated instrument's optical bench.

#include <iostream>

#include "Simulator/tools/BenchTool.h"

int main(int argc, char** argv) {
    sim::BenchTool tool;
    return tool.Run(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
