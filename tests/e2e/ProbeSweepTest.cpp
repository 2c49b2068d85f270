// The meter on the simulated bench, through opm-probe: at every wavelength
// the reading follows the input from -70 to +5 dBm in all three gain ranges,
// the same input reads the same on either side of a range switch, and an
// input beyond the scale reads the top of the scale. The factory data makes
// every term of the conversion matter here (Simulator/README.md).

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ProbeImage.h"
#include "Simulator/bench/FactoryData.h"

namespace {

using e2e::Reading;

constexpr double kTolerance = 0.05;  // dB
constexpr double kOverRange = 20.0;  // dBm, beyond the scale at every wavelength
constexpr int kSettleLimit = 8;
constexpr std::array<int, 6> kWavelengths = {850, 1300, 1310, 1490, 1550, 1625};

std::string Dbm(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

struct Step {
    double input;
    double expected;
    int range;  // -1: any
};

// Up from -70 dBm through both range switches to beyond the scale, then down
// into the middle of each switch's hysteresis band, where the meter holds the
// upper range: so each band input is read in the ranges on either side.
std::vector<std::string> SweepSlot(int slot) {
    const int wavelength = kWavelengths[static_cast<std::size_t>(slot)];
    std::vector<std::string> failures;
    try {
        const sim::BenchSettings bench;
        const sim::FactoryData data = sim::DeriveFactoryData(bench);
        const double middle = std::sqrt(data.threshSwitchUp * data.threshSwitchDown);
        std::vector<Step> plan;
        for (double input : {-70.0, -60.0, -50.0, -40.0, -30.0, -20.0, -10.0, 0.0, 5.0})
            plan.push_back({input, input, -1});
        double band[2];
        for (int range : {0, 1}) {
            band[range] = sim::InputDbmForCounts(bench, range, middle * data.maxAdc, wavelength);
            plan.push_back({band[range], band[range], range});
        }
        std::sort(plan.begin(), plan.end(),
                  [](const Step& a, const Step& b) { return a.input < b.input; });
        const double top =
            sim::InputDbmForCounts(bench, 2, data.maxAdc - data.zeroCounts[2], wavelength);
        plan.insert(plan.end(),
                    {{kOverRange, top, 2}, {band[1], band[1], 2}, {band[0], band[0], 1}});

        e2e::ProbeImage image;
        std::unique_ptr<e2e::Probe> probe =
            image.Start({"--follow", "--wavelength", QString::number(slot), "--settle", "0"});
        double rising[2] = {NAN, NAN};
        for (const Step& step : plan) {
            image.WriteBench("[input]\ndBm = " + Dbm(step.input) +
                             "\nwavelength = " + std::to_string(wavelength) + "\n");
            probe->Drop();
            // Two readings in a row in one range that agree: the meter holds
            // that range, and the later cannot straddle the change.
            std::optional<Reading> steady;
            int tries = 0;
            for (std::optional<Reading> previous = probe->Next(), current;
                 previous && !steady && ++tries < kSettleLimit; previous = current) {
                current = probe->Next();
                if (current && current->range == previous->range &&
                    std::fabs(current->dBm - previous->dBm) <= kTolerance)
                    steady = current;
            }
            const std::string at = Dbm(step.input) + " dBm";
            // Each later step would wait as long again for the same answer.
            if (!steady) {
                failures.push_back("no steady reading at " + at + "; the sweep ends here");
                break;
            }
            if (std::fabs(steady->dBm - step.expected) > kTolerance ||
                (step.range >= 0 && steady->range != step.range))
                failures.push_back(
                    "input " + at + " read " + Dbm(steady->dBm) + " in range " +
                    std::to_string(steady->range) + ", expected " + Dbm(step.expected) +
                    (step.range < 0 ? "" : " in range " + std::to_string(step.range)));
            for (int range : {0, 1}) {
                if (step.input != band[range]) continue;
                if (std::isnan(rising[range]))
                    rising[range] = steady->dBm;
                else if (std::fabs(steady->dBm - rising[range]) > kTolerance)
                    failures.push_back("switching range " + std::to_string(range) + " to " +
                                       std::to_string(range + 1) + " at " + at +
                                       " steps the reading by " + Dbm(steady->dBm - rising[range]));
            }
        }
        if (probe->Stop() != 0)
            failures.push_back("opm-probe did not end cleanly: " + probe->errors);
    } catch (const std::exception& error) {
        failures.push_back(error.what());
    }
    return failures;
}

TEST(ProbeSweepTest, ReadingFollowsTheInputAtEveryWavelengthAcrossTheRangeSwitches) {
    // The six sweeps run side by side, each on an image of its own.
    std::vector<std::vector<std::string>> failures(kWavelengths.size());
    std::vector<std::thread> sweeps;
    for (std::size_t slot = 0; slot < kWavelengths.size(); ++slot)
        sweeps.emplace_back(
            [&failures, slot] { failures[slot] = SweepSlot(static_cast<int>(slot)); });
    for (std::thread& sweep : sweeps) sweep.join();
    for (std::size_t slot = 0; slot < kWavelengths.size(); ++slot)
        for (const std::string& failure : failures[slot])
            ADD_FAILURE() << kWavelengths[slot] << " nm: " << failure;
}

}  // namespace
