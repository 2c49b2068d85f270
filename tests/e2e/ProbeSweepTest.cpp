// The meter on the simulated bench, through opm-probe: at every wavelength
// the reading follows the input from -70 to +5 dBm, and switching the gain
// range does not step the reading.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ProbeImage.h"
#include "Support/IniFile.h"

namespace {

using e2e::ProbeImage;
using e2e::ProbeSession;
using e2e::Reading;

constexpr double kTolerance = 0.05;  // dB
constexpr int kSlots = 6;
constexpr int kSettleLimit = 8;

std::string Dbm(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

// What one wavelength's sweep found; checked on the test's own thread.
struct SweepResult {
    int wavelength = 0;
    std::vector<std::string> failures;
    std::vector<int> rangesSeen;
    int switchPairs = 0;

    void Fail(const std::string& text) { failures.push_back(text); }
};

class Sweep {
public:
    Sweep(ProbeImage& image, ProbeSession& probe, SweepResult& result)
        : image(image), probe(probe), result(result) {}

    // Sets the input and returns the first reading of a settled range: the
    // readings before the change, and the one that may straddle it, are dropped.
    std::optional<Reading> Settle(double input) {
        std::string error;
        if (!image.Bench("input.dBm", Dbm(input), &error)) {
            result.Fail(error);
            return std::nullopt;
        }
        probe.Drop();
        if (!probe.Next()) return Lost(input);
        std::optional<Reading> previous = probe.Next();
        for (int i = 0; previous && i < kSettleLimit; ++i) {
            std::optional<Reading> current = probe.Next();
            if (!current) break;
            if (current->range == previous->range) return Check(input, *current);
            previous = current;
        }
        return Lost(input);
    }

private:
    std::optional<Reading> Check(double input, const Reading& reading) {
        if (std::fabs(reading.dBm - input) > kTolerance)
            result.Fail("input " + Dbm(input) + " dBm read " + Dbm(reading.dBm) + " in range " +
                        std::to_string(reading.range));
        result.rangesSeen.push_back(reading.range);
        return reading;
    }
    std::optional<Reading> Lost(double input) {
        result.Fail("no settled reading at " + Dbm(input) + " dBm");
        return std::nullopt;
    }

    ProbeImage& image;
    ProbeSession& probe;
    SweepResult& result;
};

// Range thresholds of the model's factory data, on the normalised value.
struct Thresholds {
    double up = 0.0;
    double down = 0.0;
};

Thresholds ReadThresholds(const ProbeImage& image, const std::string& modelTag) {
    TIniFile ini((image.Dir() + "etc_gui/opm.ini").c_str());
    ini.Load();
    Thresholds thresholds;
    for (const std::string& name :
         {std::string("FactoryCalibration"), "FactoryCalibration_" + modelTag}) {
        if (TIniSection* section = ini.FindSection(name.c_str())) {
            if (section->FindEntry("ThreshSwitchUp"))
                thresholds.up = section->GetDouble("ThreshSwitchUp", 0.0);
            if (section->FindEntry("ThreshSwitchDown"))
                thresholds.down = section->GetDouble("ThreshSwitchDown", 0.0);
        }
    }
    return thresholds;
}

std::string ModelTag(const std::vector<std::string>& header) {
    for (const std::string& line : header) {
        const std::string marker = "# power meter: model ";
        if (line.rfind(marker, 0) == 0)
            return line.substr(marker.size(), line.find(',') - marker.size());
    }
    return {};
}

// Within the hysteresis band of a range switch, the meter holds the lower
// range when the input rises into the band and the upper one when it falls
// into it: the same input is read in both ranges, and the two readings are
// the step a switch makes.
void CheckSwitch(Sweep& sweep, SweepResult& result, double switchUp, double bandWidth,
                 int lowerRange) {
    const double band[] = {switchUp - 0.7 * bandWidth, switchUp - 0.5 * bandWidth,
                           switchUp - 0.3 * bandWidth};
    std::vector<Reading> rising;
    sweep.Settle(switchUp - bandWidth - 2.0);
    for (double input : band)
        if (auto reading = sweep.Settle(input)) rising.push_back(*reading);
    std::vector<Reading> falling;
    sweep.Settle(switchUp + 2.0);
    for (int i = 2; i >= 0; --i)
        if (auto reading = sweep.Settle(band[i])) falling.insert(falling.begin(), *reading);
    if (rising.size() != 3 || falling.size() != 3) return;

    for (int i = 0; i < 3; ++i) {
        if (rising[i].range != lowerRange || falling[i].range != lowerRange + 1) {
            result.Fail("at " + Dbm(band[i]) + " dBm ranges " + std::to_string(rising[i].range) +
                        " rising, " + std::to_string(falling[i].range) + " falling");
            continue;
        }
        ++result.switchPairs;
        const double step = falling[i].dBm - rising[i].dBm;
        if (std::fabs(step) > kTolerance)
            result.Fail("switching range " + std::to_string(lowerRange) + " to " +
                        std::to_string(lowerRange + 1) + " at " + Dbm(band[i]) +
                        " dBm steps the reading by " + Dbm(step) + " dB");
    }
}

void SweepSlot(int slot, SweepResult& result) {
    try {
        ProbeImage image;
        // The slot's wavelength comes from the probe's header; set the source
        // to it before the first reading counts.
        std::unique_ptr<ProbeSession> probe =
            image.Follow({"--wavelength", QString::number(slot), "--settle", "0"});
        if (!probe->Next()) return result.Fail("opm-probe printed nothing");
        for (const std::string& line : probe->Header())
            if (line.rfind("# wavelength ", 0) == 0) result.wavelength = std::stoi(line.substr(13));
        std::string error;
        if (!image.Bench("input.wavelength", std::to_string(result.wavelength), &error))
            return result.Fail(error);

        Sweep sweep(image, *probe, result);
        std::vector<Reading> coarse;
        for (int input = -70; input <= 5; input += 5) {
            std::optional<Reading> reading = sweep.Settle(input);
            if (!reading) return;
            coarse.push_back(*reading);
        }

        const Thresholds thresholds = ReadThresholds(image, ModelTag(probe->Header()));
        const double bandWidth = 10.0 * std::log10(thresholds.up / thresholds.down);
        for (std::size_t i = 1; i < coarse.size(); ++i) {
            if (coarse[i].range != coarse[i - 1].range + 1) continue;
            // Where the rising input reaches the up threshold of the lower range.
            const double input = -70.0 + 5.0 * static_cast<double>(i - 1);
            const double switchUp =
                input + 10.0 * std::log10(thresholds.up / coarse[i - 1].normalized);
            CheckSwitch(sweep, result, switchUp, bandWidth, coarse[i - 1].range);
        }
        if (probe->Stop() != 0) result.Fail("opm-probe did not end cleanly");
    } catch (const std::exception& error) {
        result.Fail(error.what());
    }
}

TEST(ProbeSweepTest, ReadingFollowsTheInputAtEveryWavelengthAcrossTheRangeSwitches) {
    // The six sweeps run side by side, each on an image of its own.
    std::vector<SweepResult> results(kSlots);
    std::vector<std::thread> sweeps;
    for (int slot = 0; slot < kSlots; ++slot)
        sweeps.emplace_back(SweepSlot, slot, std::ref(results[static_cast<std::size_t>(slot)]));
    for (std::thread& sweep : sweeps) sweep.join();

    std::vector<int> wavelengths;
    for (const SweepResult& result : results) {
        SCOPED_TRACE("wavelength " + std::to_string(result.wavelength) + " nm");
        wavelengths.push_back(result.wavelength);
        for (const std::string& failure : result.failures) ADD_FAILURE() << failure;
        for (int range : {0, 1, 2})
            EXPECT_NE(std::count(result.rangesSeen.begin(), result.rangesSeen.end(), range), 0)
                << "range " << range << " never read";
        EXPECT_EQ(result.switchPairs, 6) << "both switches, three inputs each";
    }
    EXPECT_EQ(wavelengths, (std::vector<int>{850, 1300, 1310, 1490, 1550, 1625}));
}

}  // namespace
