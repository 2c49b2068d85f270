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
// The top of the calibrated scale, with a margin below the amplifier's linear limit.
constexpr double kMaxAdc = 900000.0;

double CountsPerVolt() {
    return Adc::kFullScaleCounts / Adc::kFullScaleVolts;
}
}  // namespace

double FactoryData::WaveCentralCoeff(int wavelength) {
    return -10.0 * std::log10(Photodiode::WindowRipple(wavelength) *
                              Photodiode::NominalResponsivity(wavelength));
}

double FactoryData::NominalWaveCentralCoeff(int wavelength) {
    return -10.0 * std::log10(Photodiode::NominalResponsivity(wavelength));
}

FactoryData DeriveFactoryData(const BenchSettings& bench) {
    using Tia = TransimpedanceAmplifier;
    FactoryData data;
    data.maxAdc = kMaxAdc;
    data.resistorKiloOhms = {Tia::kR0 / 1e3, Tia::kR1 / 1e3, Tia::kR2 / 1e3};
    data.calibrFreeCoeff = 10.0 * std::log10(kMaxAdc / CountsPerVolt());
    data.refPowerCoeff = -10.0 * std::log10(Photodiode::kPortTransmission);
    data.threshSwitchUp = kThreshSwitchUp;
    data.threshSwitchDown = kThreshSwitchDown;
    const double darkAmps = bench.detector.darkPicoAmps * 1e-12;
    for (int range = 0; range < 3; ++range)
        data.zeroCounts[range] =
            bench.adc.offsetCounts[range] + darkAmps * Tia::RangeOhms(range) * CountsPerVolt();
    return data;
}

double InputDbmForCounts(const BenchSettings& bench, int range, double counts, int wavelength) {
    const double amps = counts / CountsPerVolt() / TransimpedanceAmplifier::RangeOhms(range);
    const Photodiode diode(0.0, bench.detector.responsivityScale);
    return 10.0 * std::log10(amps / diode.Responsivity(wavelength) / 1e-3);
}

}  // namespace sim
