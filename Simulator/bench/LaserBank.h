#pragma once
// The OTDR board's lasers as the module's command 741 drives them: the
// parameter word carries a laser identifier in bits 0..7 and the mode in
// bit 8 (0 continuous, 1 modulated); identifier 0 switches every laser off.
// At most one laser is on.

#include <cstdint>
#include <vector>

#include "Simulator/bench/BenchSettings.h"
#include "Simulator/bench/Photodiode.h"

namespace sim {

class LaserBank {
public:
    enum class Result { Done, UnknownLaser, BadWord };
    struct State {
        int id = 0;  // 0: all off
        int mode = 0;
    };

    // Modulated light is a square wave of this duty cycle; the meter's
    // amplifier is far slower than the tone, so it sees the mean.
    static constexpr double kModulatedDuty = 0.5;

    Result Apply(std::uint32_t word, const BenchSettings& settings);
    State Current() const { return state; }

    // Light leaving the laser port now, for the lasers the bench describes.
    static std::vector<Light> Output(const State& state, const BenchSettings& settings);

private:
    State state;
};

// Light at the meter's port: the external source and, through the patch
// cord, the laser port.
std::vector<Light> LightAtPort(const BenchSettings& settings, const LaserBank::State& lasers);

double DbmToWatts(double dBm);

}  // namespace sim
