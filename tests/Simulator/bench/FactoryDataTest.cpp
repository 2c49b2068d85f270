// The factory data fits the model: the meter's conversion, applied to the
// simulated front end, reads the bench's true power.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

#include "Simulator/bench/Adc.h"
#include "Simulator/bench/FactoryData.h"
#include "Simulator/bench/FactoryIni.h"
#include "Simulator/bench/LaserBank.h"
#include "Simulator/bench/PowerMeterFrontEnd.h"

namespace sim {
namespace {

// The instrument's conversion, in the widths the meter uses: float fields,
// a 32-bit sum of 60 capped samples, the logarithms in double.
class ReferenceMeter {
public:
    ReferenceMeter(const FactoryData& data, int wavelength) : data(data), wavelength(wavelength) {
        for (int r = 0; r < 3; ++r) zero[r] = static_cast<float>(data.zeroCounts[r]);
        coefficient = static_cast<float>(FactoryData::WaveCentralCoeff(wavelength));
        frontEnd.SetEnabled(true);
        SetRange(1);
    }

    float Measure(const BenchSettings& bench, const std::vector<Light>& lights) {
        lastNormalized = Normalized(Averaged(bench, lights));
        const double power = 10.0 * std::log10(double(lastNormalized)) -
                             10.0 * std::log10(double(RangeOhms(range))) + double(coefficient) +
                             double(float(data.calibrFreeCoeff)) +
                             double(float(data.refPowerCoeff));
        UpdateRange();
        return static_cast<float>(power);
    }

    void Zero(const BenchSettings& bench) {
        for (int r = 0; r < 3; ++r) {
            SetRange(r);
            zero[r] = Averaged(bench, {});
        }
    }

    // The coefficient that makes the last measurement read `reference`.
    void Calibrate(double reference) {
        coefficient = static_cast<float>(reference - 10.0 * std::log10(double(lastNormalized)) +
                                         10.0 * std::log10(double(RangeOhms(range))) -
                                         double(float(data.refPowerCoeff)) -
                                         double(float(data.calibrFreeCoeff)));
    }

    int Range() const { return range; }

private:
    float RangeOhms(int r) const {
        const float r0 = float(data.resistorKiloOhms[0]);
        const float r1 = float(data.resistorKiloOhms[1]);
        const float r2 = float(data.resistorKiloOhms[2]);
        return r == 0 ? r2 + r1 + r0 : r == 1 ? r1 + r0 : r0;
    }
    float Averaged(const BenchSettings& bench, const std::vector<Light>& lights) {
        const std::int32_t cap = static_cast<std::int32_t>(float(data.maxAdc));
        std::int32_t sum = 0;
        for (int i = 0; i < 60; ++i) {
            const std::int32_t raw = frontEnd.Convert(bench, lights);
            sum += raw < cap ? raw : cap;
        }
        return float(sum) / 60.0f;
    }
    float Normalized(float average) const {
        const float x = (average - zero[range]) / float(data.maxAdc);
        return x < 0 ? 1e-7f : x;
    }
    void SetRange(int r) {
        static const bool kSwitches[3][3] = {
            {true, false, false}, {true, false, true}, {false, true, true}};
        for (int i = 0; i < 3; ++i) frontEnd.Amplifier().SetSwitch(i, kSwitches[r][i]);
        range = r;
    }
    void UpdateRange() {
        if (range < 2 && lastNormalized > float(data.threshSwitchUp)) return SetRange(range + 1);
        if (range < 1) return;
        const float down = (float(data.threshSwitchDown) / RangeOhms(range - 1)) * RangeOhms(range);
        if (lastNormalized < down) SetRange(range - 1);
    }

    FactoryData data;
    int wavelength;
    PowerMeterFrontEnd frontEnd;
    float zero[3] = {};
    float coefficient = 0;
    float lastNormalized = 0;
    int range = 1;
};

std::vector<Light> Input(double dBm, int wavelength) {
    return {{DbmToWatts(dBm), wavelength}};
}

constexpr double kTolerance = 0.05;

TEST(FactoryData, TheMeterReadsTrueFromMinus70ToPlus5AtEveryWavelengthThroughRangeSwitches) {
    const BenchSettings bench;
    const FactoryData data = DeriveFactoryData(bench);
    for (int wavelength : FactorySetPM2().wavelengths) {
        ReferenceMeter meter(data, wavelength);
        // Up and down in small steps: every reading, the ones just before a
        // range switch included, is true; so no switch makes a step.
        std::vector<double> levels;
        for (double p = -70.0; p <= 5.0 + 1e-9; p += 0.25) levels.push_back(p);
        for (double p = 5.0; p >= -70.0 - 1e-9; p -= 0.25) levels.push_back(p);
        bool settled = false;
        int switches = 0;
        for (double level : levels) {
            for (int measurement = 0; measurement < 3; ++measurement) {
                const int range = meter.Range();
                const float reading = meter.Measure(bench, Input(level, wavelength));
                if (settled) {
                    ASSERT_NEAR(reading, level, kTolerance)
                        << wavelength << " nm, range " << range << ", measurement " << measurement;
                }
                switches += meter.Range() != range;
                settled = settled || meter.Range() == range;
            }
        }
        EXPECT_GE(switches, 4) << wavelength << " nm: both switches, both ways";
    }
}

TEST(FactoryData, ZeroingInTheDarkCorrectsAnOffsetThatDrifted) {
    BenchSettings bench;
    bench.adc.offsetCounts[0] += 5000;  // the factory zero no longer fits range 0
    ReferenceMeter meter(DeriveFactoryData(BenchSettings{}), 1310);
    auto settle = [&](double level) {
        float reading = 0;
        for (int i = 0; i < 4; ++i) reading = meter.Measure(bench, Input(level, 1310));
        return reading;
    };
    EXPECT_GT(std::fabs(settle(-70.0) - -70.0), 0.5);
    meter.Zero(bench);
    for (double level : {-70.0, -60.0, -45.0, -20.0, 0.0})
        EXPECT_NEAR(settle(level), level, kTolerance);
}

TEST(FactoryData, CalibratingToAReferenceCorrectsAnAgedDetectorAtEveryPower) {
    BenchSettings bench;
    bench.detector.responsivityScale = 0.8;  // about 1 dB less light reaches the meter
    ReferenceMeter meter(DeriveFactoryData(BenchSettings{}), 1550);
    auto settle = [&](double level) {
        float reading = 0;
        for (int i = 0; i < 4; ++i) reading = meter.Measure(bench, Input(level, 1550));
        return reading;
    };
    EXPECT_NEAR(settle(-10.0), -10.0 + 10.0 * std::log10(0.8), kTolerance);
    meter.Calibrate(-10.0);
    for (double level : {-65.0, -40.0, -10.0, 3.0}) EXPECT_NEAR(settle(level), level, kTolerance);
}

TEST(FactoryData, TheLoopedBackLaserReadsItsPowerLessTheCord) {
    BenchSettings bench;
    bench.input.enabled = false;
    bench.loopback.enabled = true;
    bench.loopback.lossDb = 3.0;
    ReferenceMeter meter(DeriveFactoryData(bench), 1310);
    float reading = 0;
    for (int i = 0; i < 4; ++i) reading = meter.Measure(bench, LightAtPort(bench, {1, 0}));
    EXPECT_NEAR(reading, bench.lasers[0].dBm - 3.0, kTolerance);
}

TEST(FactoryIni, TheShippedFileIsTheOneTheModelWrites) {
    std::ifstream file(OPM_SOURCE_DIR "/Resources/sim/etc_gui/opm.ini");
    ASSERT_TRUE(file) << "Resources/sim/etc_gui/opm.ini";
    std::ostringstream text;
    text << file.rdbuf();
    EXPECT_EQ(text.str(), FactoryIniText(BenchSettings{}))
        << "regenerate it with: opm-bench factory > Resources/sim/etc_gui/opm.ini";
}

TEST(FactoryIni, EveryLineFitsTheIniReadersLineBuffer) {
    std::istringstream text(FactoryIniText(BenchSettings{}));
    for (std::string line; std::getline(text, line);) EXPECT_LT(line.size(), 255u) << line;
}

}  // namespace
}  // namespace sim
