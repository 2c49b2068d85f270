#include "Simulator/bench/Adc.h"

#include <cmath>

namespace sim {

std::int32_t Adc::Convert(double volts, double offsetCounts, double noiseCounts) {
    const double counts = volts / kFullScaleVolts * kFullScaleCounts + offsetCounts + noiseCounts;
    if (!(counts < kFullScaleCounts)) return kFullScaleCounts;
    if (counts <= 0.0) return 0;
    return static_cast<std::int32_t>(std::lround(counts));
}

}  // namespace sim
