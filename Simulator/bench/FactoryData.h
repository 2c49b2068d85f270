#pragma once
// The factory data of the simulated model, derived from the model itself so
// that the meter's conversion
//   P = 10 lg(n) - 10 lg(R(range)) + WaveCentralCoeff + CalibrFreeCoeff + RefPowerCoeff
// with n = (average - Zero[range]) / MaxADC reads the true power in dBm.
//
// n = S * P[W] * R[ohm] / Vfs * FullScale / MaxADC, and with R in kilo-ohms
// in the file and P[W] = P[mW] / 1000,
//   10 lg(n) - 10 lg(R[kohm]) = P[dBm] + 10 lg(S) - 10 lg(Vfs * MaxADC / FullScale).
// S is the port's transmission times the unit's responsivity (data sheet
// times window ripple), hence RefPowerCoeff = -10 lg(port transmission),
// WaveCentralCoeff = -10 lg(unit responsivity), CalibrFreeCoeff = 10 lg(volts
// at MaxADC); Zero[r] = offset[r] + Idark * R(r) / Vfs * FullScale.
// MaxADC lies below the amplifier's linear limit, below the ADC's full scale.

#include <array>

#include "Simulator/bench/BenchSettings.h"

namespace sim {

struct FactoryData {
    double maxAdc = 0.0;
    std::array<double, 3> resistorKiloOhms{};  // Resistor0..2
    double calibrFreeCoeff = 0.0;
    double refPowerCoeff = 0.0;
    double threshSwitchUp = 0.0;
    double threshSwitchDown = 0.0;
    std::array<double, 3> zeroCounts{};  // dark reading of each range

    // This unit's coefficient, and the product line's from the data sheet alone.
    static double WaveCentralCoeff(int wavelength);
    static double NominalWaveCentralCoeff(int wavelength);
};

// With the detector and ADC of `bench` (the defaults describe the fitted board).
FactoryData DeriveFactoryData(const BenchSettings& bench);

// The input at `wavelength`, dBm, that lifts the noiseless reading of `range`
// by `counts` above its zero: where the ranges switch and where the scale ends.
double InputDbmForCounts(const BenchSettings& bench, int range, double counts, int wavelength);

}  // namespace sim
