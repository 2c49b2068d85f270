#pragma once
// The simulated model's etc_gui/opm.ini, written from the model so that the
// shipped file and the bench can never disagree. Resources/sim/etc_gui/opm.ini
// is this text (`opm-bench factory`); a test keeps the two equal.

#include <string>
#include <vector>

#include "Simulator/bench/BenchSettings.h"

namespace sim {

struct FactorySet {
    const char* mode;  // "PM1" or "PM2": names its WaveLengths_ table
    std::vector<int> wavelengths;
};

// The two default sets the service menu can restore; PM2 is this model's own.
const FactorySet& FactorySetPM1();
const FactorySet& FactorySetPM2();

std::string FactoryIniText(const BenchSettings& bench);

}  // namespace sim
