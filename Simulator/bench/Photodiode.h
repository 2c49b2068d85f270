#pragma once
// The meter's InGaAs photodiode behind the port: photocurrent from the light
// that reaches it.

#include <vector>

namespace sim {

struct Light {
    double watts = 0.0;  // mean optical power
    int wavelength = 0;  // nm
};

class Photodiode {
public:
    // The port's connector and the detector's window pass this share of the
    // light at every wavelength.
    static constexpr double kPortTransmission = 0.9;

    Photodiode(double darkAmps, double responsivityScale);

    // A/W at `wavelength` as the data sheet gives it, interpolated between its
    // points; 0 outside the detector's band.
    static double NominalResponsivity(int wavelength);
    // This unit's window ripples with wavelength (a thin-film fringe), so two
    // close wavelengths such as 1300 and 1310 nm differ by far more than the
    // data sheet's curve says. Mean 1.
    static double WindowRipple(int wavelength);
    // A/W from the light at the port, of the fitted unit.
    static double UnitResponsivity(int wavelength);
    double Responsivity(int wavelength) const;
    // Photocurrent without the dark current, amperes.
    double SignalCurrent(const std::vector<Light>& lights) const;
    double DarkCurrent() const { return darkAmps; }

private:
    double darkAmps;
    double scale;
};

}  // namespace sim
