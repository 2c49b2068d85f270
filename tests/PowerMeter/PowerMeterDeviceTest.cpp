// The device layer on the simulated instrument: an instrument image the image
// script assembles once per process, taken by the platform as the application
// directory, with the shipped hive and a bench file of each test's own. The
// device manager's failure table, the model tag, the laser word, the meter's
// backend on "OLT1:" and the light source configuration.

#include <unistd.h>

#include <chrono>
#include <thread>

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/Logging.h"
#include "Common/Toolkit/IUserNotifier.h"
#include "Platform/LocalTime.h"
#include "Platform/ModulePath.h"
#include "Platform/Registry.h"
#include "Platform/StreamDeviceFaults.h"
#include "Platform/WideText.h"
#include "PowerMeter/Devices/HardwareOPMMeterBackend.h"
#include "PowerMeter/Devices/ModuleDll.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Simulator/bench/Bench.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"

namespace {

using Lines = std::vector<std::string>;

// The image's directory with its trailing '/'. Removed by the process that
// made it, not by a death test's child leaving through exit().
const std::string& Image() {
    static const struct Made {
        pid_t owner = getpid();
        std::string dir = (std::filesystem::temp_directory_path() / "opm-device-XXXXXX").string();
        Made() {
            const std::string script = OPM_MAKE_IMAGE " --fresh " OPM_BUILD_DIR " " +
                                       (dir = mkdtemp(dir.data()) + std::string("/"));
            if (std::system(script.c_str()) != 0) throw std::runtime_error(script + " failed");
            std::filesystem::copy(FAKE_OTDR, dir);  // fakes of a board whose InitOTDR throws
        }
        ~Made() { getpid() == owner&& std::filesystem::remove_all(dir); }
    } image;
    return image.dir;
}

// Three lasers of the bench for model X7, and enough meter data for a meter.
const std::string kOpmIni =
    "[Hardware]\nMaxADC=65535\nResistor0=10\nResistor1=100\nResistor2=1000\n"
    "[LightSource_X7]\nLsLasersNum=3\nLsLaserId0=1\nLsLaserWaveLength0=1310\n"
    "LsLaserId1=2\nLsLaserWaveLength1=1550\nLsLaserId2=3\nLsLaserWaveLength2=1625\n";

class SimulatedDevices : public testing::Test, public IUserNotifier {
protected:
    void SetUp() override {
        platform::OverrideModuleFileName(platform::FromUtf8(Image() + "PowerMeter"));
        platform::LoadHiveFromText(ScratchDirectory::Read(Image() + "registry.reg"));
        platform::DeactivateStreamDevices();
        log = std::make_unique<TLogFile>((bench.directory + "/PowerMeter.log").c_str(), 1, 0);
        SetLogFile(log.get());
        SetLenUnit(&lenUnit);
        Bench("");
        ScratchDirectory::Write(Image() + "etc_gui/opm.ini", kOpmIni);
        messages.clear();
    }
    void TearDown() override {
        // The program never unloads its loader; each test starts afresh.
        delete ModuleDll;
        ModuleDll = nullptr;
        SetLogFile(nullptr);
    }
    // A quiet, instant bench with the lasers of model X7, then the test's own keys (a later key
    // wins).
    void Bench(const std::string& keys) {
        bench.Write(
            std::string(simtest::TempBench::kFast) + "[noise]\nadcCounts = 0\nrelative = 0\n" +
            "[laser1]\nid = 1\n[laser2]\nid = 2\n[laser3]\nid = 3\n[module]\nmodelTag = X7\n" +
            keys);
    }
    // Loads `file` of the image (its simulated module by default) as the process-wide loader.
    bool LoadModule(const std::string& file = "tavix_otdr.dll") {
        delete ModuleDll;
        ModuleDll = new TModuleDll(Image().c_str());
        return ModuleDll->Load(file.c_str(), &lenUnit);
    }
    bool Init() {
        manager = std::make_unique<CPowerMeterDeviceManager>(config, *this);
        return manager->Init();
    }
    void ShowMessage(const std::wstring& text) override { messages.push_back(text); }
    // The application's message lines ('U', level 'M'), text and detail as written.
    Lines UserLines() const {
        Lines lines;
        std::istringstream text(ScratchDirectory::Read(bench.directory + "/PowerMeter.log"));
        for (std::string line; std::getline(text, line);)
            if (const auto at = line.find("  U M\t "); at != std::string::npos)
                lines.push_back(line.substr(at + 7));
        return lines;
    }

    simtest::TempBench bench;
    std::unique_ptr<TLogFile> log;
    TLenUnit lenUnit;
    CAppConfig config{L"Software\\Tavix", 0};
    std::vector<std::wstring> messages;
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

TEST_F(SimulatedDevices, EachFailureLeavesTheDocumentedState) {
    const std::string idDll = platform::ToUtf8(config.GetString(L"ID_DLL", L""));
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
        {"no module library", "", "absent.dll", kOpmIni, false, false, false, {}, {kLoading, kInitOtdr, kOtdrFailed}},
        {"board throws a standard exception", "", "fake_otdr_standard.so", kOpmIni, true, true, true, {L"board exploded"}, {kLoading, kInitOtdr, kInitLs, kNoLasers, kInitMeter}},
        {"board throws something else", "", "fake_otdr_other.so", kOpmIni, true, true, true, {L"No connection with the OTDR!"}, {kInitOtdr, kInitLs, kNoLasers, kInitMeter}},
        {"no light source configuration", "", "", "", true, false, true, {}, {kInitLs, kLsFailed, kInitMeter}},
        {"no power meter hardware", "[faults]\nnoOlt1 = 1\n", "", kOpmIni, true, true, false, {}, {kInitLs, kInitMeter, kMeterFailed}},
        {"no lasers for this model", "[module]\nmodelTag = Q9\n", "", kOpmIni, true, true, true, {}, {kInitLs, kNoLasers, kInitMeter}},
        {"a model without power meter", "", "", kOpmIni + "NoOPM=1\n", true, true, false, {}, {kOtdrOk, kInitLs}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SetUp();
        Bench(row.bench);
        std::filesystem::remove(Image() + "etc_gui/opm.ini");
        if (!row.ini.empty()) ScratchDirectory::Write(Image() + "etc_gui/opm.ini", row.ini);
        if (!row.module.empty()) LoadModule(row.module);
        EXPECT_EQ(Init(), row.result);
        EXPECT_EQ(manager->GetLightSource() != nullptr, row.lightSource);
        EXPECT_EQ(manager->GetPowerMeter() != nullptr, row.meter);
        EXPECT_EQ(messages, row.messages);
        const Lines lines = UserLines();
        ASSERT_GE(lines.size(), row.lastLines.size());
        EXPECT_EQ(Lines(lines.end() - row.lastLines.size(), lines.end()), row.lastLines);
        TearDown();
    }
}

TEST_F(SimulatedDevices, ASecondInitReusesTheLoadedModule) {
    ASSERT_TRUE(Init());
    const auto* loader = ModuleDll;
    ASSERT_TRUE(manager->Init());
    EXPECT_EQ(ModuleDll, loader);
}

TEST_F(SimulatedDevices, ModelTagIsTheLastOfExactlyFourFields) {
    ASSERT_TRUE(LoadModule());
    for (const auto& [modelTag, id] : {std::pair{"X7", L"X7"}, {"a+b", L"0"}, {"", L""}}) {
        Bench(std::string("[module]\nmodelTag = ") + modelTag + "\n");
        EXPECT_EQ(CPowerMeterDeviceManager::ReadHardwareId(), id) << modelTag;
    }
}

TEST_F(SimulatedDevices, TheLaserWordIsTheIdentifierWithBitEightForModeOne) {
    ASSERT_TRUE(LoadModule());
    const CLightSourceConfig config((Image() + "etc_gui/opm.ini").c_str(), L"X7");
    CLightSource source(config);
    // Laser, mode -> the board's laser and mode; one laser at a time.
    for (const auto& [laser, mode, id, boardMode] :
         {std::array{0, 0, 1, 0}, {0, 1, 1, 1}, {2, 1, 3, 1}, {1, 2, 2, 0}, {1, -1, 2, 0}}) {
        source.SwitchOn(laser, mode);
        EXPECT_EQ(
            (std::array{sim::Bench::Instance().Lasers().id, sim::Bench::Instance().Lasers().mode}),
            (std::array{id, boardMode}));
        EXPECT_TRUE(source.GetLaserState(laser).on && !source.GetLaserState((laser + 1) % 3).on);
    }
    source.SwitchOff();
    EXPECT_TRUE(sim::Bench::Instance().Lasers().id == 0 && !source.IsAnyLaserOn());
    // A laser the board does not have: the module refuses the word.
    ScratchDirectory::Write(bench.directory + "/ls.ini",
                            "[LightSource]\nLsLasersNum=1\nLsLaserId0=9\nLsLaserWaveLength0=850\n");
    const CLightSourceConfig unknown((bench.directory + "/ls.ini").c_str(), L"X7");
    EXPECT_EXIT(CLightSource(unknown).SwitchOn(0, 0), testing::ExitedWithCode(1),
                "(^|\n)result == 1\nFile: LightSource\n");
}

TEST_F(SimulatedDevices, EachRangesSwitchesSelectItsGain) {
    Bench("[input]\ndBm = -30\n");
    CHardwareOpmMeterBackend backend;
    backend.SetEnabled(true);
    std::vector<std::int32_t> counts;
    for (const auto& switches : {std::array{1, 0, 0}, {1, 0, 1}, {0, 1, 1}}) {  // ranges 0, 1, 2
        for (int index = 0; index < 3; ++index) backend.SetSwitch(index, switches[index]);
        counts.push_back(backend.ReadPower(ZuOPMMeter::kReadRequest));
    }
    // Range 0 is the most sensitive: the same light gives the most counts there.
    EXPECT_TRUE(counts[0] > counts[1] && counts[1] > counts[2]) << testing::PrintToString(counts);
}

TEST_F(SimulatedDevices, AFailingControlCodeIsAFatalHardwareFault) {
    CHardwareOpmMeterBackend backend;
    for (const auto& [code, expression] :
         {std::pair<const char*, std::string>{"0x80062013", "result"},
          {"0x80062032", "result && \"Hardware failure: can't enable / disable power meter\""}}) {
        EXPECT_EXIT(
            {
                Bench(std::string("[faults]\nfailIoControl = ") + code + "\n");
                backend.SetSwitch(0, true);  // another code: passes
                backend.ReadPower(ZuOPMMeter::kReadRequest);
                backend.SetSwitch(1, true);
                backend.SetEnabled(false);
                std::exit(0);
            },
            testing::ExitedWithCode(1),
            "(^|\n)" + expression + "\nFile: HardwareOPMMeterBackend\n");
    }
}

TEST_F(SimulatedDevices, AReadFailingWhileTheMeterMeasuresEndsTheProgramThroughTheFatalPath) {
    EXPECT_EXIT(
        {
            std::atomic<int> measured{0};
            ZuOPMMeter meter(
                (Image() + "etc_gui/opm.ini").c_str(), L"X7",
                std::make_unique<CHardwareOpmMeterBackend>(),
                [&measured](std::chrono::milliseconds pause) { measured += pause.count() == 300; });
            meter.Start();
            for (int wait = 0; wait < 20000 && measured < 2; ++wait) usleep(1000);
            Bench("[faults]\nfailIoControl = 0x80062003\n");
            std::this_thread::sleep_for(std::chrono::seconds(20));
            std::fprintf(stderr, "measured %d times; the failing read did not end it\n", +measured);
            std::exit(0);
        },
        testing::ExitedWithCode(1),
        "(^|\n)res && \"Can't read power value from device\"\nFile: HardwareOPMMeterBackend\n");
}

using Lasers = std::vector<std::pair<unsigned, int>>;

const struct ConfigRow {
    const char *name, *ini;
    Lasers lasers;
    bool noOPM, noVFL;
} kConfigs[] = {
    // clang-format off
    {"no count anywhere: no lasers", "[LightSource]\nLsLaserId0=1\nLsLaserWaveLength0=1310\n[LightSource_X7]\nLsLaserId0=2\nLsLaserWaveLength0=1550\n", {}, false, false},
    {"count capped at the described lasers", "[LightSource]\nLsLasersNum=5\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\nLsLaserWaveLength1=1550\n", {{1, 1310}, {2, 1550}}, false, false},
    {"model section overrides laser by laser", "[LightSource]\nLsLasersNum=2\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\nLsLaserWaveLength1=1550\n[LightSource_X7]\nLsLasersNum=2\nLsLaserId0=9\nLsLaserWaveLength0=850\n", {{9, 850}, {2, 1550}}, false, false},
    {"model count wins", "[LightSource]\nLsLasersNum=1\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\nLsLaserWaveLength1=1550\n[LightSource_X7]\nLsLasersNum=2\n", {{1, 1310}, {2, 1550}}, false, false},
    {"common count when the model gives none", "[LightSource]\nLsLasersNum=1\n[LightSource_X7]\nLsLaserId0=4\nLsLaserWaveLength0=1490\n", {{4, 1490}}, false, false},
    {"a missing identifier ends the list", "[LightSource]\nLsLasersNum=3\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserWaveLength1=1550\nLsLaserId2=3\nLsLaserWaveLength2=1625\n", {{1, 1310}}, false, false},
    {"a missing wavelength ends the list", "[LightSource]\nLsLasersNum=2\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\n", {{1, 1310}}, false, false},
    {"negative count: no lasers", "[LightSource]\nLsLasersNum=-1\nLsLaserId0=1\nLsLaserWaveLength0=1310\n", {}, false, false},
    {"model switches of exactly 1", "[LightSource_X7]\nNoOPM=1\nNoVFL=1\n", {}, true, true},
    {"other values are off", "[LightSource_X7]\nNoOPM=2\nNoVFL=abc\n", {}, false, false},
    {"common switches are ignored", "[LightSource]\nNoOPM=1\nNoVFL=1\n", {}, false, false},
    {"another model's switch is ignored", "[LightSource_Y1]\nNoOPM=1\n", {}, false, false},
    {"identifier kept unsigned, an unreadable wavelength is 0", "[LightSource]\nLsLasersNum=1\nLsLaserId0=-2\nLsLaserWaveLength0=n/a\n", {{4294967294u, 0}}, false, false},
    // clang-format on
};

TEST_F(SimulatedDevices, ReadsLasersAndModelSwitches) {
    const std::string path = bench.directory + "/ls.ini";
    for (const ConfigRow& row : kConfigs) {
        SCOPED_TRACE(row.name);
        ScratchDirectory::Write(path, row.ini);
        const CLightSourceConfig config(path.c_str(), L"X7");
        Lasers read;
        for (std::size_t i = 0; i < config.GetLasersNum(); ++i)
            read.emplace_back(config.GetLaser(i).identifier, config.GetLaser(i).wavelength);
        EXPECT_EQ(read, row.lasers);
        EXPECT_EQ(config.HasNoOPM(), row.noOPM);
        EXPECT_EQ(config.HasNoVFL(), row.noVFL);
    }
}

TEST_F(SimulatedDevices, WriteNoOPMSetsTheModelsKeyAndKeepsEverythingElse) {
    const std::string path = bench.directory + "/ls.ini";
    // The file before, the model and value -> the file after. Without a file the measuring
    // screen's service menu reports the failure.
    const std::array<const char*, 4> rows[] = {
        // clang-format off
        {";factory data\n[LightSource]\nNoOPM=0\n[LightSource_X7]\nLsLasersNum=0\n", "X7", "1", ";factory data\n\n[LightSource]\nNoOPM=0\n\n[LightSource_X7]\nLsLasersNum=0\nNoOPM=1\n\n"},
        {"[LightSource_X7]\nNoOPM=1\n", "X7", "0", "[LightSource_X7]\nNoOPM=0\n\n"},
        {"[Hardware]\nMaxADC=4095\n", "Q2", "1", "[Hardware]\nMaxADC=4095\n\n[LightSource_Q2]\nNoOPM=1\n\n"},
        // clang-format on
    };
    for (const auto& [before, model, value, after] : rows) {
        ScratchDirectory::Write(path, before);
        EXPECT_TRUE(WriteNoOPM(path.c_str(), platform::FromUtf8(model), std::stoi(value)));
        EXPECT_EQ(ScratchDirectory::Read(path), after);
    }
}

// A result is the meter's last reading at the active slot, stamped with the
// local time as stored (full year, month from 0), with the slot's reference
// only while the reference display is on; observers hear of it once each.
TEST_F(SimulatedDevices, AResultIsTheLastReadingOfTheActiveSlotStampedNow) {
    ScratchDirectory::Write(Image() + "etc_gui/opm.ini",
                            kOpmIni + "[WaveLengths]\nWavesNum=2\nWaveLength0=1310\nWaveLength1=1550\n");
    ASSERT_TRUE(Init());
    ZuOPMMeter& meter = *manager->GetPowerMeter();
    SetPowerMeterDeviceManager(manager.get()), SetAppConfig(&config);
    setenv("TZ", "UTC", 1), tzset();
    platform::OverrideTime([] { return std::int64_t{1426410330}; });  // 2015-03-15 09:05:30
    meter.Start();
    for (int tries = 0; meter.GetLastPower() == 0.0f && tries < 2000; ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    meter.StopAndWait();
    meter.SetActiveWaveLengthIndex(1), meter.SetReferenceLevel(0, -9.0f), meter.SetReferenceLevel(1, -3.25f);
    struct Counter : CPMDocumentObserver {
        int calls = 0;
        void OnDocumentChanged(COPMDocument*, int changeCode) override { calls += changeCode; }
    } counter;
    COPMDocument document;
    document.AddObserver(&counter), document.AddObserver(&counter);
    for (const bool referenceOn : {false, true}) {
        config.SetValue(L"PowerMeter_ReferenceLevel", referenceOn);
        document.AddCurrentResult();
    }
    document.RemoveObserver(&counter), platform::OverrideTime({});
    SetPowerMeterDeviceManager(nullptr), SetAppConfig(nullptr);

    ASSERT_EQ(document.GetResultsCount(), 2u);
    const OPMResult& result = document.GetResult(1);
    EXPECT_EQ(std::vector<int>({result.year, result.month, result.day, result.hour, result.minute,
                                result.second, result.weekDay, result.yearDay, result.waveLength,
                                counter.calls, document.IsSaved()}),
              std::vector<int>({2015, 2, 15, 9, 5, 30, 0, 73, 1550, 2, 0}));
    EXPECT_NE(meter.GetLastPower(), 0.0f) << "no reading within 20 s";
    EXPECT_EQ(std::vector<float>({result.absPower, result.refLevel, document.GetResult(0).refLevel}),
              std::vector<float>({meter.GetLastPower(), -3.25f, 0.0f}));
}

TEST(OPMDocument, AViewStillWatchingWhenTheDocumentGoesIsFatal) {
    struct View : CPMDocumentObserver {
        void OnDocumentChanged(COPMDocument*, int) override {}
    } view;
    EXPECT_EXIT(
        {
            COPMDocument document;
            document.AddObserver(&view);
        },
        testing::ExitedWithCode(1), "Observer outlives the document");
}

}  // namespace
