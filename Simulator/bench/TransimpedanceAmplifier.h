#pragma once
// The photodiode's transimpedance amplifier. Two feedback paths end at R2:
// the low path, switch 1 and R0, and the high path, switch 0, a matched R0
// and R1; switch 2 shorts R2. Range 0 (switch 0) is R0+R1+R2, range 1
// (switches 0 and 2) R0+R1, range 2 (switches 1 and 2) R0. Every switch
// changes the feedback of range 2: switch 0 on too puts the high path beside
// the low one, switch 2 off adds R2. With switches 0 and 1 both open the loop
// is open and the output sits at the rail.

#include <limits>

namespace sim {

class TransimpedanceAmplifier {
public:
    // Feedback resistors of the fitted board, ohms. R1 is small enough beside
    // R0 that a meter leaving R0 out of range 1, or switch 0 on in range 2,
    // reads visibly wrong.
    static constexpr double kR0 = 499.0;
    static constexpr double kR1 = 5.49e3;
    static constexpr double kR2 = 20.0e6;
    // The output is linear up to kLinearVolts and bends towards the rail above.
    static constexpr double kLinearVolts = 2.2;
    static constexpr double kRailVolts = 2.5;
    static constexpr int kOpenLoop = -1;

    void SetSwitch(int index, bool on);
    bool Switch(int index) const { return switches[index]; }

    // Feedback resistance, ohms; infinity for an open loop.
    double FeedbackOhms() const;
    // The range whose ADC offset applies: 2 with the low path, else 1 with R2
    // shorted, else 0; kOpenLoop without feedback.
    int Range() const;
    // Feedback of the meter's ranges 0, 1 and 2.
    static double RangeOhms(int range);
    // Output volts for the photocurrent, bent and limited by the output stage.
    double OutputVolts(double amps) const;

private:
    bool switches[3] = {false, false, false};
};

}  // namespace sim
