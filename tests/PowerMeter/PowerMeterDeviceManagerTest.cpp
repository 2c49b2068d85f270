#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <vector>

#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/IUserNotifier.h"
#include "Common/Settings/Logging.h"
#include "FakeModuleFixture.h"
#include "Platform/ModulePath.h"
#include "Platform/Registry.h"
#include "Platform/StreamDeviceFaults.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/PowerMeterDeviceManager.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"

namespace {

using devicetest::AssertionPattern;
using devicetest::ReadFile;
using devicetest::WriteFile;
using Lines = std::vector<std::string>;

class FakeNotifier : public IUserNotifier {
public:
    void ShowMessage(const std::wstring& text) override { messages.push_back(text); }
    std::vector<std::wstring> messages;
};

// Two lasers for model X7 and enough meter data to construct a meter.
constexpr const char* kOpmIni =
    "[WaveLengths]\nWavesNum=2\nWaveLength0=1310\nWaveLength1=1550\n"
    "[Hardware]\nMaxADC=65535\nResistor0=10\nResistor1=100\nResistor2=1000\n"
    "[LightSource_X7]\nLsLasersNum=2\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
    "LsLaserId1=2\nLsLaserWaveLength1=1550\n";

std::string Hive(const std::string& idDll) {
    return "Windows Registry Editor Version 5.00\n\n"
           "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n" +
           (idDll.empty() ? std::string() : "\"ID_DLL\"=\"" + idDll + "\"\n") +
           "\n[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\OLT1]\n"
           "\"Dll\"=\"" FAKE_STREAM_DRIVER "\"\n\"Prefix\"=\"OLT\"\n\"Index\"=\"1\"\n";
}

class DeviceManagerTest : public devicetest::FakeModuleFixture {
protected:
    void SetUp() override {
        log = std::make_unique<TLogFile>((dir / "PowerMeter.log").c_str(), 1, 0);
        SetLogFile(log.get());
        SetLenUnit(&lenUnit);
        platform::OverrideModuleFileName(platform::FromUtf8(dir / "PowerMeter"));
        platform::LoadHiveFromText(Hive("SIM-42"), dir / "registry.reg");
        WriteFile(dir / "etc_gui/opm.ini", kOpmIni);
    }
    void TearDown() override {
        manager.reset();
        SetLogFile(nullptr);
        SetLenUnit(nullptr);
        platform::OverrideModuleFileName(L"");
        FakeModuleFixture::TearDown();
    }

    bool Init() {
        manager = std::make_unique<CPowerMeterDeviceManager>(config, notifier);
        return manager->Init();
    }

    // The application's message lines ('U', level 'M'), text and detail as written.
    Lines UserLines() const {
        Lines lines;
        std::istringstream text(ReadFile(dir / "PowerMeter.log"));
        const std::string marker = "  U M\t ";
        for (std::string line; std::getline(text, line);) {
            const auto at = line.find(marker);
            if (at != std::string::npos) lines.push_back(line.substr(at + marker.size()));
        }
        return lines;
    }

    std::unique_ptr<TLogFile> log;
    TLenUnit lenUnit;
    CAppConfig config{L"Software\\Tavix", 0};
    FakeNotifier notifier;
    std::unique_ptr<CPowerMeterDeviceManager> manager;
};

TEST_F(DeviceManagerTest, BringsUpBoardLightSourceAndMeterInOrder) {
    InstallModule("hardwareId=OTDR+0001+1.0+X7\n");
    ASSERT_TRUE(Init());

    EXPECT_EQ(UserLines(),
              (Lines{"Starting power meter initializations... ", "Loading tavix_otdr.dll... ",
                     "Initializing OTDR device... ", "OTDR initialization sucessfull ",
                     "Initializing light source... ", "Initializing power meter... "}));
    EXPECT_TRUE(manager->IsOtdrReady());
    ASSERT_NE(manager->GetLightSource(), nullptr);
    EXPECT_EQ(manager->GetLightSource()->GetLasersNum(), 2u);
    EXPECT_EQ(manager->GetLightSourceConfig()->GetLaser(1).wavelength, 1550);
    ASSERT_NE(manager->GetPowerMeter(), nullptr);
    EXPECT_EQ(manager->GetPowerMeter()->GetModelTag(), L"X7");
    EXPECT_EQ(manager->GetPowerMeter()->GetWavelengthsNum(), 2);
    EXPECT_STREQ(manager->GetPowerMeter()->GetCalibrationFile(), (dir / "etc_gui/opm.ini").c_str());
    // The model tag is read once for each consumer; ID_DLL reaches the board.
    EXPECT_EQ(ModuleCalls(),
              "DllInit;InitOTDR(109,SIM-42,0);ServiceFunction(715,0);ServiceFunction(715,0);");
    EXPECT_TRUE(notifier.messages.empty());
}

TEST_F(DeviceManagerTest, InitOtdrFailingOnceIsRetriedAtOnceAndLogsThreeLines) {
    InstallModule("initResults=3,0\n");
    ASSERT_TRUE(Init());
    const Lines lines = UserLines();
    ASSERT_GE(lines.size(), 5u);
    EXPECT_EQ(
        Lines(lines.begin() + 2, lines.begin() + 5),
        (Lines{"Initializing OTDR device... ", "Second Attemp of OTDR initialization sucessfull ",
               "OTDR initialization sucessfull "}));
    EXPECT_EQ(ModuleCalls().find("InitOTDR(109,SIM-42,0);InitOTDR(109,SIM-42,0);"), 8u);
    EXPECT_TRUE(manager->IsOtdrReady());
}

TEST_F(DeviceManagerTest, AnAbsentIdDllIsSentAsEmptyText) {
    platform::LoadHiveFromText(Hive(""), dir / "registry.reg");
    InstallModule("");
    ASSERT_TRUE(Init());
    EXPECT_NE(ModuleCalls().find("InitOTDR(109,,0);"), std::string::npos);
}

// The failure table: what each situation leaves behind.
struct FailureRow {
    const char* name;
    const char* moduleScript;  // null: no module library at all
    bool minimalModule;
    bool opmIni;
    bool olt1Fails;
    bool initResult;
    bool lightSource;
    bool powerMeter;
    std::vector<std::wstring> messages;
    Lines lastLines;  // the log's last lines
};

class DeviceManagerFailures : public DeviceManagerTest,
                              public testing::WithParamInterface<FailureRow> {};

TEST_P(DeviceManagerFailures, LeaveTheDocumentedState) {
    const FailureRow& row = GetParam();
    if (row.moduleScript != nullptr)
        InstallModule(row.moduleScript,
                      row.minimalModule ? devicetest::kMinimalFakeModule : devicetest::kFakeModule);
    if (!row.opmIni) std::filesystem::remove(dir / "etc_gui/opm.ini");
    if (row.olt1Fails) platform::InjectStreamDeviceFaults().failNextOpen = ERROR_FILE_NOT_FOUND;

    EXPECT_EQ(Init(), row.initResult);
    EXPECT_EQ(manager->GetLightSource() != nullptr, row.lightSource);
    EXPECT_EQ(manager->GetPowerMeter() != nullptr, row.powerMeter);
    EXPECT_EQ(notifier.messages, row.messages);
    const Lines lines = UserLines();
    ASSERT_GE(lines.size(), row.lastLines.size());
    EXPECT_EQ(Lines(lines.end() - static_cast<long>(row.lastLines.size()), lines.end()),
              row.lastLines);
}

const FailureRow kFailures[] = {
    {"ModuleLibraryMissing",
     nullptr,
     false,
     true,
     false,
     false,
     false,
     false,
     {},
     {"Initializing OTDR device... ", "OTDR initialization failure "}},
    {"ModuleWithoutInitOtdr",
     "",
     true,
     true,
     false,
     false,
     false,
     false,
     {},
     {"Initializing OTDR device... ", "OTDR initialization failure "}},
    {"InitOtdrFailsTwice",
     "initResults=3,5\n",
     false,
     true,
     false,
     false,
     false,
     false,
     {},
     {"Initializing OTDR device... ", "OTDR initialization failure "}},
    {"BoardThrowsAStandardException",
     "initThrows=std\nhardwareId=a+b+c+X7\n",
     false,
     true,
     false,
     true,
     true,
     true,
     {L"board exploded"},
     {"Loading tavix_otdr.dll... ", "Initializing OTDR device... ", "Initializing light source... ",
      "Initializing power meter... "}},
    {"BoardThrowsSomethingElse",
     "initThrows=other\nhardwareId=a+b+c+X7\n",
     false,
     true,
     false,
     true,
     true,
     true,
     {L"No connection with the OTDR!"},
     {"Initializing OTDR device... ", "Initializing light source... ",
      "Initializing power meter... "}},
    {"LightSourceFails",
     "hardwareId=a+b+c+X7\n",
     false,
     false,
     false,
     true,
     false,
     true,
     {},
     {"Initializing light source... ",
      "Can't initialize light source...  Can't open and read config file",
      "Initializing power meter... "}},
    {"Olt1CannotBeOpened",
     "hardwareId=a+b+c+X7\n",
     false,
     true,
     true,
     true,
     true,
     false,
     {},
     {"Initializing power meter... ",
      "Can't initialize power meter... Can't create OLT1 driver file"}},
    {"NeitherLightSourceNorMeter",
     "hardwareId=a+b+c+X7\n",
     false,
     false,
     true,
     true,
     false,
     false,
     {},
     {"Can't initialize light source...  Can't open and read config file",
      "Initializing power meter... ",
      "Can't initialize power meter... Can't create OLT1 driver file"}},
    {"NoLasersOnBoard",
     "hardwareId=a+b+c+Q9\n",
     false,
     true,
     false,
     true,
     true,
     true,
     {},
     {"Initializing light source... ",
      "No light sources on board. Light source functionality will be unavailabile... ",
      "Initializing power meter... "}},
};

INSTANTIATE_TEST_SUITE_P(Table, DeviceManagerFailures, testing::ValuesIn(kFailures),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(DeviceManagerTest, NoOPMLeavesOutThePowerMeter) {
    InstallModule("hardwareId=a+b+c+X7\n");
    WriteFile(dir / "etc_gui/opm.ini", std::string(kOpmIni) + "NoOPM=1\n");
    ASSERT_TRUE(Init());
    EXPECT_EQ(manager->GetPowerMeter(), nullptr);
    EXPECT_NE(manager->GetLightSource(), nullptr);
    EXPECT_EQ(UserLines().back(), "Initializing light source... ");
}

struct HardwareIdCase {
    const char* script;
    const wchar_t* id;
};

class HardwareId : public DeviceManagerTest, public testing::WithParamInterface<HardwareIdCase> {};

TEST_P(HardwareId, IsTheLastOfExactlyFourFields) {
    InstallModule(GetParam().script);
    LoadModule();
    EXPECT_EQ(CPowerMeterDeviceManager::ReadHardwareId(), GetParam().id);
}

INSTANTIATE_TEST_SUITE_P(DeviceManager, HardwareId,
                         testing::Values(HardwareIdCase{"hardwareId=1+2+3+X7\n", L"X7"},
                                         HardwareIdCase{"hardwareId=a+b+c\n", L"0"},
                                         HardwareIdCase{"hardwareId=1+2+3+4+5\n", L"0"},
                                         HardwareIdCase{"hardwareId=+++\n", L""},
                                         HardwareIdCase{"hardwareId=\n", L"0"},
                                         HardwareIdCase{"", L"0"}));

TEST_F(DeviceManagerTest, WithoutServiceFunctionTheModelTagIsZero) {
    InstallModule("", devicetest::kMinimalFakeModule);
    LoadModule();
    EXPECT_EQ(CPowerMeterDeviceManager::ReadHardwareId(), L"0");
}

TEST_F(DeviceManagerTest, ASecondInitReusesTheLoadedModuleAndReplacesTheObjects) {
    InstallModule("hardwareId=a+b+c+X7\n");
    ASSERT_TRUE(manager = std::make_unique<CPowerMeterDeviceManager>(config, notifier));
    ASSERT_TRUE(manager->Init());
    const TModuleDll* loader = ModuleDll;
    const CLightSource* firstSource = manager->GetLightSource();
    ASSERT_TRUE(manager->Init());
    EXPECT_EQ(ModuleDll, loader);
    EXPECT_NE(manager->GetLightSource(), nullptr);
    EXPECT_NE(manager->GetLightSource(), firstSource);
    EXPECT_EQ(ModuleCalls().find("DllInit;"), 0u);
    EXPECT_EQ(ModuleCalls().rfind("DllInit;"), 0u) << "loaded once";
}

// Exposes the steps of Init, to reach the checks that Init itself satisfies.
class StepwiseManager : public CPowerMeterDeviceManager {
public:
    using CPowerMeterDeviceManager::CPowerMeterDeviceManager;
    using CPowerMeterDeviceManager::InitLightSource;
    using CPowerMeterDeviceManager::InitPowerMeter;
    using CPowerMeterDeviceManager::LoadModuleAndInitOtdr;
};

using DeviceManagerDeathTest = DeviceManagerTest;

TEST_F(DeviceManagerDeathTest, LoadingTheModuleWithoutTheUnitObjectIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    InstallModule("");
    SetLenUnit(nullptr);
    EXPECT_EXIT(Init(), testing::ExitedWithCode(1),
                AssertionPattern("lenUnit", "PowerMeterDeviceManager", 58));
}

TEST_F(DeviceManagerDeathTest, LightSourceOrMeterWithoutTheModuleLoaderIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    StepwiseManager steps(config, notifier);
    EXPECT_EXIT(steps.InitLightSource(), testing::ExitedWithCode(1),
                AssertionPattern("ModuleDll", "PowerMeterDeviceManager", 94));
    EXPECT_EXIT(steps.InitPowerMeter(), testing::ExitedWithCode(1),
                AssertionPattern("ModuleDll", "PowerMeterDeviceManager", 116));
}

}  // namespace
