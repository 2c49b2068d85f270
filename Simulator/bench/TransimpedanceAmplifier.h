#pragma once
// The photodiode's transimpedance amplifier. Its feedback is the chain
// R0 - R1 - R2: switch 1 shorts everything after R0, switch 2 shorts R2,
// and switch 0 closes the path through R1 (and R2). With switches 0 and 1
// both open the loop is open and the output sits at the rail.

#include <limits>

namespace sim {

class TransimpedanceAmplifier {
public:
    // Feedback resistors of the fitted board, ohms.
    static constexpr double kR0 = 499.0;
    static constexpr double kR1 = 499.0e3;
    static constexpr double kR2 = 499.0e6;
    static constexpr int kOpenLoop = -1;

    void SetSwitch(int index, bool on);
    bool Switch(int index) const { return switches[index]; }

    // Feedback resistance, ohms; infinity for an open loop.
    double FeedbackOhms() const;
    // 0 (R0+R1+R2), 1 (R0+R1), 2 (R0) or kOpenLoop: which feedback is in circuit.
    int Range() const;
    static double RangeOhms(int range);

private:
    bool switches[3] = {false, false, false};
};

}  // namespace sim
