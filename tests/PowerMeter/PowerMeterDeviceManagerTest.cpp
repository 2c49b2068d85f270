// Start-up of the instrument's hardware on the simulated instrument: the
// device manager's failure table, the model tag, the module loader, the light
// source's laser word and the Bluetooth probe.

#include <sstream>
#include <vector>

#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/IUserNotifier.h"
#include "PowerMeter/DeviceTestSupport.h"
#include "PowerMeter/PowerMeterDeviceManager.h"
#include "Simulator/bench/Bench.h"

namespace devicetest {
namespace {

using Lines = std::vector<std::string>;

class RecordingNotifier : public IUserNotifier {
public:
    void ShowMessage(const std::wstring& text) override { messages.push_back(text); }
    std::vector<std::wstring> messages;
};

// Three lasers of the bench for model X7, and enough meter data for a meter.
const std::string kOpmIni =
    "[WaveLengths]\nWavesNum=2\nWaveLength0=1310\nWaveLength1=1550\n"
    "[Hardware]\nMaxADC=65535\nResistor0=10\nResistor1=100\nResistor2=1000\n"
    "[LightSource_X7]\nLsLasersNum=3\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
    "LsLaserId1=2\nLsLaserWaveLength1=1550\nLsLaserId2=3\nLsLaserWaveLength2=1625\n";
const std::string kLasers =
    "[laser1]\nid = 1\n[laser2]\nid = 2\n[laser3]\nid = 3\n[module]\nmodelTag = X7\n";

class DeviceManagerTest : public SimulatedDevices {
protected:
    void SetUp() override {
        SimulatedDevices::SetUp();
        Bench(kLasers);
        WriteFile(Image() + "etc_gui/opm.ini", kOpmIni);
    }
    void TearDown() override {
        manager.reset();
        SimulatedDevices::TearDown();
    }
    bool Init() {
        manager = std::make_unique<CPowerMeterDeviceManager>(config, notifier);
        return manager->Init();
    }
    // The application's message lines ('U', level 'M'), text and detail as written.
    Lines UserLines() const {
        Lines lines;
        std::istringstream text(ReadFile(bench.directory + "/PowerMeter.log"));
        for (std::string line; std::getline(text, line);)
            if (const auto at = line.find("  U M\t "); at != std::string::npos)
                lines.push_back(line.substr(at + 7));
        return lines;
    }

    CAppConfig config{L"Software\\Tavix", 0};
    RecordingNotifier notifier;
    std::unique_ptr<CPowerMeterDeviceManager> manager;
};

// The application's log texts, as technicians know them.
const std::string
    kStart = "Starting power meter initializations... ",
    kLoading = "Loading tavix_otdr.dll... ", kInitOtdr = "Initializing OTDR device... ",
    kOtdrOk = "OTDR initialization sucessfull ",
    kRetryOk = "Second Attemp of OTDR initialization sucessfull ",
    kOtdrFailed = "OTDR initialization failure ", kInitLs = "Initializing light source... ",
    kLsFailed = "Can't initialize light source...  Can't open and read config file",
    kNoLasers = "No light sources on board. Light source functionality will be unavailabile... ",
    kInitMeter = "Initializing power meter... ",
    kMeterFailed = "Can't initialize power meter... Can't create OLT1 driver file";

TEST_F(DeviceManagerTest, EachFailureLeavesTheDocumentedState) {
    const std::string idDll = platform::ToUtf8(config.GetString(L"ID_DLL", L""));
    ASSERT_FALSE(idDll.empty());
    const struct {
        const char* name;
        std::string bench, module;  // module: loaded before Init; empty: the simulated one, by Init
        std::string ini;            // etc_gui/opm.ini; empty: none
        bool result, lightSource, meter;
        std::vector<std::wstring> messages;
        Lines lastLines;
    } rows[] = {
        // clang-format off
        {"everything comes up", "[module]\nidDll = " + idDll + "\n", "", kOpmIni, true, true, true, {}, {kStart, kLoading, kInitOtdr, kOtdrOk, kInitLs, kInitMeter}},
        {"board silent once: one retry", "[faults]\ninitOtdrFailures = 1\n", "", kOpmIni, true, true, true, {}, {kInitOtdr, kRetryOk, kOtdrOk, kInitLs, kInitMeter}},
        {"board silent twice", "[faults]\ninitOtdrFailures = 2\n", "", kOpmIni, false, false, false, {}, {kInitOtdr, kOtdrFailed}},
        {"board refuses our ID_DLL", "[module]\nidDll = X" + idDll + "\n", "", kOpmIni, false, false, false, {}, {kInitOtdr, kOtdrFailed}},
        {"no module library", "", "absent.dll", kOpmIni, false, false, false, {}, {kLoading, kInitOtdr, kOtdrFailed}},
        {"board throws a standard exception", "", "fake_otdr_standard.so", kOpmIni, true, true, true, {L"board exploded"}, {kLoading, kInitOtdr, kInitLs, kNoLasers, kInitMeter}},
        {"board throws something else", "", "fake_otdr_other.so", kOpmIni, true, true, true, {L"No connection with the OTDR!"}, {kInitOtdr, kInitLs, kNoLasers, kInitMeter}},
        {"no light source configuration", "", "", "", true, false, true, {}, {kInitLs, kLsFailed, kInitMeter}},
        {"no power meter hardware", "[faults]\nnoOlt1 = 1\n", "", kOpmIni, true, true, false, {}, {kInitLs, kInitMeter, kMeterFailed}},
        {"neither", "[faults]\nnoOlt1 = 1\n", "", "", true, false, false, {}, {kInitLs, kLsFailed, kInitMeter, kMeterFailed}},
        {"no lasers for this model", "[module]\nmodelTag = Q9\n", "", kOpmIni, true, true, true, {}, {kInitLs, kNoLasers, kInitMeter}},
        {"a model without power meter", "", "", kOpmIni + "NoOPM=1\n", true, true, false, {}, {kOtdrOk, kInitLs}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SetUp();
        Bench(kLasers + row.bench);
        std::filesystem::remove(Image() + "etc_gui/opm.ini");
        if (!row.ini.empty()) WriteFile(Image() + "etc_gui/opm.ini", row.ini);
        if (!row.module.empty()) LoadModule(row.module);
        EXPECT_EQ(Init(), row.result);
        EXPECT_EQ(manager->GetLightSource() != nullptr, row.lightSource);
        EXPECT_EQ(manager->GetPowerMeter() != nullptr, row.meter);
        EXPECT_EQ(notifier.messages, row.messages);
        const Lines lines = UserLines();
        ASSERT_GE(lines.size(), row.lastLines.size());
        EXPECT_EQ(Lines(lines.end() - row.lastLines.size(), lines.end()), row.lastLines);
        notifier.messages.clear();
        TearDown();
    }
}

TEST_F(DeviceManagerTest, TheBoardsModelTagNamesTheMeterAndLightSourceAndASecondInitReplacesThem) {
    ASSERT_TRUE(Init());
    ZuOPMMeter* meter = manager->GetPowerMeter();
    ASSERT_NE(meter, nullptr);
    EXPECT_EQ(meter->GetModelTag(), L"X7");
    EXPECT_EQ(meter->GetWavelengthsNum(), 2);
    EXPECT_EQ(meter->GetCalibrationFile(), Image() + "etc_gui/opm.ini");
    ASSERT_EQ(manager->GetLightSource()->GetLasersNum(), 3u);
    EXPECT_EQ(manager->GetLightSourceConfig()->GetLaser(2).wavelength, 1625);

    const TModuleDll* loader = ModuleDll;
    const CLightSource* firstSource = manager->GetLightSource();
    ASSERT_TRUE(manager->Init());
    EXPECT_EQ(ModuleDll, loader);
    EXPECT_NE(manager->GetLightSource(), firstSource);
}

TEST_F(DeviceManagerTest, ModelTagIsTheLastOfExactlyFourFields) {
    const struct {
        const char* modelTag;
        const wchar_t* id;
    } rows[] = {{"X7", L"X7"}, {"a+b", L"0"}, {"", L""}};
    ASSERT_TRUE(LoadModule());
    for (const auto& row : rows) {
        Bench(std::string("[module]\nmodelTag = ") + row.modelTag + "\n");
        EXPECT_EQ(CPowerMeterDeviceManager::ReadHardwareId(), row.id) << row.modelTag;
    }
    ASSERT_TRUE(LoadModule("fake_otdr_standard.so"));  // no command 715 at all
    EXPECT_EQ(CPowerMeterDeviceManager::ReadHardwareId(), L"0");
}

TEST_F(DeviceManagerTest, TheLoaderHandsTheModuleTheLogAndResolvesItsEntryPointsAfresh) {
    ASSERT_TRUE(LoadModule());
    EXPECT_NE(ModuleDll->InitOTDR, nullptr);
    EXPECT_NE(ModuleDll->ServiceFunction, nullptr);
    EXPECT_NE(ModuleDll->DestroySorPtr, nullptr);
    // The module writes through the log it was given, before the loader's own line.
    const std::string text = ReadFile(bench.directory + "/PowerMeter.log");
    const auto loaded = text.find("  M M\t module loaded: " + Image() + "tavix_otdr.dll\n");
    ASSERT_NE(loaded, std::string::npos) << text;
    EXPECT_LT(text.find("  O "), loaded) << text;

    ASSERT_TRUE(ModuleDll->Load("fake_otdr_standard.so", &lenUnit));
    EXPECT_NE(ModuleDll->InitOTDR, nullptr);
    EXPECT_EQ(ModuleDll->ServiceFunction, nullptr);
    EXPECT_FALSE(ModuleDll->Load("absent.dll", &lenUnit));
    EXPECT_FALSE(ModuleDll->IsLoaded());
    EXPECT_EQ(ModuleDll->InitOTDR, nullptr);
    EXPECT_NE(ReadFile(bench.directory + "/PowerMeter.log")
                  .find("  M E\t error loading module: " + Image() + "absent.dll\n"),
              std::string::npos);
}

TEST_F(DeviceManagerTest, TheLaserWordIsTheIdentifierWithBitEightForModeOne) {
    ASSERT_TRUE(LoadModule());
    const CLightSourceConfig config((Image() + "etc_gui/opm.ini").c_str(), L"X7");
    CLightSource source(config);
    const struct {
        std::size_t laser;
        int mode, id, benchMode;
    } rows[] = {{0, 0, 1, 0}, {0, 1, 1, 1}, {2, 1, 3, 1}, {1, 2, 2, 0}, {1, -1, 2, 0}};
    for (const auto& row : rows) {
        source.SwitchOn(row.laser, row.mode);
        EXPECT_EQ(sim::Bench::Instance().Lasers().id, row.id);
        EXPECT_EQ(sim::Bench::Instance().Lasers().mode, row.benchMode);
        for (std::size_t laser = 0; laser < 3; ++laser) {
            EXPECT_EQ(source.GetLaserState(laser).on, laser == row.laser);
            EXPECT_EQ(source.GetLaserState(laser).mode, laser == row.laser ? row.mode : 0);
        }
    }
    source.SwitchOff();
    EXPECT_EQ(sim::Bench::Instance().Lasers().id, 0);
    EXPECT_FALSE(source.IsAnyLaserOn());
    // A laser the board does not have: the module refuses the word.
    WriteFile(bench.directory + "/ls.ini",
              "[LightSource]\nLsLasersNum=1\nLsLaserId0=9\nLsLaserWaveLength0=850\n");
    const CLightSourceConfig unknown((bench.directory + "/ls.ini").c_str(), L"X7");
    EXPECT_EXIT(CLightSource(unknown).SwitchOn(0, 0), testing::ExitedWithCode(1),
                FatalPattern("result == 1", "LightSource"));
}

TEST_F(DeviceManagerTest, BluetoothProbeIsNotActiveWithoutItsDriverThenReportsTheAdapter) {
    int status = -1;
    platform::LoadHiveFromText("Windows Registry Editor Version 5.00\n");
    EXPECT_EQ(BthGetHardwareStatus(&status), static_cast<DWORD>(ERROR_SERVICE_NOT_ACTIVE));
    platform::LoadHiveFromText(ReadFile(Image() + "registry.reg"));
    for (const auto& [adapter, expected] : {std::pair{"off", 4}, {"running", 3}, {"error", 5}}) {
        Bench(std::string("[bluetooth]\nadapter = ") + adapter + "\n");
        EXPECT_EQ(BthGetHardwareStatus(&status), 0u);
        EXPECT_EQ(status, expected) << adapter;
    }
    platform::InjectStreamDeviceFaults().failNextIoControl = ERROR_DEVICE_NOT_CONNECTED;
    status = -1;
    EXPECT_EQ(BthGetHardwareStatus(&status), static_cast<DWORD>(ERROR_DEVICE_NOT_CONNECTED));
    EXPECT_EQ(status, -1);
}

}  // namespace
}  // namespace devicetest
