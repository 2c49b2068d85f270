// The physical model: photodiode, amplifier switches, ADC, noise, lasers.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "Simulator/bench/Adc.h"
#include "Simulator/bench/LaserBank.h"
#include "Simulator/bench/Photodiode.h"
#include "Simulator/bench/PowerMeterFrontEnd.h"
#include "Simulator/bench/TransimpedanceAmplifier.h"

namespace sim {
namespace {

TEST(Photodiode, ResponsivityFollowsTheDataSheetAndIsZeroOutsideTheBand) {
    struct Case {
        int wavelength;
        double ampsPerWatt;
    };
    const Case cases[] = {{850, 0.25},  {1300, 0.86}, {1310, 0.87},  {1490, 0.96},
                          {1550, 0.98}, {1625, 1.01}, {1305, 0.865}, {875, 0.325},
                          {799, 0.0},   {1701, 0.0},  {800, 0.15},   {1700, 0.55}};
    for (const Case& c : cases)
        EXPECT_NEAR(Photodiode::NominalResponsivity(c.wavelength), c.ampsPerWatt, 1e-12)
            << c.wavelength << " nm";
}

TEST(Photodiode, CurrentAddsEveryLightWithItsOwnResponsivityAndTheScale) {
    const Photodiode diode(20e-12, 0.5);
    const std::vector<Light> lights = {{1e-3, 1550}, {2e-6, 850}};
    EXPECT_DOUBLE_EQ(diode.SignalCurrent(lights), 0.5 * (0.98e-3 + 0.25 * 2e-6));
    EXPECT_DOUBLE_EQ(diode.DarkCurrent(), 20e-12);
    EXPECT_DOUBLE_EQ(diode.SignalCurrent({}), 0.0);
}

TEST(TransimpedanceAmplifier, SwitchesSelectTheFeedbackAsTheRangeTableSays) {
    using Tia = TransimpedanceAmplifier;
    struct Case {
        bool s0, s1, s2;
        int range;
    };
    // The three documented ranges first, then every other combination.
    const Case cases[] = {
        {true, false, false, 0},
        {true, false, true, 1},
        {false, true, true, 2},
        {false, true, false, 2},
        {true, true, false, 2},
        {true, true, true, 2},
        {false, false, false, Tia::kOpenLoop},
        {false, false, true, Tia::kOpenLoop},
    };
    for (const Case& c : cases) {
        Tia tia;
        tia.SetSwitch(0, c.s0);
        tia.SetSwitch(1, c.s1);
        tia.SetSwitch(2, c.s2);
        EXPECT_EQ(tia.Range(), c.range) << c.s0 << c.s1 << c.s2;
        EXPECT_EQ(tia.FeedbackOhms(), Tia::RangeOhms(c.range));
    }
    EXPECT_DOUBLE_EQ(Tia::RangeOhms(0), 499.0 + 499.0e3 + 499.0e6);
    EXPECT_DOUBLE_EQ(Tia::RangeOhms(1), 499.0 + 499.0e3);
    EXPECT_DOUBLE_EQ(Tia::RangeOhms(2), 499.0);
    EXPECT_TRUE(std::isinf(Tia::RangeOhms(Tia::kOpenLoop)));
}

TEST(Adc, RoundsAddsTheOffsetAndClipsAtBothEnds) {
    const double volt = Adc::kFullScaleCounts / Adc::kFullScaleVolts;
    EXPECT_EQ(Adc::Convert(1.0, 0.0, 0.0), std::lround(volt));
    EXPECT_EQ(Adc::Convert(1.0, 1000.0, 0.4), std::lround(volt + 1000.4));
    EXPECT_EQ(Adc::Convert(2.5, 0.0, 0.0), Adc::kFullScaleCounts);
    EXPECT_EQ(Adc::Convert(3.0, 0.0, 0.0), Adc::kFullScaleCounts);
    EXPECT_EQ(Adc::Convert(INFINITY, 0.0, 0.0), Adc::kFullScaleCounts);
    EXPECT_EQ(Adc::Convert(0.0, -50.0, 0.0), 0);
    EXPECT_EQ(Adc::Convert(0.0, 10.0, -20.0), 0);
}

BenchSettings Quiet() {
    BenchSettings bench;
    bench.noise.adcCounts = 0.0;
    bench.noise.relative = 0.0;
    return bench;
}

PowerMeterFrontEnd InRange(int range) {
    static const bool kSwitches[3][3] = {
        {true, false, false}, {true, false, true}, {false, true, true}};
    PowerMeterFrontEnd frontEnd;
    for (int i = 0; i < 3; ++i) frontEnd.Amplifier().SetSwitch(i, kSwitches[range][i]);
    frontEnd.SetEnabled(true);
    return frontEnd;
}

TEST(PowerMeterFrontEnd, ReadsPhotocurrentTimesFeedbackPlusOffset) {
    const BenchSettings bench = Quiet();
    const std::vector<Light> light = {{1e-6, 1550}};  // -30 dBm
    for (int range = 1; range < 3; ++range) {
        PowerMeterFrontEnd frontEnd = InRange(range);
        const double volts = (0.98e-6 + 20e-12) * TransimpedanceAmplifier::RangeOhms(range);
        const double expected =
            volts / Adc::kFullScaleVolts * Adc::kFullScaleCounts + bench.adc.offsetCounts[range];
        EXPECT_EQ(frontEnd.Convert(bench, light), std::lround(expected)) << "range " << range;
    }
    // Range 0 is far beyond full scale at this power.
    PowerMeterFrontEnd sensitive = InRange(0);
    EXPECT_EQ(sensitive.Convert(bench, light), Adc::kFullScaleCounts);
}

TEST(PowerMeterFrontEnd, UnpoweredReadsZeroAndAnOpenLoopSitsAtTheRail) {
    const BenchSettings bench = Quiet();
    PowerMeterFrontEnd frontEnd = InRange(1);
    frontEnd.SetEnabled(false);
    EXPECT_EQ(frontEnd.Convert(bench, {{1e-6, 1550}}), 0);
    PowerMeterFrontEnd open;
    open.SetEnabled(true);
    EXPECT_EQ(open.Convert(bench, {}), Adc::kFullScaleCounts);
}

struct Statistics {
    double mean = 0.0;
    double deviation = 0.0;
};

Statistics Sample(PowerMeterFrontEnd& frontEnd, const BenchSettings& bench,
                  const std::vector<Light>& lights, int count) {
    double sum = 0.0;
    double squares = 0.0;
    for (int i = 0; i < count; ++i) {
        const double value = frontEnd.Convert(bench, lights);
        sum += value;
        squares += value * value;
    }
    const double mean = sum / count;
    return {mean, std::sqrt(squares / count - mean * mean)};
}

TEST(PowerMeterFrontEnd, AdcNoiseHasTheBenchsSpreadAroundTheDarkReading) {
    BenchSettings bench = Quiet();
    bench.noise.adcCounts = 10.0;
    PowerMeterFrontEnd frontEnd = InRange(2);
    const Statistics dark = Sample(frontEnd, bench, {}, 40000);
    // Standard error of the mean is 0.05 counts; of the deviation about 0.4 %.
    EXPECT_NEAR(dark.mean, bench.adc.offsetCounts[2], 0.3);
    EXPECT_NEAR(dark.deviation, 10.0, 0.3);
}

TEST(PowerMeterFrontEnd, OpticalNoiseIsRelativeToTheSignal) {
    BenchSettings bench = Quiet();
    bench.noise.relative = 0.01;
    PowerMeterFrontEnd frontEnd = InRange(2);
    const std::vector<Light> light = {{1e-3, 1550}};
    const Statistics lit = Sample(frontEnd, bench, light, 40000);
    const double signal = lit.mean - bench.adc.offsetCounts[2];
    EXPECT_NEAR(lit.deviation / signal, 0.01, 0.0003);
}

TEST(PowerMeterFrontEnd, TheSameSeedRepeatsTheRunAndAnotherSeedDoesNot) {
    BenchSettings bench;
    auto run = [&](int seed) {
        bench.noise.seed = seed;
        PowerMeterFrontEnd frontEnd = InRange(1);
        std::vector<std::int32_t> values;
        for (int i = 0; i < 100; ++i) values.push_back(frontEnd.Convert(bench, {{1e-6, 1310}}));
        return values;
    };
    EXPECT_EQ(run(7), run(7));
    EXPECT_NE(run(7), run(8));
}

TEST(LaserBank, CommandWordsSwitchOneLaserOrRefuse) {
    const BenchSettings bench;  // lasers 1, 2, 3
    struct Case {
        std::uint32_t word;
        LaserBank::Result result;
        int id;
        int mode;
    };
    const Case cases[] = {
        {0x001, LaserBank::Result::Done, 1, 0},
        {0x102, LaserBank::Result::Done, 2, 1},
        {0x003, LaserBank::Result::Done, 3, 0},
        {0x000, LaserBank::Result::Done, 0, 0},
        {0x007, LaserBank::Result::UnknownLaser, 2, 1},
        {0x100, LaserBank::Result::BadWord, 2, 1},
        {0x201, LaserBank::Result::BadWord, 2, 1},
        {0x80000001, LaserBank::Result::BadWord, 2, 1},
    };
    LaserBank bank;
    for (const Case& c : cases) {
        // A refused word leaves the laser that was on (here 2, modulated) alone.
        if (c.result != LaserBank::Result::Done) {
            ASSERT_EQ(bank.Apply(0x102, bench), LaserBank::Result::Done);
        }
        EXPECT_EQ(bank.Apply(c.word, bench), c.result) << std::hex << c.word;
        EXPECT_EQ(bank.Current().id, c.id) << std::hex << c.word;
        EXPECT_EQ(bank.Current().mode, c.mode) << std::hex << c.word;
    }
}

double Dbm(const Light& light) {
    return 10.0 * std::log10(light.watts / 1e-3);
}

TEST(LightAtPort, TheLoopbackBringsTheLaserLessTheCordsLossAndModulationHalvesTheMean) {
    BenchSettings bench;
    bench.input.enabled = false;
    bench.loopback.enabled = true;
    bench.loopback.lossDb = 3.0;
    const std::vector<Light> continuous = LightAtPort(bench, {2, 0});
    ASSERT_EQ(continuous.size(), 1u);
    EXPECT_NEAR(Dbm(continuous[0]), -6.0, 1e-9);
    EXPECT_EQ(continuous[0].wavelength, 1550);
    const std::vector<Light> modulated = LightAtPort(bench, {2, 1});
    ASSERT_EQ(modulated.size(), 1u);
    EXPECT_NEAR(modulated[0].watts, continuous[0].watts / 2, 1e-15);

    EXPECT_TRUE(LightAtPort(bench, {0, 0}).empty());
    bench.loopback.enabled = false;
    EXPECT_TRUE(LightAtPort(bench, {2, 0}).empty());
    bench.input.enabled = true;
    const std::vector<Light> input = LightAtPort(bench, {2, 0});
    ASSERT_EQ(input.size(), 1u);
    EXPECT_NEAR(Dbm(input[0]), bench.input.dBm, 1e-9);
    EXPECT_EQ(input[0].wavelength, bench.input.wavelength);
}

}  // namespace
}  // namespace sim
