// The meter's calibration file: what the constructor loads, which sections
// override which, and what each operation writes back.

#include <utility>

#include "PowerMeter/MeterTestSupport.h"

namespace metertest {
namespace {

using Edits = std::vector<std::pair<std::string, std::string>>;

std::string Edited(const Edits& edits, const std::string& appended = {}) {
    std::string text = kFactoryFile;
    for (const auto& [from, to] : edits) text = Replace(text, from, to);
    return text + appended;
}

const std::string kModelSections =
    "[FactoryCalibration_T100]\nCalibrFreeCoeff=0.75\nWaveCentralCoeff1=4\nMode=PM1\n\n"
    "[WaveLengths_PM1]\nWavesNum=2\nWaveLength0=1310\nWaveLength1=1490\n\n"
    "[WaveLengths_PM2]\nWavesNum=4\nWaveLength0=850\nWaveLength1=1300\nWaveLength2=1310\n"
    "WaveLength3=1625\n\n";

struct Loaded {
    int waves, waveLength1, active;
    float maxAdc, refPower, calibrFree, up, down, coeff1, zero2, level1;
};

TEST_F(MeterTest, LoadsEachValueFromItsSectionWithPerModelOverrides) {
    const Loaded factory{3, 1550, 1310, 4096, -0.5f, 0.25f, 0.75f, 0.5f, 2, 0, 0};
    const Loaded none{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const auto with = [&factory](auto change) {
        Loaded l = factory;
        change(l);
        return l;
    };
    const struct {
        const char* name;
        std::string text;
        const wchar_t* model;
        Loaded expected;
    } rows[] = {
        {"factory file", kFactoryFile, L"T100", factory},
        {"empty file", "", L"T100", none},
        {"corrupt file", "\x01\xff[WaveLengths\nWavesNum==x\n[Hardware]\nMaxADC\n", L"T100", none},
        {"ten slots", Edited({{"WavesNum=3", "WavesNum=10"}}), L"T100",
         with([](Loaded& l) { l.waves = 10; })},
        {"slots capped at ten", Edited({{"WavesNum=3", "WavesNum=12"}}), L"T100",
         with([](Loaded& l) { l.waves = 10; })},
        {"negative count is every slot", Edited({{"WavesNum=3", "WavesNum=-1"}}), L"T100",
         with([](Loaded& l) { l.waves = 10; })},
        {"no number, no slots", Edited({{"WavesNum=3", "WavesNum=abc"}}), L"T100",
         with([](Loaded& l) { l.waves = l.waveLength1 = l.active = 0, l.coeff1 = 0; })},
        {"active wavelength from the active slot",
         Edited({{"ActiveWaveLength=1310", "ActiveWaveLength=9999"},
                 {"ActiveWaveLengthIndex=0", "ActiveWaveLengthIndex=2"}}),
         L"T100", with([](Loaded& l) { l.active = 850; })},
        {"active slot beyond the table",
         Edited({{"ActiveWaveLengthIndex=0", "ActiveWaveLengthIndex=3"}}), L"T100",
         with([](Loaded& l) { l.active = 0; })},
        {"negative active slot", Edited({{"ActiveWaveLengthIndex=0", "ActiveWaveLengthIndex=-1"}}),
         L"T100", with([](Loaded& l) { l.active = 0; })},
        {"user calibration and state",
         Edited({{"Zero2=0", "Zero2=12.5"}, {"ReferenceLevel1=0", "ReferenceLevel1=-3.25"}}),
         L"T100", with([](Loaded& l) { l.zero2 = 12.5f, l.level1 = -3.25f; })},
        {"no numbers",
         Edited({{"ThreshSwitchUp=0.75", "ThreshSwitchUp=abc"},
                 {"ThreshSwitchDown=0.5", "ThreshSwitchDown"},
                 {"RefPowerCoeff=-0.5", "RefPowerCoeff="}}),
         L"T100", with([](Loaded& l) { l.up = l.down = 0.95f, l.refPower = 0; })},
        {"model section and its table", Edited({}, kModelSections), L"T100", with([](Loaded& l) {
             l.calibrFree = 0.75f, l.coeff1 = 4, l.waves = 2, l.waveLength1 = 1490;
         })},
        {"mode PM2", Edited({}, Replace(kModelSections, "Mode=PM1", "Mode=PM2")), L"T100",
         with([](Loaded& l) {
             l.calibrFree = 0.75f, l.coeff1 = 4, l.waves = 4, l.waveLength1 = 1300, l.active = 850;
         })},
        {"empty mode is PM2", Edited({}, Replace(kModelSections, "Mode=PM1", "Mode=")), L"T100",
         with([](Loaded& l) {
             l.calibrFree = 0.75f, l.coeff1 = 4, l.waves = 4, l.waveLength1 = 1300, l.active = 850;
         })},
        {"mode without a table", Edited({}, Replace(kModelSections, "Mode=PM1", "Mode=PM9")),
         L"T100", with([](Loaded& l) { l.calibrFree = 0.75f, l.coeff1 = 4; })},
        {"another model", Edited({}, kModelSections), L"T200", factory},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Loaded& e = row.expected;
        Make(row.text, row.model);
        EXPECT_EQ(meter->GetWavelengthsNum(), e.waves);
        EXPECT_EQ(meter->GetWaveLength(1), e.waveLength1);
        EXPECT_EQ(meter->GetActiveWaveLength(), e.active);
        EXPECT_EQ(meter->GetMaxADC(), e.maxAdc);
        EXPECT_EQ(meter->GetRefPowerCoeff(), e.refPower);
        EXPECT_EQ(meter->GetCalibrFreeCoeff(), e.calibrFree);
        EXPECT_EQ(meter->GetThreshSwitchUp(), e.up);
        EXPECT_EQ(meter->GetThreshSwitchDown(), e.down);
        EXPECT_EQ(meter->GetWaveCentralCoeff(1), e.coeff1);
        EXPECT_EQ(meter->GetZero(2), e.zero2);
        EXPECT_EQ(meter->GetReferenceLevel(1), e.level1);
        Reset();
    }
}

const std::string kDefaultSets =
    "[FactoryCalibration_T100]\nWaveCentralCoeff0=9\nStale=1\n\n"
    "[FactoryCalibration_xxxxPM1]\nMode=PM1\nWaveCentralCoeff0=0.125\nCalibrFreeCoeff=-2\n\n";

TEST_F(MeterTest, EachFileOperationWritesExactlyItsPartOrNothing) {
    const std::string missing = dir + "/missing.ini";
    const std::string sets = kFactoryFile + kDefaultSets;
    const std::string reloaded = Edited({{"MaxADC=4096", "MaxADC=1"},
                                         {"CalibrFreeCoeff=0.25\n", ""},
                                         {"ThreshSwitchUp=0.75", "ThreshSwitchUp=0.875"},
                                         {"Zero0=0", "Zero0=5"}});
    const struct {
        const char* name;
        std::string text;
        const wchar_t* model;
        std::function<bool(ZuOPMMeter&)> operation;
        bool result;
        std::string after;
    } rows[] = {
        {"user state", kFactoryFile, L"T100",
         [](ZuOPMMeter& m) {
             m.SetActiveWaveLengthIndex(2);
             m.SetWaveLengthShift(7);
             EXPECT_FALSE(m.SetReferenceLevel(10, 1.0f));
             return m.SetReferenceLevel(2, -12.5f) && m.SaveUserState();
         },
         true,
         Edited({{"ActiveWaveLength=1310\nActiveWaveLengthIndex=0\nWaveLengthShift=0",
                  "ActiveWaveLength=850\nActiveWaveLengthIndex=2\nWaveLengthShift=7"},
                 {"ReferenceLevel2=0", "ReferenceLevel2=-12.5"}})},
        {"user state without slots", "[WaveLengths]\nWavesNum=0\n", L"T100",
         [](ZuOPMMeter& m) { return m.SaveUserState(); }, true,
         "[WaveLengths]\nWavesNum=0\n\n[UserCalibration]\nZero0=0\nZero1=0\nZero2=0\n\n"
         "[SoftwareState]\nActiveWaveLength=0\nActiveWaveLengthIndex=0\nWaveLengthShift=0\n\n"},
        {"user state to a missing file", kFactoryFile, L"T100",
         [&](ZuOPMMeter& m) { return m.SaveUserState(missing.c_str()); }, false, kFactoryFile},
        {"coefficient into the model section only", kFactoryFile + "[Other]\n; keep me\nx=1\n",
         L"T100",
         [](ZuOPMMeter& m) {
             m.SetActiveWaveLengthIndex(1);
             return m.WriteWaveCentralCoeff(3.14159265);
         },
         true,
         kFactoryFile +
             "[Other]\n; keep me\nx=1\n\n[FactoryCalibration_T100]\nWaveCentralCoeff1=3.14159\n\n"},
        {"coefficient into a missing file", kFactoryFile, L"T100",
         [&](ZuOPMMeter& m) { return m.WriteWaveCentralCoeff(1.0, missing.c_str()); }, false,
         kFactoryFile},
        {"default set replaces the model section, the fields on reload", sets, L"T100",
         [](ZuOPMMeter& m) {
             const bool reset = m.ResetFactoryCalibrationToDefault(nullptr, 1);
             EXPECT_EQ(m.GetWaveCentralCoeff(0), 9.0f);
             EXPECT_TRUE(m.ReloadFactoryCalibration());
             EXPECT_EQ(m.GetWaveCentralCoeff(0), 0.125f);
             EXPECT_EQ(m.GetCalibrFreeCoeff(), -2.0f);
             EXPECT_EQ(m.GetWavelengthsNum(), 3);  // no WaveLengths_PM1 in this file
             return reset;
         },
         true,
         kFactoryFile + "[FactoryCalibration_T100]\nMode=PM1\nWaveCentralCoeff0=0.125\n"
                        "CalibrFreeCoeff=-2\n\n[FactoryCalibration_xxxxPM1]\nMode=PM1\n"
                        "WaveCentralCoeff0=0.125\nCalibrFreeCoeff=-2\n\n"},
        {"default set onto itself", sets, L"xxxxPM1",
         [](ZuOPMMeter& m) { return m.ResetFactoryCalibrationToDefault(nullptr, 1); }, true, sets},
        {"absent default set", sets, L"T100",
         [](ZuOPMMeter& m) { return m.ResetFactoryCalibrationToDefault(nullptr, 2); }, false, sets},
        {"default set from a missing file", sets, L"T100",
         [&](ZuOPMMeter& m) { return m.ResetFactoryCalibrationToDefault(missing.c_str(), 1); },
         false, sets},
        {"reload rereads the factory calibration only", kFactoryFile, L"T100",
         [&](ZuOPMMeter& m) {
             std::ofstream(file, std::ios::binary) << reloaded;
             const bool done = m.ReloadFactoryCalibration();
             EXPECT_EQ(m.GetThreshSwitchUp(), 0.875f);
             EXPECT_EQ(m.GetCalibrFreeCoeff(), 0.25f);  // absent now: kept
             EXPECT_EQ(m.GetMaxADC(), 4096.0f);
             EXPECT_EQ(m.GetZero(0), 0.0f);
             return done;
         },
         true, reloaded},
        {"reload from a missing file", kFactoryFile, L"T100",
         [&](ZuOPMMeter& m) { return m.ReloadFactoryCalibration(missing.c_str()); }, false,
         kFactoryFile},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Make(row.text, row.model);
        EXPECT_EQ(row.operation(*meter), row.result);
        EXPECT_EQ(ReadText(file), row.after);
        EXPECT_FALSE(std::filesystem::exists(missing));
        Reset();
    }
}

TEST_F(MeterTest, UserStateSurvivesTheNextConstructionAndDestructionSavesIt) {
    Make().SetActiveWaveLengthIndex(2);
    meter->SetWaveLengthShift(7);
    meter->SetReferenceLevel(2, -12.5f);
    meter.reset();
    Make(ReadText(file));
    EXPECT_EQ(meter->GetActiveWaveLengthIndex(), 2);
    EXPECT_EQ(meter->GetActiveWaveLength(), 850);
    EXPECT_EQ(meter->GetWaveLengthShift(), 7);
    EXPECT_EQ(meter->GetReferenceLevel(2), -12.5f);
}

}  // namespace
}  // namespace metertest
