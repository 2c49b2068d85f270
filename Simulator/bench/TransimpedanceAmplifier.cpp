#include "Simulator/bench/TransimpedanceAmplifier.h"

namespace sim {

void TransimpedanceAmplifier::SetSwitch(int index, bool on) {
    if (index >= 0 && index < 3) switches[index] = on;
}

int TransimpedanceAmplifier::Range() const {
    if (switches[1]) return 2;
    if (!switches[0]) return kOpenLoop;
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
            return std::numeric_limits<double>::infinity();
    }
}

double TransimpedanceAmplifier::FeedbackOhms() const {
    return RangeOhms(Range());
}

}  // namespace sim
