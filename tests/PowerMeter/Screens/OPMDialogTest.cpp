// The measuring screen on the simulated instrument, keys in and texts out. The
// input is bright enough to saturate the detector, and the factory data makes
// a saturated reading exactly the common coefficient, so each test sets the
// meter's reading to the digit through the calibration file.

#include <unistd.h>

#include <QLabel>

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/Logging.h"
#include "Common/Toolkit/ChangeValueDialog.h"
#include "Common/Toolkit/IUserNotifier.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/ModulePath.h"
#include "Platform/Registry.h"
#include "Platform/StreamDeviceFaults.h"
#include "Platform/WideText.h"
#include "PowerMeter/Devices/ModuleDll.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Screens/OPMDialog.h"
#include "PowerMeter/Screens/ReferenceDisplay.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"
#include "support/Screenshot.h"

namespace {

using toolkittest::WaitUntil;

// One image per process (its directory and pristine hive), removed by its maker.
struct Image {
    pid_t owner = getpid();
    std::string dir = (std::filesystem::temp_directory_path() / "opm-screen-XXXXXX").string(), hive;
    Image() {
        dir = mkdtemp(dir.data()) + std::string("/");
        if (std::system((OPM_MAKE_IMAGE " --fresh " OPM_BUILD_DIR " " + dir).c_str()) != 0) throw std::runtime_error("image");
        hive = ScratchDirectory::Read(dir + "registry.reg");
    }
    ~Image() { getpid() == owner && std::filesystem::remove_all(dir); }
};
const Image& TheImage() { static const Image image; return image; }

// Stays in range 1 (R = 1) where the saturated ADC reads MaxADC: the reading is the coefficient.
std::string Ini(const std::string& dBm, const std::string& extra = "") {
    return "[WaveLengths]\nWavesNum=2\nWaveLength0=1310\nWaveLength1=1550\n[Hardware]\nMaxADC=65535\nResistor0=1\n"
           "[FactoryCalibration]\nThreshSwitchUp=2\nThreshSwitchDown=0\nCalibrFreeCoeff=" + dBm +
           "\n[FactoryCalibration_xxxxPM1]\nCalibrFreeCoeff=-5\n[LightSource_X7]\nLsLasersNum=2\n"
           "LsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\nLsLaserWaveLength1=1550\n" + extra;
}

class Screen : public testing::Test, public IUserNotifier {
protected:
    void SetUp() override {
        platform::OverrideModuleFileName(platform::FromUtf8(TheImage().dir + "PowerMeter"));
        platform::LoadHiveFromText(TheImage().hive);
        SetLogFile(&log), SetLenUnit(&lenUnit), SetAppConfig(&config);
        Bench("");
        ScratchDirectory::Write(ini, Ini("-30"));
        QObject::connect(&boxWatch, &QTimer::timeout, [this] {
            for (QWidget* window : QApplication::topLevelWidgets())
                if (auto* box = qobject_cast<CMessageBoxEx*>(window); box && box->isVisible())
                    boxes << box->windowTitle() + ": " + box->findChild<QLabel*>("1192")->text().replace('\n', ' '), box->accept();
        });
        boxWatch.start(5);
    }
    void TearDown() override {
        screen.reset(), manager.reset();
        SetPowerMeterDeviceManager(nullptr), SetLogFile(nullptr);
        delete ModuleDll;
        ModuleDll = nullptr;
    }
    void Bench(const std::string& keys) {
        bench.Write(std::string(simtest::TempBench::kFast) + "[noise]\nadcCounts = 0\nrelative = 0\n[input]\ndBm = 10\n"
                    "[laser1]\nid = 1\n[laser2]\nid = 2\n[module]\nmodelTag = X7\n" + keys);
    }
    void Open(bool withLightSource = true) {
        screen.reset(), manager.reset();
        platform::DeactivateStreamDevices();
        manager = std::make_unique<CPowerMeterDeviceManager>(config, *this);
        ASSERT_TRUE(manager->Init());
        SetPowerMeterDeviceManager(manager.get());
        screen = std::make_unique<COPMDialog>(meter(), withLightSource ? manager->GetLightSource() : nullptr);
        ASSERT_TRUE(screen->Create());
        screen->show(), screen->activateWindow();
    }
    void ShowMessage(const std::wstring&) override {}
    ZuOPMMeter* meter() { return manager->GetPowerMeter(); }
    void Reading(const std::string& dBm) { ScratchDirectory::Write(ini, Ini(dBm)), meter()->ReloadFactoryCalibration(); }
    QString Text(int id) { return screen->GetDlgItemText(id); }
    bool Visible(int id) { return screen->GetDlgItem(id)->isVisible(); }
    // Presses `keys` on the screen; `steps` go to the submenu that opens. Its captions.
    QString Choose(std::vector<Qt::Key> keys, const QString& steps) {
        QStringList captions;
        toolkittest::WhenShown<CSubmenuDialog>("a submenu", [&, steps](CSubmenuDialog* column) {
            for (size_t i = 0; i < column->GetKeysCount(); ++i) captions << column->GetKey(i)->Caption();
            for (const QString& step : steps.split(' ')) QTest::keyClick(column, QKeySequence(step)[0].key());
        });
        for (Qt::Key key : keys) QTest::keyClick(screen.get(), key);
        return captions.join('|');
    }

    simtest::TempBench bench;
    std::string ini = TheImage().dir + "etc_gui/opm.ini";
    TLogFile log{(bench.directory + "/PowerMeter.log").c_str(), 1, 0};
    TLenUnit lenUnit;
    CAppConfig config{L"Software\\Tavix", 0};
    ScopedLanguagePack pack;
    std::unique_ptr<CPowerMeterDeviceManager> manager;
    std::unique_ptr<COPMDialog> screen;
    QTimer boxWatch;
    QStringList boxes;  // "title: text" of every box, closed as it opened
};

TEST_F(Screen, ShowsThePowerThreeWaysAgainstTheActiveSlotsReference) {
    Open();
    SetReferenceDisplay(true);
    meter()->SetReferenceLevel(0, -10.0f), meter()->SetReferenceLevel(1, -20.0f);
    const struct { const char *reading, *keys, *shown; } rows[] = {
        {"-80", "", "1310 nm|<-75.0 dBm|0.025 nW| -10.00 dBm| -66.00 dB"},
        {"-30", "", "1310 nm|-30.000 dBm|1.000 uW| -10.00 dBm| -20.00 dB"},
        {"-30.0000434", "", "1310 nm|-30.000 dBm|1000.0 nW| -10.00 dBm| -20.00 dB"},
        {"30.913", "", "1310 nm| 30.913 dBm|1234 mW| -10.00 dBm| +40.91 dB"},
        {"41", "", "1310 nm| 41.000 dBm|>9999 mW| -10.00 dBm| +51.00 dB"},
        {"41", "Down Return", "1550 nm| 41.000 dBm|>9999 mW| -20.00 dBm| +61.00 dB"},
    };
    for (const auto& row : rows) {
        Reading(row.reading);
        if (*row.keys) { EXPECT_EQ(Choose({Qt::Key_F1}, row.keys), "1310 nm|1550 nm"); }
        const auto shown = [&] { return QStringList{Text(1004), Text(1020), Text(1023), Text(1008), Text(1022)}.join('|'); };
        WaitUntil([&] { return shown() == row.shown; });
        EXPECT_EQ(shown(), row.shown) << row.reading;
    }
    EXPECT_TRUE(Visible(1036) && Visible(1038) && !Visible(1112));
}

TEST_F(Screen, ZeroIsRefusedUnlessTheInputIsBelowMinusFifty) {
    Open();
    for (const auto& [reading, shown, box] : {std::tuple{"-50", "-50.000 dBm", "Warning!: >-50dBm!"}, {"-50.01", "-50.010 dBm", ""}}) {
        Reading(reading);
        ASSERT_TRUE(WaitUntil([&] { return Text(1020) == shown; })) << Text(1020).toStdString();
        boxes.clear();
        QTest::keyClick(screen.get(), Qt::Key_F2);
        EXPECT_EQ(boxes.join(""), box);
        // A zero taken on a saturated detector puts the full scale into every range's offset.
        EXPECT_EQ(meter()->GetZero(0), *box ? 0.0f : 65535.0f);
    }
}

TEST_F(Screen, ReferenceKeysEnterTakeAndSwitchTheReference) {
    Open();
    // Steps -> captions, display on, reference of the slot, relative value shown.
    const struct { const char *steps, *captions; bool on; float reference; const char* relative; } rows[] = {
        {"Down Down Return", "Enter value|Set from input|Show reference", true, 0.0f, " -30.00 dB"},
        {"Down Return", "Enter value|Set from input|Hide reference", true, -30.0f, "  +0.00 dB"},
        {"Return", "Enter value|Set from input|Hide reference", true, 30.0f, " -60.00 dB"},
        {"Down Down Return", "Enter value|Set from input|Hide reference", false, 30.0f, ""},
    };
    for (const auto& row : rows) {
        if (row.steps == std::string("Return"))
            toolkittest::WhenShown<CChangeValueDialog>("the reference editor", [](CChangeValueDialog* editor) {
                EXPECT_EQ(editor->windowTitle(), "Ref = ");
                QTest::keyClicks(editor, "+"), QTest::keyClick(editor, Qt::Key_Return);
            });
        EXPECT_EQ(Choose({Qt::Key_F3}, row.steps), row.captions);
        EXPECT_EQ(IsReferenceDisplayOn(), row.on);
        EXPECT_EQ(meter()->GetReferenceLevel(0), row.reference);
        EXPECT_TRUE(WaitUntil([&] { return Visible(1022) == row.on && (!row.on || Text(1022) == row.relative); })) << row.steps;
    }
    EXPECT_NE(ScratchDirectory::Read(ini).find("ReferenceLevel0=30\n"), std::string::npos);
}

TEST_F(Screen, EachChoiceOfALaserStepsItOffOnModulatedOff) {
    Open();
    const struct { const char *steps, *captions, *state; int laser, mode; } rows[] = {
        {"Return", "1310 OFF|1550 OFF", "1310 continuous", 1, 0},
        {"Return", "1310 ON|1550 OFF|All lasers off", "1310 modulated", 1, 1},
        {"Return", "1310 ON *|1550 OFF|All lasers off", "", 0, 0},
        {"Down Return", "1310 OFF|1550 OFF", "1550 continuous", 2, 0},
        {"Up Return", "1310 OFF|1550 ON|All lasers off", "", 0, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Choose({Qt::Key_F4}, row.steps), row.captions);
        EXPECT_EQ(*row.state ? Text(1113) : "", row.state);
        EXPECT_EQ(Visible(1113) && Visible(1114), *row.state != 0);
        EXPECT_EQ((std::array{sim::Bench::Instance().Lasers().id, sim::Bench::Instance().Lasers().mode}), (std::array{row.laser, row.mode}));
    }
}

TEST_F(Screen, HiddenCombinationsOpenCalibrationAndServiceFunctions) {
    Open();
    ASSERT_TRUE(WaitUntil([&] { return Text(1020) == "-30.000 dBm"; }));
    toolkittest::WhenShown<CChangeValueDialog>("the calibration editor", [&](CChangeValueDialog* editor) {
        EXPECT_EQ(editor->windowTitle() + QString::number(editor->Digits().Value()), "P, dBm-30");
        std::filesystem::remove(ini);  // the calibration cannot be written
        QTest::keyClick(editor, Qt::Key_Return);
    });
    for (Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_F1}) QTest::keyClick(screen.get(), key);
    EXPECT_EQ(boxes, QStringList{"Error: Error ocurred during manual calibrating"});
    // The extra Left stays caught, so F1 is the wavelength key.
    EXPECT_EQ(Choose({Qt::Key_Left, Qt::Key_Left, Qt::Key_Right, Qt::Key_F1}, "Escape"), "1310 nm|1550 nm");
    EXPECT_EQ(Choose({Qt::Key_Left, Qt::Key_Right, Qt::Key_F2}, "Escape"), "PM1|PM2|NoOPM=0|NoOPM=1");
}

TEST_F(Screen, ServiceFunctionsReportEachFailureInTheErrorBox) {
    Open();
    const std::string def = "Error: Error during factory calibration data changing to def",
                      reread = "Error: Error during factory calibration data rereading";
    // Steps, calibration file (empty: none) -> boxes, common coefficient, NoOPM line written.
    const struct { const char* steps; std::string file, boxes; float coefficient; const char* noOPM; } rows[] = {
        {"Return", Ini("-30"), "", -5.0f, ""},
        {"Down Return", Ini("-30"), def, -30.0f, ""},
        {"Down Down Return", Ini("-30"), "", -30.0f, "NoOPM=0"},
        {"Up Return", "", "Error: Error during NoOPM key" + reread, -30.0f, ""},
        {"Return", "", def + reread, -30.0f, ""},
    };
    for (const auto& row : rows) {
        Reading("-30"), boxes.clear();
        if (row.file.empty()) std::filesystem::remove(ini);
        EXPECT_EQ(Choose({Qt::Key_Left, Qt::Key_Right, Qt::Key_F2}, row.steps), "PM1|PM2|NoOPM=0|NoOPM=1");
        EXPECT_EQ(boxes.join("").toStdString(), row.boxes) << row.steps;
        EXPECT_EQ(meter()->GetCalibrFreeCoeff(), row.coefficient) << row.steps;
        if (*row.noOPM) { EXPECT_NE(ScratchDirectory::Read(ini).find(row.noOPM), std::string::npos); }
    }
}

TEST_F(Screen, ClosingStopsTheMeterSavesItsStateAndSwitchesTheLightsOffOnce) {
    Open();
    Choose({Qt::Key_F4}, "Return"), Choose({Qt::Key_F1}, "Down Return");
    const HWND window = WindowHandleOf(screen.get());
    ASSERT_TRUE(meter()->IsRunning() && meter()->IsSubscribed(window));
    screen->close();  // as the window manager does
    EXPECT_FALSE(meter()->IsRunning() || meter()->IsSubscribed(window));
    EXPECT_EQ(sim::Bench::Instance().Lasers().id, 0);
    EXPECT_NE(ScratchDirectory::Read(ini).find("ActiveWaveLengthIndex=1"), std::string::npos);
    manager->GetLightSource()->SwitchOn(1, 0);
    screen.reset();
    EXPECT_EQ(sim::Bench::Instance().Lasers().id, 2);
}

// Every view in both packs: what shows, which keys work, and no text cut off.
TEST_F(Screen, EveryViewInBothLanguages) {
    const struct { const char *name, *bench; bool reference, laser, lightSource; const char* keys; } views[] = {
        {"measuring", "", false, false, true, "1111"},
        {"reference", "", true, false, true, "1111"},
        {"laser-on", "", false, true, true, "1111"},
        {"no-meter", "[faults]\nnoOlt1 = 1\n", false, false, true, "0001"},
        {"no-light-source", "", false, false, false, "1110"},
    };
    for (const char* language : {"english", "german"}) {
        ScopedLanguagePack languagePack(language);
        for (const auto& view : views) {
            SCOPED_TRACE(std::string(view.name) + " " + language);
            Bench(view.bench), SetReferenceDisplay(view.reference);
            Open(view.lightSource);
            if (view.laser) Choose({Qt::Key_F4}, "Return");
            const bool hasMeter = *view.bench == 0;
            EXPECT_TRUE(WaitUntil([&] { return !hasMeter || Text(1020) == "-30.000 dBm"; }));
            EXPECT_EQ(Text(1112), hasMeter ? "" : ResourceString(53));
            EXPECT_EQ(Visible(1112), !hasMeter);
            EXPECT_EQ(Visible(1020) && Visible(1023) && Visible(1004), hasMeter);
            EXPECT_EQ(Visible(1022), view.reference);
            EXPECT_EQ(Visible(1113), view.laser);
            QString keys;
            for (unsigned slot = 0; slot < 4; ++slot) keys += screen->GetMenuCtrl().GetCurrentKey(slot)->isEnabled() ? '1' : '0';
            EXPECT_EQ(keys, view.keys);
            for (QLabel* label : screen->findChildren<QLabel*>())
                EXPECT_LE(label->isVisible() ? label->fontMetrics().horizontalAdvance(label->text()) : 0, label->width()) << label->objectName().toStdString();
            screenshot::Save(QString("opm-%1-%2").arg(view.name, language), screen.get());
        }
    }
}

}  // namespace
