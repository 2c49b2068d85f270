#include "Simulator/bench/PowerMeterFrontEnd.h"

#include "Simulator/bench/Adc.h"

namespace sim {
namespace {
Photodiode Detector(const BenchSettings& settings) {
    return Photodiode(settings.detector.darkPicoAmps * 1e-12, settings.detector.responsivityScale);
}
}  // namespace

void PowerMeterFrontEnd::Reseed(int newSeed) {
    seed = newSeed;
    generator.seed(static_cast<std::uint64_t>(newSeed));
    gauss.reset();
}

std::int32_t PowerMeterFrontEnd::Convert(const BenchSettings& settings,
                                         const std::vector<Light>& lights) {
    if (!enabled) return 0;
    if (settings.noise.seed != seed) Reseed(settings.noise.seed);
    const int range = amplifier.Range();
    if (range == TransimpedanceAmplifier::kOpenLoop)
        return Adc::Convert(TransimpedanceAmplifier::kRailVolts, 0.0, 0.0);

    const Photodiode diode = Detector(settings);
    const double signal = diode.SignalCurrent(lights);
    const double amps =
        signal * (1.0 + settings.noise.relative * gauss(generator)) + diode.DarkCurrent();
    const double noise = settings.noise.adcCounts * gauss(generator);
    return Adc::Convert(amplifier.OutputVolts(amps), settings.adc.offsetCounts[range], noise);
}

}  // namespace sim
