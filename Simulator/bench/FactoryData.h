#pragma once
// The factory data of the simulated model, derived from the model itself so
// that the meter's conversion
//   P = 10 lg(n) - 10 lg(R(range)) + WaveCentralCoeff + CalibrFreeCoeff + RefPowerCoeff
// with n = (average - Zero[range]) / MaxADC reads the true power in dBm.
//
// n = S(lambda) * P[W] * R[ohm] / Vfs, and with R in kilo-ohms in the file,
// R[ohm] = 1000 * R[kohm] and P[W] = P[mW] / 1000, so
//   10 lg(n) - 10 lg(R[kohm]) = P[dBm] + 10 lg(S(lambda)) - 10 lg(Vfs).
// Hence CalibrFreeCoeff = 10 lg(Vfs), WaveCentralCoeff = -10 lg(S(lambda)),
// RefPowerCoeff = 0; Zero[r] = offset[r] + Idark * R(r) / Vfs * MaxADC.

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

    static double WaveCentralCoeff(int wavelength);
};

// With the detector and ADC of `bench` (the defaults describe the fitted board).
FactoryData DeriveFactoryData(const BenchSettings& bench);

}  // namespace sim
