#include "Simulator/bench/LaserBank.h"

#include <cmath>

namespace sim {
namespace {
constexpr std::uint32_t kIdMask = 0xFF;
constexpr std::uint32_t kModeBit = 0x100;
}  // namespace

double DbmToWatts(double dBm) {
    return 1e-3 * std::pow(10.0, dBm / 10.0);
}

LaserBank::Result LaserBank::Apply(std::uint32_t word, const BenchSettings& settings) {
    if (word & ~(kIdMask | kModeBit)) return Result::BadWord;
    const int id = static_cast<int>(word & kIdMask);
    if (id == 0) {
        if (word != 0) return Result::BadWord;
        state = {};
        return Result::Done;
    }
    for (const LaserSettings& laser : settings.lasers)
        if (laser.id == id) {
            state = {id, (word & kModeBit) ? 1 : 0};
            return Result::Done;
        }
    return Result::UnknownLaser;
}

std::vector<Light> LaserBank::Output(const State& state, const BenchSettings& settings) {
    std::vector<Light> lights;
    if (state.id == 0) return lights;
    for (const LaserSettings& laser : settings.lasers)
        if (laser.id == state.id) {
            const double duty = state.mode == 1 ? kModulatedDuty : 1.0;
            lights.push_back({DbmToWatts(laser.dBm) * duty, laser.wavelength});
            break;
        }
    return lights;
}

std::vector<Light> LightAtPort(const BenchSettings& settings, const LaserBank::State& lasers) {
    std::vector<Light> lights;
    if (settings.input.enabled)
        lights.push_back({DbmToWatts(settings.input.dBm), settings.input.wavelength});
    if (settings.loopback.enabled) {
        const double transmission = std::pow(10.0, -settings.loopback.lossDb / 10.0);
        for (Light light : LaserBank::Output(lasers, settings)) {
            light.watts *= transmission;
            lights.push_back(light);
        }
    }
    return lights;
}

}  // namespace sim
