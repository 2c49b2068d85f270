#pragma once
// The meter's InGaAs photodiode: photocurrent from the light that reaches it.

#include <vector>

namespace sim {

struct Light {
    double watts = 0.0;  // mean optical power
    int wavelength = 0;  // nm
};

class Photodiode {
public:
    Photodiode(double darkAmps, double responsivityScale);

    // A/W at `wavelength`, interpolated between the data sheet's points;
    // 0 outside the detector's band.
    static double NominalResponsivity(int wavelength);
    double Responsivity(int wavelength) const;
    // Photocurrent without the dark current, amperes.
    double SignalCurrent(const std::vector<Light>& lights) const;
    double DarkCurrent() const { return darkAmps; }

private:
    double darkAmps;
    double scale;
};

}  // namespace sim
