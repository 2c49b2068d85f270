#include "Simulator/bench/FactoryIni.h"

#include <cstdio>

#include "Simulator/bench/FactoryData.h"

namespace sim {
namespace {

std::string Format(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Line(const std::string& key, const std::string& value) {
    return key + "=" + value + "\n";
}

std::string Indexed(const char* key, size_t index) {
    return key + std::to_string(index);
}

std::string WaveLengthTable(const FactorySet& set) {
    std::string text = Line("WavesNum", std::to_string(set.wavelengths.size()));
    for (size_t i = 0; i < set.wavelengths.size(); ++i)
        text += Line(Indexed("WaveLength", i), std::to_string(set.wavelengths[i]));
    return text;
}

// The product line's coefficients, from the data sheet, which every unit reads first.
std::string CommonSet(const FactoryData& data, const FactorySet& set) {
    std::string text = Line("RefPowerCoeff", Format("%.6f", 0.0));
    text += Line("CalibrFreeCoeff", Format("%.6f", data.calibrFreeCoeff));
    text += Line("ThreshSwitchUp", Format("%g", data.threshSwitchUp));
    text += Line("ThreshSwitchDown", Format("%g", data.threshSwitchDown));
    for (size_t i = 0; i < set.wavelengths.size(); ++i)
        text += Line(Indexed("WaveCentralCoeff", i),
                     Format("%.6f", FactoryData::NominalWaveCentralCoeff(set.wavelengths[i])));
    return text;
}

// What the factory measured on this unit; it overrides the product line's values.
std::string UnitSet(const FactoryData& data, const FactorySet& set) {
    std::string text = Line("Mode", set.mode);
    text += Line("RefPowerCoeff", Format("%.6f", data.refPowerCoeff));
    for (size_t i = 0; i < set.wavelengths.size(); ++i)
        text += Line(Indexed("WaveCentralCoeff", i),
                     Format("%.6f", FactoryData::WaveCentralCoeff(set.wavelengths[i])));
    return text;
}

}  // namespace

const FactorySet& FactorySetPM1() {
    static const FactorySet set{"PM1", {850, 1300, 1310, 1550}};
    return set;
}

const FactorySet& FactorySetPM2() {
    static const FactorySet set{"PM2", {850, 1300, 1310, 1490, 1550, 1625}};
    return set;
}

std::string FactoryIniText(const BenchSettings& bench) {
    const FactoryData data = DeriveFactoryData(bench);
    const FactorySet& own = FactorySetPM2();
    const std::string& tag = bench.module.modelTag;
    std::string text;
    text += "; Factory data of the simulated model " + tag + " (written by opm-bench factory).\n";
    text += "; n = S(lambda) * P * R / Vmax, R in kOhm, Vmax the volts at MaxADC:\n";
    text += "; CalibrFreeCoeff = 10 lg(Vmax), WaveCentralCoeff = -10 lg(S(lambda) in A/W),\n";
    text += "; RefPowerCoeff = the port's loss; the common section has the data sheet's S,\n";
    text += "; the model's section this unit's. Zero = ADC offset + dark current * R.\n";
    text += "\n[WaveLengths]\n" + WaveLengthTable(own);
    text += "\n[Hardware]\n" + Line("MaxADC", Format("%.0f", data.maxAdc));
    for (size_t i = 0; i < data.resistorKiloOhms.size(); ++i)
        text += Line(Indexed("Resistor", i), Format("%g", data.resistorKiloOhms[i]));
    text += "\n[FactoryCalibration]\n" + CommonSet(data, own);
    text += "\n[FactoryCalibration_" + tag + "]\n" + UnitSet(data, own);
    for (const FactorySet* set : {&FactorySetPM1(), &FactorySetPM2()}) {
        text += "\n[FactoryCalibration_xxxx" + std::string(set->mode) + "]\n" + UnitSet(data, *set);
        text += "\n[WaveLengths_" + std::string(set->mode) + "]\n" + WaveLengthTable(*set);
    }
    text += "\n[UserCalibration]\n";
    for (size_t i = 0; i < data.zeroCounts.size(); ++i)
        text += Line(Indexed("Zero", i), Format("%.3f", data.zeroCounts[i]));
    text += "\n[SoftwareState]\n";
    const size_t active = own.wavelengths.size() - 2;  // 1550 nm
    text += Line("ActiveWaveLength", std::to_string(own.wavelengths[active]));
    text += Line("ActiveWaveLengthIndex", std::to_string(active));
    text += Line("WaveLengthShift", "0");
    for (size_t i = 0; i < own.wavelengths.size(); ++i)
        text += Line(Indexed("ReferenceLevel", i), "0");

    int lasers = 0;
    for (const LaserSettings& laser : bench.lasers) lasers += laser.id != 0 ? 1 : 0;
    text += "\n[LightSource]\n" + Line("LsLasersNum", std::to_string(lasers));
    size_t index = 0;
    for (const LaserSettings& laser : bench.lasers) {
        if (laser.id == 0) continue;
        text += Line(Indexed("LsLaserId", index), std::to_string(laser.id));
        text += Line(Indexed("LsLaserWaveLength", index), std::to_string(laser.wavelength));
        ++index;
    }
    text += "\n[LightSource_" + tag + "]\n" + Line("NoOPM", "0") + Line("NoVFL", "1");
    return text;
}

}  // namespace sim
