// The meter's calibration file: what the constructor loads, which sections
// override which, and what each operation writes back.

#include "PowerMeter/MeterTestSupport.h"

namespace metertest {
namespace {

std::string Edited(std::initializer_list<std::pair<const char*, const char*>> edits,
                   const std::string& appended = {}) {
    std::string text = kFactoryFile;
    for (const auto& [from, to] : edits) text = Replace(text, from, to);
    return text + appended;
}

const std::string kModel =
    "[FactoryCalibration_T100]\nCalibrFreeCoeff=0.75\nWaveCentralCoeff1=4\nMode=PM1\n\n"
    "[WaveLengths_PM1]\nWavesNum=2\nWaveLength0=1310\nWaveLength1=1490\n\n"
    "[WaveLengths_PM2]\nWavesNum=4\nWaveLength0=850\nWaveLength1=1300\nWaveLength2=1310\n"
    "WaveLength3=1625\n\n";

TEST_F(MeterTest, LoadsEachValueFromItsSectionWithPerModelOverrides) {
    // Slots, WaveLength(1), active wavelength, MaxADC, RefPowerCoeff, CalibrFreeCoeff,
    // ThreshSwitchUp, ThreshSwitchDown, WaveCentralCoeff(1), Zero(2), ReferenceLevel(1).
    using Loaded = std::array<float, 11>;
    const struct {
        const char* name;
        std::string text;
        const wchar_t* model;
        Loaded expected;
    } rows[] = {
        // clang-format off
        {"factory file", kFactoryFile, L"T100", {3, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"empty file", "", L"T100", {}},
        {"corrupt file", "\x01\xff[WaveLengths\nWavesNum==x\n[Hardware]\nMaxADC\n", L"T100", {}},
        {"ten slots", Edited({{"WavesNum=3", "WavesNum=10"}}), L"T100", {10, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"capped at ten", Edited({{"WavesNum=3", "WavesNum=12"}}), L"T100", {10, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"negative: every slot", Edited({{"WavesNum=3", "WavesNum=-1"}}), L"T100", {10, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"no number: no slots", Edited({{"WavesNum=3", "WavesNum=abc"}}), L"T100", {0, 0, 0, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 0, 0, 0}},
        {"active wavelength from the active slot", Edited({{"ActiveWaveLength=1310", "ActiveWaveLength=9999"}, {"Index=0", "Index=2"}}), L"T100", {3, 1550, 850, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"active slot beyond the table", Edited({{"Index=0", "Index=3"}}), L"T100", {3, 1550, 0, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"negative active slot", Edited({{"Index=0", "Index=-1"}}), L"T100", {3, 1550, 0, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        {"user values", Edited({{"Zero2=0", "Zero2=12.5"}, {"ReferenceLevel1=0", "ReferenceLevel1=-3.25"}}), L"T100", {3, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 12.5f, -3.25f}},
        {"no numbers", Edited({{"Up=0.75", "Up=abc"}, {"Down=0.5", "Down"}, {"RefPowerCoeff=-0.5", "RefPowerCoeff="}}), L"T100", {3, 1550, 1310, 4096, 0, 0.25f, 0.95f, 0.95f, 2, 0, 0}},
        {"model section and its table", Edited({}, kModel), L"T100", {2, 1490, 1310, 4096, -0.5f, 0.75f, 0.75f, 0.5f, 4, 0, 0}},
        {"mode PM2", Edited({}, Replace(kModel, "PM1\n\n", "PM2\n\n")), L"T100", {4, 1300, 850, 4096, -0.5f, 0.75f, 0.75f, 0.5f, 4, 0, 0}},
        {"empty mode is PM2", Edited({}, Replace(kModel, "PM1\n\n", "\n\n")), L"T100", {4, 1300, 850, 4096, -0.5f, 0.75f, 0.75f, 0.5f, 4, 0, 0}},
        {"mode without a table", Edited({}, Replace(kModel, "PM1\n\n", "PM9\n\n")), L"T100", {3, 1550, 1310, 4096, -0.5f, 0.75f, 0.75f, 0.5f, 4, 0, 0}},
        {"another model", Edited({}, kModel), L"T200", {3, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ZuOPMMeter& m = Make(row.text, row.model);
        const Loaded loaded{float(m.GetWavelengthsNum()),   float(m.GetWaveLength(1)),
                            float(m.GetActiveWaveLength()), m.GetMaxADC(),
                            m.GetRefPowerCoeff(),           m.GetCalibrFreeCoeff(),
                            m.GetThreshSwitchUp(),          m.GetThreshSwitchDown(),
                            m.GetWaveCentralCoeff(1),       m.GetZero(2),
                            m.GetReferenceLevel(1)};
        EXPECT_EQ(loaded, row.expected);
        Reset();
    }
}

TEST_F(MeterTest, EachFileOperationWritesExactlyItsPartOrNothing) {
    const std::string missing = dir + "/missing.ini";
    const std::string sets = kFactoryFile +
                             "[FactoryCalibration_T100]\nWaveCentralCoeff0=9\nStale=1\n\n"
                             "[FactoryCalibration_xxxxPM1]\nMode=PM1\nWaveCentralCoeff0=0.125\n\n";
    const std::string reloaded = Edited({{"MaxADC=4096", "MaxADC=1"},
                                         {"CalibrFreeCoeff=0.25\n", ""},
                                         {"Up=0.75", "Up=0.875"},
                                         {"Zero0=0", "Zero0=5"}});
    const auto reload = [&](ZuOPMMeter& m) {
        std::ofstream(file, std::ios::binary) << reloaded;
        const bool done = m.ReloadFactoryCalibration();
        // The thresholds change; an absent key, the hardware and the user values stay.
        EXPECT_EQ((std::array{m.GetThreshSwitchUp(), m.GetCalibrFreeCoeff(), m.GetMaxADC(),
                              m.GetZero(0)}),
                  (std::array{0.875f, 0.25f, 4096.0f, 0.0f}));
        return done;
    };
    const auto resetToSet1 = [](ZuOPMMeter& m) {
        const bool done = m.ResetFactoryCalibrationToDefault(nullptr, 1);
        EXPECT_EQ(m.GetWaveCentralCoeff(0), 9.0f);  // until the reload
        EXPECT_TRUE(m.ReloadFactoryCalibration());
        EXPECT_EQ(m.GetWaveCentralCoeff(0), 0.125f);
        return done;
    };
    const auto saveState = [](ZuOPMMeter& m) {
        m.SetActiveWaveLengthIndex(2);
        m.SetWaveLengthShift(7);
        EXPECT_FALSE(m.SetReferenceLevel(10, 1.0f));
        return m.SetReferenceLevel(2, -12.5f) && m.SaveUserState();
    };
    const auto writeCoeff1 = [](ZuOPMMeter& m) {
        m.SetActiveWaveLengthIndex(1);
        return m.WriteWaveCentralCoeff(3.14159265);
    };
    const struct {
        const char* name;
        std::string text;
        const wchar_t* model;
        std::function<bool(ZuOPMMeter&)> operation;
        bool result;
        std::string after;
    } rows[] = {
        // clang-format off
        {"user state", kFactoryFile, L"T100", saveState, true,
         Edited({{"=1310\nActiveWaveLengthIndex=0\nWaveLengthShift=0", "=850\nActiveWaveLengthIndex=2\nWaveLengthShift=7"}, {"ReferenceLevel2=0", "ReferenceLevel2=-12.5"}})},
        {"user state without slots", "[WaveLengths]\nWavesNum=0\n", L"T100", [](ZuOPMMeter& m) { return m.SaveUserState(); }, true,
         "[WaveLengths]\nWavesNum=0\n\n[UserCalibration]\nZero0=0\nZero1=0\nZero2=0\n\n"
         "[SoftwareState]\nActiveWaveLength=0\nActiveWaveLengthIndex=0\nWaveLengthShift=0\n\n"},
        {"user state to a missing file", kFactoryFile, L"T100", [&](ZuOPMMeter& m) { return m.SaveUserState(missing.c_str()); }, false, kFactoryFile},
        {"coefficient into the model section only", kFactoryFile + "[Other]\n; keep\nx=1\n", L"T100", writeCoeff1, true,
         kFactoryFile + "[Other]\n; keep\nx=1\n\n[FactoryCalibration_T100]\nWaveCentralCoeff1=3.14159\n\n"},
        {"coefficient into a missing file", kFactoryFile, L"T100", [&](ZuOPMMeter& m) { return m.WriteWaveCentralCoeff(1, missing.c_str()); }, false, kFactoryFile},
        {"default set over the model section", sets, L"T100", resetToSet1, true,
         kFactoryFile + "[FactoryCalibration_T100]\nMode=PM1\nWaveCentralCoeff0=0.125\n\n[FactoryCalibration_xxxxPM1]\nMode=PM1\nWaveCentralCoeff0=0.125\n\n"},
        {"default set onto itself", sets, L"xxxxPM1", [](ZuOPMMeter& m) { return m.ResetFactoryCalibrationToDefault(nullptr, 1); }, true, sets},
        {"absent default set", sets, L"T100", [](ZuOPMMeter& m) { return m.ResetFactoryCalibrationToDefault(nullptr, 2); }, false, sets},
        {"default set from a missing file", sets, L"T100", [&](ZuOPMMeter& m) { return m.ResetFactoryCalibrationToDefault(missing.c_str(), 1); }, false, sets},
        {"reload", kFactoryFile, L"T100", reload, true, reloaded},
        {"reload from a missing file", kFactoryFile, L"T100", [&](ZuOPMMeter& m) { return m.ReloadFactoryCalibration(missing.c_str()); }, false, kFactoryFile},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.operation(Make(row.text, row.model)), row.result);
        EXPECT_EQ(ReadText(file), row.after);
        EXPECT_FALSE(std::filesystem::exists(missing));
        Reset();
    }
}

TEST_F(MeterTest, DestructionSavesTheUserStateAndTheNextMeterReadsItBack) {
    Make().SetActiveWaveLengthIndex(2);
    meter->SetWaveLengthShift(7);
    meter->SetReferenceLevel(2, -12.5f);
    meter.reset();
    Make(ReadText(file));
    EXPECT_EQ((std::array{meter->GetActiveWaveLengthIndex(), meter->GetActiveWaveLength(),
                          meter->GetWaveLengthShift()}),
              (std::array{2, 850, 7}));
    EXPECT_EQ(meter->GetReferenceLevel(2), -12.5f);
}

}  // namespace
}  // namespace metertest
