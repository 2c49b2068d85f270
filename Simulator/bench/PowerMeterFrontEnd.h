#pragma once
// The power-meter port's electronics as the OLT1 driver sees them:
// photodiode -> transimpedance amplifier -> ADC, with noise from a seeded
// generator so that a run can be repeated exactly.

#include <cstdint>
#include <random>
#include <vector>

#include "Simulator/bench/BenchSettings.h"
#include "Simulator/bench/Photodiode.h"
#include "Simulator/bench/TransimpedanceAmplifier.h"

namespace sim {

class PowerMeterFrontEnd {
public:
    PowerMeterFrontEnd() = default;

    TransimpedanceAmplifier& Amplifier() { return amplifier; }
    const TransimpedanceAmplifier& Amplifier() const { return amplifier; }
    void SetEnabled(bool on) { enabled = on; }
    bool Enabled() const { return enabled; }

    // One conversion of the light at the port. An unpowered front end reads 0.
    std::int32_t Convert(const BenchSettings& settings, const std::vector<Light>& lights);

private:
    void Reseed(int seed);

    TransimpedanceAmplifier amplifier;
    bool enabled = false;
    int seed = -1;
    std::mt19937_64 generator;
    std::normal_distribution<double> gauss{0.0, 1.0};
};

}  // namespace sim
