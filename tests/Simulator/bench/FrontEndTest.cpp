// The physical model's randomness: the noise has the spread the bench asks
// for and repeats with its seed. What the model reads is checked end to end
// (tests/e2e), through the application's meter; the laser words through the
// module (OtdrModuleTest).

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "Simulator/bench/PowerMeterFrontEnd.h"

namespace sim {
namespace {

PowerMeterFrontEnd InRange2() {
    PowerMeterFrontEnd frontEnd;
    frontEnd.Amplifier().SetSwitch(1, true);
    frontEnd.Amplifier().SetSwitch(2, true);
    frontEnd.SetEnabled(true);
    return frontEnd;
}

// 40000 conversions of `watts` at 1550 nm in range 2 with the bench's noise.
// Mean above the offset and standard deviation, counts.
std::pair<double, double> Sample(double adcCounts, double relative, double watts) {
    BenchSettings bench;
    bench.noise = {adcCounts, relative, 1};
    PowerMeterFrontEnd frontEnd = InRange2();
    double sum = 0.0;
    double squares = 0.0;
    const int count = 40000;
    for (int i = 0; i < count; ++i) {
        const double value = frontEnd.Convert(bench, {{watts, 1550}});
        sum += value;
        squares += value * value;
    }
    const double mean = sum / count - bench.adc.offsetCounts[2];
    return {mean, std::sqrt(squares / count - (sum / count) * (sum / count))};
}

TEST(PowerMeterFrontEnd, AdcNoiseIsAbsoluteAroundTheOffsetAndOpticalNoiseRelative) {
    // Standard error of the mean 0.05 counts; of the deviation about 0.4 %.
    const auto [darkMean, darkDeviation] = Sample(10.0, 0.0, 0.0);
    EXPECT_NEAR(darkMean, 0.0, 0.3);
    EXPECT_NEAR(darkDeviation, 10.0, 0.3);
    const auto [litMean, litDeviation] = Sample(0.0, 0.01, 1e-3);
    EXPECT_NEAR(litDeviation / litMean, 0.01, 0.0003);
}

TEST(PowerMeterFrontEnd, TheSameSeedRepeatsTheRunAndAnotherSeedDoesNot) {
    BenchSettings bench;
    auto run = [&](int seed) {
        bench.noise.seed = seed;
        PowerMeterFrontEnd frontEnd = InRange2();
        std::vector<std::int32_t> values;
        for (int i = 0; i < 100; ++i) values.push_back(frontEnd.Convert(bench, {{1e-3, 1310}}));
        return values;
    };
    EXPECT_EQ(run(7), run(7));
    EXPECT_NE(run(7), run(8));
}

}  // namespace
}  // namespace sim
