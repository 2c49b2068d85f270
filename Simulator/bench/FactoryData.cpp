#include "Simulator/bench/FactoryData.h"

#include <cmath>

#include "Simulator/bench/Adc.h"
#include "Simulator/bench/Photodiode.h"
#include "Simulator/bench/TransimpedanceAmplifier.h"

namespace sim {
namespace {
// Switch up near the top of the scale; switch down only when the value would
// sit below 3/4 of the scale of the more sensitive range: 0.8 dB of hysteresis.
constexpr double kThreshSwitchUp = 0.9;
constexpr double kThreshSwitchDown = 0.75;
}  // namespace

double FactoryData::WaveCentralCoeff(int wavelength) {
    return -10.0 * std::log10(Photodiode::NominalResponsivity(wavelength));
}

FactoryData DeriveFactoryData(const BenchSettings& bench) {
    using Tia = TransimpedanceAmplifier;
    FactoryData data;
    data.maxAdc = Adc::kFullScaleCounts;
    data.resistorKiloOhms = {Tia::kR0 / 1e3, Tia::kR1 / 1e3, Tia::kR2 / 1e3};
    data.calibrFreeCoeff = 10.0 * std::log10(Adc::kFullScaleVolts);
    data.refPowerCoeff = 0.0;
    data.threshSwitchUp = kThreshSwitchUp;
    data.threshSwitchDown = kThreshSwitchDown;
    const double darkAmps = bench.detector.darkPicoAmps * 1e-12;
    for (int range = 0; range < 3; ++range)
        data.zeroCounts[range] = bench.adc.offsetCounts[range] + darkAmps * Tia::RangeOhms(range) /
                                                                     Adc::kFullScaleVolts *
                                                                     Adc::kFullScaleCounts;
    return data;
}

}  // namespace sim
