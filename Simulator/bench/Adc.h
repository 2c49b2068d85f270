#pragma once
// The meter's analogue-to-digital converter: unipolar, 20 bits over 2.5 V.

#include <cstdint>

namespace sim {

class Adc {
public:
    static constexpr double kFullScaleVolts = 2.5;
    static constexpr std::int32_t kFullScaleCounts = 1048575;

    // The amplifier's output plus the range's offset and this conversion's
    // noise, rounded and clipped to 0 .. full scale. Infinite volts (an open
    // loop) read as full scale.
    static std::int32_t Convert(double volts, double offsetCounts, double noiseCounts);
};

}  // namespace sim
