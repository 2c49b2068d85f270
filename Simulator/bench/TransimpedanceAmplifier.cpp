#include "Simulator/bench/TransimpedanceAmplifier.h"

#include <cmath>

namespace sim {
namespace {
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Parallel(double a, double b) {
    if (std::isinf(a)) return b;
    if (std::isinf(b)) return a;
    return a * b / (a + b);
}
}  // namespace

void TransimpedanceAmplifier::SetSwitch(int index, bool on) {
    if (index >= 0 && index < 3) switches[index] = on;
}

int TransimpedanceAmplifier::Range() const {
    if (!switches[0] && !switches[1]) return kOpenLoop;
    if (switches[1]) return 2;
    return switches[2] ? 1 : 0;
}

double TransimpedanceAmplifier::RangeOhms(int range) {
    switch (range) {
        case 0:
            return kR0 + kR1 + kR2;
        case 1:
            return kR0 + kR1;
        case 2:
            return kR0;
        default:
            return kInfinity;
    }
}

double TransimpedanceAmplifier::FeedbackOhms() const {
    const double low = switches[1] ? kR0 : kInfinity;
    const double high = switches[0] ? kR0 + kR1 : kInfinity;
    return Parallel(low, high) + (switches[2] ? 0.0 : kR2);
}

double TransimpedanceAmplifier::OutputVolts(double amps) const {
    const double ohms = FeedbackOhms();
    if (std::isinf(ohms)) return kRailVolts;
    const double volts = amps * ohms;
    if (volts <= kLinearVolts) return volts;
    const double headroom = kRailVolts - kLinearVolts;
    return kLinearVolts + headroom * std::tanh((volts - kLinearVolts) / headroom);
}

}  // namespace sim
