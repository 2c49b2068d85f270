#include "Simulator/bench/Photodiode.h"

#include <cmath>
#include <iterator>
#include <numbers>

namespace sim {
namespace {

struct Point {
    int wavelength;
    double ampsPerWatt;
};

// A typical InGaAs PIN detector; the factory wavelengths lie on points of
// the curve so that their calibration is exact.
constexpr Point kCurve[] = {
    {800, 0.15},  {850, 0.25},  {900, 0.40},  {1000, 0.62}, {1100, 0.74},
    {1200, 0.81}, {1300, 0.86}, {1310, 0.87}, {1400, 0.92}, {1490, 0.96},
    {1550, 0.98}, {1600, 1.00}, {1625, 1.01}, {1650, 0.99}, {1700, 0.55},
};

// A fringe of 20 nm with its crest at 1310 nm: 1300 nm lies in a trough.
constexpr double kRippleDepth = 0.04;
constexpr double kRipplePeriodNm = 20.0;
constexpr int kRippleCrestNm = 1310;

}  // namespace

Photodiode::Photodiode(double darkAmps, double responsivityScale)
    : darkAmps(darkAmps), scale(responsivityScale) {}

double Photodiode::NominalResponsivity(int wavelength) {
    if (wavelength < kCurve[0].wavelength || wavelength > std::end(kCurve)[-1].wavelength)
        return 0.0;
    for (size_t i = 1; i < std::size(kCurve); ++i) {
        const Point& low = kCurve[i - 1];
        const Point& high = kCurve[i];
        if (wavelength > high.wavelength) continue;
        const double t = double(wavelength - low.wavelength) / (high.wavelength - low.wavelength);
        return low.ampsPerWatt + t * (high.ampsPerWatt - low.ampsPerWatt);
    }
    return 0.0;
}

double Photodiode::WindowRipple(int wavelength) {
    const double turns = (wavelength - kRippleCrestNm) / kRipplePeriodNm;
    return 1.0 + kRippleDepth * std::cos(2.0 * std::numbers::pi * turns);
}

double Photodiode::UnitResponsivity(int wavelength) {
    return kPortTransmission * WindowRipple(wavelength) * NominalResponsivity(wavelength);
}

double Photodiode::Responsivity(int wavelength) const {
    return scale * UnitResponsivity(wavelength);
}

double Photodiode::SignalCurrent(const std::vector<Light>& lights) const {
    double amps = 0.0;
    for (const Light& light : lights) amps += Responsivity(light.wavelength) * light.watts;
    return amps;
}

}  // namespace sim
