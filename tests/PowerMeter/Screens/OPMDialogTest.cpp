// The measuring screen on the simulated instrument, keys in and texts out. The
// input saturates the detector and the factory data makes a saturated reading
// exactly the common coefficient, so a scenario sets the meter's reading to
// the digit through the calibration file ("read").

#include <QLabel>

#include "Common/Toolkit/ChangeValueDialog.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Platform/StreamDeviceFaults.h"
#include "PowerMeter/Screens/OPMDialog.h"
#include "ScreenTestSupport.h"
#include "Simulator/SimulatorTestSupport.h"

namespace {

// clang-format off
// Range 1 (R = 1) for good, where the saturated ADC reads MaxADC: the reading is the coefficient.
std::string Ini(const std::string& dBm) {
    return "[WaveLengths]\nWavesNum=2\nWaveLength0=1310\nWaveLength1=1550\n[Hardware]\nMaxADC=65535\nResistor0=1\n[FactoryCalibration]\nThreshSwitchUp=2\nThreshSwitchDown=0\n"
           "CalibrFreeCoeff=" + dBm + "\n[FactoryCalibration_xxxxPM1]\nCalibrFreeCoeff=-5\n[LightSource_X7]\nLsLasersNum=2\nLsLaserId0=1\nLsLaserWaveLength0=1310\nLsLaserId1=2\nLsLaserWaveLength1=1550\n";
}
const std::string kBench = std::string(simtest::TempBench::kFast) + "[noise]\nadcCounts = 0\nrelative = 0\n[input]\ndBm = 10\n[laser1]\nid = 1\n[laser2]\nid = 2\n[module]\nmodelTag = X7\n";
// clang-format on

struct Screen : screentest::Instrument {
    // A fresh instrument (registry, bench, calibration file) and the screen on it.
    void Open(const std::string& benchKeys, bool withLightSource) {
        TearDown(), SetUp();
        platform::DeactivateStreamDevices();
        bench.Write(kBench + benchKeys), ScratchDirectory::Write(ini, Ini("-30"));
        StartDevices();
        CLightSource* lightSource = withLightSource ? manager->GetLightSource() : nullptr;
        screen = std::make_unique<COPMDialog>(manager->GetPowerMeter(), lightSource);
        ASSERT_TRUE(screen->Create());
        screen->show(), screen->activateWindow(), boxes.clear();
    }
    void TearDown() override { screen.reset(), Instrument::TearDown(); }

    // "read <dBm>", "keys <keys>", "menu <keys>/<keys in the submenu>", "edit <typed, then
    // Return in the next value editor>", "rm" (the calibration file), "close" (as the window
    // manager does), "destroy", "shot <name>";
    // otherwise "<what>=<expected>", waited for.
    void Step(const QString& step) {
        const QString verb = step.section(' ', 0, 0), arg = step.section(' ', 1);
        if (verb == "read") {
            ScratchDirectory::Write(ini, Ini(arg.toStdString()));
            manager->GetPowerMeter()->ReloadFactoryCalibration();
        } else if (verb == "keys" || verb == "menu") {
            if (verb == "menu")
                toolkittest::WhenShown<CSubmenuDialog>("a submenu", [this, arg](CSubmenuDialog* c) {
                    captions.clear();
                    for (size_t i = 0; i < c->GetKeysCount(); ++i)
                        captions << c->GetKey(i)->Caption();
                    for (const QString& key : arg.section('/', 1).split(' '))
                        QTest::keyClick(c, screentest::Key(key));
                });
            for (const QString& key : arg.section('/', 0, 0).split(' '))
                QTest::keyClick(screen.get(), screentest::Key(key));
        } else if (verb == "edit") {
            toolkittest::WhenShown<CChangeValueDialog>("an editor", [this, arg](auto* e) {
                editor = e->windowTitle() + "|" + QString::number(e->Digits().Value());
                QTest::keyClicks(e, arg + "\r");
            });
        } else if (step == "rm") {
            std::filesystem::remove(ini);
        } else if (step == "close" || step == "destroy") {
            step == "close" ? void(screen->close()) : screen.reset();
        } else if (verb == "shot") {
            for (QLabel* label : screen->findChildren<QLabel*>())  // nothing cut off
                EXPECT_LE(label->isVisible() * label->sizeHint().width(), label->width());
            screenshot::Save("opm-" + arg, screen.get());
        } else {
            const QString what = step.section('=', 0, 0), expected = step.section('=', 1);
            toolkittest::WaitUntil([&] { return Actual(what) == expected; });
            EXPECT_EQ(Actual(what), expected) << step.toStdString();
            if (what == "boxes") boxes.clear();
        }
    }
    // A control's text ("1020"), whether it shows ("1020?"), the last submenu's captions ("menu"),
    // the boxes shown, the editor's title and start, the laser and mode on the bench, the enabled
    // soft keys, the meter measuring or subscribed ("live"), or a key of the calibration file.
    QString Actual(const QString& what) {
        bool isId = false;
        const int id = what.chopped(what.endsWith('?')).toInt(&isId);
        const auto lasers = sim::Bench::Instance().Lasers();
        QString keys, file = QString::fromStdString(ScratchDirectory::Read(ini));
        for (unsigned slot = 0; screen && slot < 4; ++slot)
            keys += screen->GetMenuCtrl().GetCurrentKey(slot)->isEnabled() ? '1' : '0';
        ZuOPMMeter* meter = manager->GetPowerMeter();
        return isId && what.endsWith('?') ? QString::number(screen->GetDlgItem(id)->isVisible())
               : isId                     ? screen->GetDlgItemText(id)
               : what == "menu"           ? captions.join('|')
               : what == "boxes"          ? boxes.join('|')
               : what == "editor"         ? editor
               : what == "laser"          ? QString("%1/%2").arg(lasers.id).arg(lasers.mode)
               : what == "keys"           ? keys
               : what == "live"           ? QString::number(meter->IsRunning() ||
                                                            meter->IsSubscribed(WindowHandleOf(screen.get())))
                                          : file.section("\n" + what + "=", 1).section('\n', 0, 0);
    }

    simtest::TempBench bench;
    const std::string ini = screentest::Image() + "etc_gui/opm.ini";
    std::unique_ptr<COPMDialog> screen;
    QStringList captions, boxes;  // boxes: "title: text" of each, closed as it opened
    QString editor;
    QTimer boxWatch;
};

// clang-format off
const struct { const char *name, *language, *bench; bool lightSource; const char* steps; } kScenarios[] = {
    {"formats, and the reference of the active slot", "english", "", true, "read -10;1020=-10.000 dBm;menu F3/Down Return;menu F1/Down Return;read -20;1020=-20.000 dBm;menu F3/Down Return;menu F1/Up Return;"
     "read -80;1020=<-75.0 dBm;1023=0.025 nW;1008= -10.00 dBm;1022= -66.00 dB;read -30;1023=1.000 uW;1022= -20.00 dB;read -30.0000434;1023=1000.0 nW;1020=-30.000 dBm;"
     "read 30.913;1023=1234 mW;1020= 30.913 dBm;1022= +40.91 dB;read 41;1023=>9999 mW;menu F1/Down Return;menu=1310 nm|1550 nm;1004=1550 nm;1008= -20.00 dBm;1022= +61.00 dB"},
    {"zero only below -50", "english", "", true, "1020=-30.000 dBm;shot measuring-english;read -50;1020=-50.000 dBm;keys F2;boxes=Warning!: >-50dBm!;Zero0=;"
     "read -50.01;1020=-50.010 dBm;keys F2;boxes=;Zero0=65535"},
    {"reference keys", "english", "", true, "1020=-30.000 dBm;menu F3/Down Down Return;menu=Enter value|Set from input|Show reference;1022= -30.00 dB;"
     "menu F3/Down Return;menu=Enter value|Set from input|Hide reference;1022=  +0.00 dB;shot reference-english;ReferenceLevel0=-30;edit +;menu F3/Return;editor=Ref = |-30;1022= -60.00 dB;"
     "ReferenceLevel0=30;menu F3/Down Down Return;1022?=0;1008?=0;1036?=0;1038?=0"},
    {"light source steps", "english", "", true, "1113?=0;menu F4/Return;menu=1310 OFF|1550 OFF;1113=1310 continuous;1114?=1;shot laser-on-english;laser=1/0;menu F4/Return;menu=1310 ON|1550 OFF|All lasers off;"
     "1113=1310 modulated;laser=1/1;menu F4/Return;menu=1310 ON *|1550 OFF|All lasers off;1113?=0;1114?=0;laser=0/0;menu F4/Down Return;1113=1550 continuous;menu F4/Up Return;laser=0/0"},
    {"combinations", "english", "", true, "1020=-30.000 dBm;edit ;keys Left Right F1;editor=P, dBm|-30;boxes=;WaveCentralCoeff0=0;rm;edit ;keys Left Right F1;"
     "boxes=Error: Error ocurred during manual calibrating;menu Left Left Right F1/Escape;menu=1310 nm|1550 nm;menu Left Right F2/Escape;menu=PM1|PM2|NoOPM=0|NoOPM=1"},
    {"service failures", "english", "", true, "menu Left Right F2/Return;boxes=;1020= -5.000 dBm;read -30;menu Left Right F2/Down Return;boxes=Error: Error during factory calibration data changing to def;"
     "menu Left Right F2/Down Down Return;boxes=;NoOPM=0;rm;menu Left Right F2/Up Return;boxes=Error: Error during NoOPM key|Error: Error during factory calibration data rereading;"
     "menu Left Right F2/Return;boxes=Error: Error during factory calibration data changing to def|Error: Error during factory calibration data rereading"},
    {"close", "english", "", true, "menu F4/Return;menu F1/Down Return;live=1;close;live=0;laser=0/0;ActiveWaveLengthIndex=1;menu F4/Down Return;laser=2/0;destroy;laser=2/0"},
    {"no light source", "english", "", false, "keys=1110"},
    {"no meter", "english", "[faults]\nnoOlt1 = 1\n", true, "keys=0001;1112?=1;1112=No power meter;1004?=0;1020?=0;1023?=0;shot no-meter-english"},
    {"no meter", "german", "[faults]\nnoOlt1 = 1\n", true, "keys=0001;1112=Kein Leistungsmesser;shot no-meter-german"},
    {"views", "german", "", true, "1020=-30.000 dBm;shot measuring-german;menu F4/Return;1113=1310 Dauerlicht;shot laser-on-german;menu F3/Down Down Return;1022?=1;shot reference-german"},
};
// clang-format on

TEST_F(Screen, Scenarios) {
    QObject::connect(&boxWatch, &QTimer::timeout, [this] {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* box = qobject_cast<CMessageBoxEx*>(window); box && box->isVisible())
                boxes << box->windowTitle() + ": " +
                             box->findChild<QLabel*>("1192")->text().simplified(),
                    box->accept();
    });
    boxWatch.start(5);
    for (const auto& scenario : kScenarios) {
        SCOPED_TRACE(scenario.name);
        ScopedLanguagePack pack(scenario.language);
        Open(scenario.bench, scenario.lightSource);
        for (const QString& step : QString(scenario.steps).split(';')) Step(step);
    }
}

}  // namespace
