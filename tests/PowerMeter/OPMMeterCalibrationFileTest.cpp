// The meter's calibration file: what the constructor loads, which sections
// override which, and what each operation writes back.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "PowerMeter/MeterFixture.h"
#include "PowerMeter/OPMMeter.h"

namespace meter_test {
namespace {

using MeterFileTest = MeterFixture;

std::string Replace(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST_F(MeterFileTest, LoadsHardwareWavelengthsCoefficientsZerosAndState) {
    WriteText(file, Replace(Replace(kFactoryFile, "Zero2=0", "Zero2=12.5"), "ReferenceLevel1=0",
                            "ReferenceLevel1=-3.25"));
    MakeMeter();
    EXPECT_EQ(meter->GetWavelengthsNum(), 3);
    EXPECT_EQ(meter->GetWaveLength(1), 1550);
    EXPECT_EQ(meter->GetMaxADC(), 4096.0f);
    EXPECT_EQ(meter->GetRangeResistance(0), 16384.0f);
    EXPECT_EQ(meter->GetRangeResistance(1), 4096.0f);
    EXPECT_EQ(meter->GetRangeResistance(2), 1024.0f);
    EXPECT_EQ(meter->GetRangeResistance(3), 0.0f);
    EXPECT_EQ(meter->GetRefPowerCoeff(), -0.5f);
    EXPECT_EQ(meter->GetCalibrFreeCoeff(), 0.25f);
    EXPECT_EQ(meter->GetThreshSwitchUp(), 0.75f);
    EXPECT_EQ(meter->GetThreshSwitchDown(), 0.5f);
    EXPECT_EQ(meter->GetWaveCentralCoeff(2), -1.0f);
    EXPECT_EQ(meter->GetZero(2), 12.5f);
    EXPECT_EQ(meter->GetReferenceLevel(1), -3.25f);
}

TEST_F(MeterFileTest, AMissingFileGivesEveryDefault) {
    std::filesystem::remove(file);
    MakeMeter();
    EXPECT_EQ(meter->GetWavelengthsNum(), 0);
    EXPECT_EQ(meter->GetMaxADC(), 0.0f);
    EXPECT_EQ(meter->GetThreshSwitchUp(), 0.0f);
    EXPECT_EQ(meter->GetActiveWaveLengthIndex(), 0);
    // The stored default 1550 gives way to slot 0 of an empty, zeroed table.
    EXPECT_EQ(meter->GetActiveWaveLength(), 0);
}

TEST_F(MeterFileTest, CorruptFileReadsAsDefaults) {
    WriteText(file, std::string("\x01\xff[WaveLengths\nWavesNum==x\n[Hardware]\nMaxADC\n", 44));
    MakeMeter();
    EXPECT_EQ(meter->GetWavelengthsNum(), 0);
    EXPECT_EQ(meter->GetMaxADC(), 0.0f);
}

TEST_F(MeterFileTest, WavesNumIsCappedAtTheTenSlotsAsAnUnsignedNumber) {
    const struct {
        const char* value;
        int slotCount;
    } cases[] = {{"3", 3}, {"10", 10}, {"12", 10}, {"-1", 10}, {"0", 0}, {"abc", 0}};
    for (const auto& waves : cases) {
        SCOPED_TRACE(waves.value);
        WriteText(file,
                  Replace(kFactoryFile, "WavesNum=3", std::string("WavesNum=") + waves.value));
        MakeMeter();
        EXPECT_EQ(meter->GetWavelengthsNum(), waves.slotCount);
        Reset();
    }
}

TEST_F(MeterFileTest, ActiveWavelengthComesFromTheActiveSlotNotFromTheFile) {
    const struct {
        const char* index;
        int wavelength;
    } cases[] = {{"1", 1550}, {"2", 850}, {"5", 0}, {"10", 0}, {"-1", 0}};
    for (const auto& active : cases) {
        SCOPED_TRACE(active.index);
        WriteText(file,
                  Replace(Replace(kFactoryFile, "ActiveWaveLength=1310", "ActiveWaveLength=9999"),
                          "ActiveWaveLengthIndex=0",
                          std::string("ActiveWaveLengthIndex=") + active.index));
        MakeMeter();
        EXPECT_EQ(meter->GetActiveWaveLength(), active.wavelength);
        Reset();
    }
}

TEST_F(MeterFileTest, SlotsOutsideTheTenReadAsZero) {
    MakeMeter();
    meter->SetActiveWaveLengthIndex(2);
    EXPECT_EQ(meter->GetActiveWaveLength(), 850);
    meter->SetActiveWaveLengthIndex(10);
    EXPECT_EQ(meter->GetActiveWaveLengthIndex(), 10);
    EXPECT_EQ(meter->GetActiveWaveLength(), 0);
    EXPECT_EQ(meter->GetWaveLength(-1), 0);
    EXPECT_EQ(meter->GetReferenceLevel(10), 0.0f);
    EXPECT_FALSE(meter->SetReferenceLevel(10, 1.0f));
    EXPECT_EQ(meter->GetWaveCentralCoeff(11), 0.0f);
}

const char* const kModelSections =
    "[FactoryCalibration_T100]\n"
    "CalibrFreeCoeff=0.75\n"
    "WaveCentralCoeff1=4\n"
    "Mode=%s\n"
    "\n"
    "[WaveLengths_PM1]\n"
    "WavesNum=2\n"
    "WaveLength0=1310\n"
    "WaveLength1=1490\n"
    "\n"
    "[WaveLengths_PM2]\n"
    "WavesNum=4\n"
    "WaveLength0=850\n"
    "WaveLength1=1300\n"
    "WaveLength2=1310\n"
    "WaveLength3=1625\n";

std::string WithModelSections(const std::string& mode) {
    std::string sections = kModelSections;
    return std::string(kFactoryFile) + Replace(sections, "%s", mode);
}

TEST_F(MeterFileTest, PerModelSectionOverridesOnlyTheKeysItNames) {
    WriteText(file, WithModelSections("PM1"));
    MakeMeter();
    EXPECT_EQ(meter->GetCalibrFreeCoeff(), 0.75f);
    EXPECT_EQ(meter->GetRefPowerCoeff(), -0.5f);
    EXPECT_EQ(meter->GetWaveCentralCoeff(0), 1.5f);
    EXPECT_EQ(meter->GetWaveCentralCoeff(1), 4.0f);
    EXPECT_EQ(meter->GetWavelengthsNum(), 2);
    EXPECT_EQ(meter->GetWaveLength(1), 1490);
}

TEST_F(MeterFileTest, ModeSelectsTheWavelengthTable) {
    const struct {
        const char* mode;
        int slotCount;
        int wavelength1;
    } cases[] = {{"PM1", 2, 1490}, {"PM2", 4, 1300}, {"", 4, 1300}, {"PM9", 3, 1550}};
    for (const auto& mode : cases) {
        SCOPED_TRACE(mode.mode);
        WriteText(file, WithModelSections(mode.mode));
        MakeMeter();
        EXPECT_EQ(meter->GetWavelengthsNum(), mode.slotCount);
        EXPECT_EQ(meter->GetWaveLength(1), mode.wavelength1);
        Reset();
    }
}

TEST_F(MeterFileTest, AnotherModelUsesTheCommonSectionAlone) {
    WriteText(file, WithModelSections("PM1"));
    MakeMeter(L"T200");
    EXPECT_EQ(meter->GetCalibrFreeCoeff(), 0.25f);
    EXPECT_EQ(meter->GetWaveCentralCoeff(1), 2.0f);
    EXPECT_EQ(meter->GetWavelengthsNum(), 3);
}

TEST_F(MeterFileTest, ValuesThatAreNoNumbersTakeTheConversionDefault) {
    std::string text = Replace(kFactoryFile, "ThreshSwitchUp=0.75", "ThreshSwitchUp=abc");
    text = Replace(text, "ThreshSwitchDown=0.5", "ThreshSwitchDown");
    text = Replace(text, "RefPowerCoeff=-0.5", "RefPowerCoeff=");
    WriteText(file, text);
    MakeMeter();
    EXPECT_EQ(meter->GetThreshSwitchUp(), 0.95f);
    EXPECT_EQ(meter->GetThreshSwitchDown(), 0.95f);
    EXPECT_EQ(meter->GetRefPowerCoeff(), 0.0f);
}

TEST_F(MeterFileTest, UserStateSurvivesASaveAndTheNextConstruction) {
    MakeMeter();
    meter->SetActiveWaveLengthIndex(2);
    meter->SetWaveLengthShift(7);
    EXPECT_TRUE(meter->SetReferenceLevel(2, -12.5f));
    EXPECT_TRUE(meter->SaveUserState());
    Reset();
    MakeMeter();
    EXPECT_EQ(meter->GetActiveWaveLengthIndex(), 2);
    EXPECT_EQ(meter->GetActiveWaveLength(), 850);
    EXPECT_EQ(meter->GetWaveLengthShift(), 7);
    EXPECT_EQ(meter->GetReferenceLevel(2), -12.5f);
    const std::string saved = ReadText(file);
    EXPECT_NE(saved.find("ActiveWaveLength=850\nActiveWaveLengthIndex=2\nWaveLengthShift=7\n"),
              std::string::npos);
}

TEST_F(MeterFileTest, DestructionSavesTheUserState) {
    MakeMeter();
    meter->SetActiveWaveLengthIndex(1);
    meter.reset();
    EXPECT_NE(ReadText(file).find("ActiveWaveLengthIndex=1\n"), std::string::npos);
}

TEST_F(MeterFileTest, SavingToAMissingFileFailsAndCreatesNothing) {
    MakeMeter();
    const std::string missing = dir.File("missing.ini");
    EXPECT_FALSE(meter->SaveUserState(missing.c_str()));
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(MeterFileTest, WithoutSlotsNoReferenceLevelIsWritten) {
    WriteText(file, "[WaveLengths]\nWavesNum=0\n");
    MakeMeter();
    EXPECT_TRUE(meter->SaveUserState());
    EXPECT_EQ(
        ReadText(file),
        "[WaveLengths]\nWavesNum=0\n\n"
        "[UserCalibration]\nZero0=0\nZero1=0\nZero2=0\n\n"
        "[SoftwareState]\nActiveWaveLength=0\nActiveWaveLengthIndex=0\nWaveLengthShift=0\n\n");
}

TEST_F(MeterFileTest, CoefficientIsWrittenToThePerModelSectionOnly) {
    const std::string original = std::string(kFactoryFile) + "[Other]\n; keep me\nx=1\n";
    WriteText(file, original);
    MakeMeter();
    meter->SetActiveWaveLengthIndex(1);
    EXPECT_TRUE(meter->WriteWaveCentralCoeff(3.14159265));
    EXPECT_EQ(ReadText(file), std::string(kFactoryFile) +
                                  "[Other]\n; keep me\nx=1\n\n"
                                  "[FactoryCalibration_T100]\nWaveCentralCoeff1=3.14159\n\n");
}

const char* const kDefaultSets =
    "[FactoryCalibration_T100]\n"
    "WaveCentralCoeff0=9\n"
    "Stale=1\n"
    "\n"
    "[FactoryCalibration_xxxxPM1]\n"
    "Mode=PM1\n"
    "WaveCentralCoeff0=0.125\n"
    "CalibrFreeCoeff=-2\n"
    "\n";

TEST_F(MeterFileTest, ResetToADefaultSetReplacesThePerModelSectionButNotTheFields) {
    WriteText(file, std::string(kFactoryFile) + kDefaultSets);
    MakeMeter();
    ASSERT_EQ(meter->GetWaveCentralCoeff(0), 9.0f);
    EXPECT_TRUE(meter->ResetFactoryCalibrationToDefault(nullptr, 1));
    const std::string saved = ReadText(file);
    EXPECT_NE(saved.find("[FactoryCalibration_T100]\nMode=PM1\nWaveCentralCoeff0=0.125\n"
                         "CalibrFreeCoeff=-2\n\n"),
              std::string::npos);
    EXPECT_EQ(saved.find("Stale"), std::string::npos);
    EXPECT_EQ(meter->GetWaveCentralCoeff(0), 9.0f);

    EXPECT_TRUE(meter->ReloadFactoryCalibration());
    EXPECT_EQ(meter->GetWaveCentralCoeff(0), 0.125f);
    EXPECT_EQ(meter->GetCalibrFreeCoeff(), -2.0f);
}

TEST_F(MeterFileTest, ResetToAnAbsentSetFailsAndLeavesTheFileAlone) {
    const std::string original = std::string(kFactoryFile) + kDefaultSets;
    WriteText(file, original);
    MakeMeter();
    EXPECT_FALSE(meter->ResetFactoryCalibrationToDefault(nullptr, 2));
    EXPECT_EQ(ReadText(file), original);
    EXPECT_FALSE(meter->ResetFactoryCalibrationToDefault(dir.File("none.ini").c_str(), 1));
}

TEST_F(MeterFileTest, ResetOntoItselfKeepsTheSet) {
    WriteText(file, std::string(kFactoryFile) + kDefaultSets);
    MakeMeter(L"xxxxPM1");
    EXPECT_TRUE(meter->ResetFactoryCalibrationToDefault(nullptr, 1));
    EXPECT_NE(ReadText(file).find("[FactoryCalibration_xxxxPM1]\nMode=PM1\n"
                                  "WaveCentralCoeff0=0.125\nCalibrFreeCoeff=-2\n"),
              std::string::npos);
}

TEST_F(MeterFileTest, ReloadRereadsOnlyTheFactoryCalibration) {
    MakeMeter();
    std::string changed = Replace(kFactoryFile, "MaxADC=4096", "MaxADC=1");
    changed = Replace(changed, "Zero0=0", "Zero0=5");
    changed = Replace(changed, "ThreshSwitchUp=0.75", "ThreshSwitchUp=0.875");
    changed = Replace(changed, "CalibrFreeCoeff=0.25\n", "");
    WriteText(file, changed);
    EXPECT_TRUE(meter->ReloadFactoryCalibration());
    EXPECT_EQ(meter->GetThreshSwitchUp(), 0.875f);
    EXPECT_EQ(meter->GetCalibrFreeCoeff(), 0.25f);  // absent now: kept
    EXPECT_EQ(meter->GetMaxADC(), 4096.0f);
    EXPECT_EQ(meter->GetZero(0), 0.0f);
    EXPECT_FALSE(meter->ReloadFactoryCalibration(dir.File("none.ini").c_str()));
}

}  // namespace
}  // namespace meter_test
