// The main menu panel over a measuring screen, the parameter dialog and timed
// recording, on the simulated instrument: an image assembled once per process
// gives the hive, the module and the meter's driver.

#include <unistd.h>

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/Logging.h"
#include "Common/Toolkit/IUserNotifier.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/ModulePath.h"
#include "Platform/Registry.h"
#include "Platform/StreamDeviceFaults.h"
#include "Platform/WideText.h"
#include "PowerMeter/Devices/ModuleDll.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/AutoSave.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Screens/MainMenuDialog.h"
#include "PowerMeter/Screens/PMDialog.h"
#include "PowerMeter/Screens/PowerMeterParamDialog.h"
#include "Simulator/SimulatorTestSupport.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"
#include "support/Screenshot.h"

namespace {

constexpr UINT kMeasuringScreen = 394;

const std::string& Image() {
    static const struct Made {
        pid_t owner = getpid();
        std::string dir = (std::filesystem::temp_directory_path() / "opm-menu-XXXXXX").string();
        Made() {
            const std::string script = OPM_MAKE_IMAGE " --fresh " OPM_BUILD_DIR " " +
                                       (dir = mkdtemp(dir.data()) + std::string("/"));
            if (std::system(script.c_str()) != 0) throw std::runtime_error(script + " failed");
        }
        ~Made() { getpid() == owner&& std::filesystem::remove_all(dir); }
    } image;
    return image.dir;
}

QString Caption(CMainMenuDialog* panel, unsigned slot) {
    auto* key = dynamic_cast<CTextMenuKey*>(panel->GetMenuCtrl().GetCurrentKey(slot));
    return key != nullptr ? key->Caption() : QString();
}

class MainMenu : public testing::Test, public IUserNotifier {
protected:
    void SetUp() override {
        platform::OverrideModuleFileName(platform::FromUtf8(Image() + "PowerMeter"));
        platform::LoadHiveFromText(ScratchDirectory::Read(Image() + "registry.reg"));
        platform::DeactivateStreamDevices();
        log = std::make_unique<TLogFile>((bench.directory + "/PowerMeter.log").c_str(), 1, 0);
        SetLogFile(log.get());
        SetLenUnit(&lenUnit);
        SetAppConfig(&config);
        SetOPMDocument(&document);
        ResetAutoSave();
    }
    void TearDown() override {
        toolkittest::CloseAllBoxes();
        ResetAutoSave();
        SetPowerMeterDeviceManager(nullptr);
        manager.reset();
        delete ModuleDll;
        ModuleDll = nullptr;
        SetOPMDocument(nullptr);
        SetAppConfig(nullptr);
        SetLenUnit(nullptr);
        SetLogFile(nullptr);
    }
    void InstallMeter() {
        manager = std::make_unique<CPowerMeterDeviceManager>(config, *this);
        ASSERT_TRUE(manager->Init());
        ASSERT_NE(manager->GetPowerMeter(), nullptr);
        SetPowerMeterDeviceManager(manager.get());
    }
    // The measuring screen with its panel open by Enter.
    CMainMenuDialog* OpenPanel() {
        screen.Create();
        screen.show();
        QTest::keyClick(&screen, Qt::Key_Return);
        return screen.GetMainMenu();
    }
    void ShowMessage(const std::wstring& text) override { ADD_FAILURE() << platform::ToUtf8(text); }

    ScopedLanguagePack pack{"english"};
    simtest::TempBench bench;
    std::unique_ptr<TLogFile> log;
    TLenUnit lenUnit;
    CAppConfig config{L"Software\\Tavix", 0};
    COPMDocument document;
    std::unique_ptr<CPowerMeterDeviceManager> manager;
    CPMDialog screen{kMeasuringScreen};
};

TEST_F(MainMenu, OpensOverTheScreenWithEnterOrTheHintAndClosesWithEscape) {
    CMainMenuDialog* panel = OpenPanel();
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    // Modeless: the screen's own loop goes on measuring underneath.
    EXPECT_FALSE(panel->isModal());
    EXPECT_EQ(panel->geometry().bottom(), screen.mapToGlobal(QPoint(0, screen.height() - 1)).y());
    EXPECT_EQ(panel->width(), screen.width());
    EXPECT_EQ(Caption(panel, 1), "Parameters");
    EXPECT_EQ(Caption(panel, 2), "");  // the results come later: no key for them yet
    EXPECT_EQ(Caption(panel, 3), "Quit");

    QTest::keyClick(panel, Qt::Key_Escape);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(screen.isVisible());
    QTest::mouseClick(screen.GetDlgItem(IDC_MAIN_MENU_HINT), Qt::LeftButton);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(screen.GetDlgItemText(IDC_MAIN_MENU_HINT), "Enter ▸ Menu");
}

TEST_F(MainMenu, StoreKeyTakesOneResultOrStartsAndStopsRecording) {
    InstallMeter();
    const struct {
        bool autoSave;
        Qt::Key key;  // the store key is the one focused first
        const char* before;
        const char* after;
        size_t results;
        bool running;
    } rows[] = {
        {false, Qt::Key_F1, "Store result", "Store result", 1, false},
        {false, Qt::Key_Return, "Store result", "Store result", 1, false},
        {true, Qt::Key_F1, "● Record", "■ Stop", 0, true},
        {true, Qt::Key_Space, "● Record", "■ Stop", 0, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.before + std::string(" by ") + QKeySequence(row.key).toString().toStdString());
        ResetAutoSave();
        document.Clear();
        config.SetValue<bool>(autosave::AutoSaveValue, row.autoSave);
        CMainMenuDialog* panel = OpenPanel();
        EXPECT_EQ(Caption(panel, 0), row.before);
        QTest::keyClick(panel, row.key);
        EXPECT_FALSE(panel->isVisible());
        EXPECT_EQ(document.GetResultsCount(), row.results);
        EXPECT_EQ(IsAutoSaveRunning(), row.running);
        panel = OpenPanel();
        EXPECT_EQ(Caption(panel, 0), row.after);
        EXPECT_EQ(panel->GetDlgItemText(1310), row.running ? "Menu – recording" : "Menu");
        if (!row.autoSave) continue;
        // A tick records; the stop key ends recording and takes nothing.
        OnAutoSaveTimer();
        EXPECT_EQ(document.GetResultsCount(), 1u);
        QTest::keyClick(panel, Qt::Key_F1);
        EXPECT_FALSE(IsAutoSaveRunning());
        EXPECT_EQ(document.GetResultsCount(), 1u);
    }
}

TEST_F(MainMenu, WithoutAMeterTheStoreKeyIsDisabledAndSkipped) {
    CMainMenuDialog* panel = OpenPanel();
    EXPECT_FALSE(panel->GetMenuCtrl().GetCurrentKey(0)->isEnabled());
    QTest::keyClick(panel, Qt::Key_F1);
    EXPECT_TRUE(panel->isVisible());
    // The arrows go round parameters and quit only; Enter on quit ends the screen.
    QTest::keyClick(panel, Qt::Key_Right);
    QTest::keyClick(panel, Qt::Key_Right);
    QTest::keyClick(panel, Qt::Key_Left);
    toolkittest::WhenShown<CPMDialog>("the measuring screen", [&](CPMDialog*) {
        QTest::keyClick(panel, Qt::Key_Return);
    });
    EXPECT_EQ(screen.exec(), IDCANCEL);
    EXPECT_FALSE(panel->isVisible());
}

TEST_F(MainMenu, QuitEndsTheScreen) {
    InstallMeter();
    toolkittest::WhenShown<CPMDialog>("the measuring screen", [&](CPMDialog* shown) {
        QTest::keyClick(shown, Qt::Key_Return);
        QTest::keyClick(shown->GetMainMenu(), Qt::Key_F4);
    });
    EXPECT_EQ(screen.DoModal(), IDCANCEL);
    EXPECT_EQ(document.GetResultsCount(), 0u);
}

// Steps run inside the dialog's loop: keys by name, "tap<id>" a touch.
void Drive(CPowerMeterParamDialog* dialog, const QStringList& steps) {
    for (const QString& step : steps) {
        if (step.startsWith("tap"))
            QTest::mouseClick(dialog->GetDlgItem(step.mid(3).toInt()), Qt::LeftButton);
        else
            QTest::keyClick(dialog, QKeySequence(step)[0].key());
    }
}

TEST_F(MainMenu, ParametersWriteTheChangedValuesOnOkAndNoneOnEscape) {
    const struct {
        const char* name;
        QStringList steps;
        std::optional<bool> autoSave;  // empty: never written
        std::optional<int> index;
        int unit;
        const wchar_t* language;
        const char* box;  // expected message text, if any
    } rows[] = {
        {"ok", {"Right", "Down", "Right", "tap1351", "Down", "Left", "Down", "Right", "Return"},
         true, 2, 4, L"german.rcc", "The new language is used from the next start."},
        {"escape", {"Right", "Down", "Right", "Down", "Left", "Down", "Right", "Esc"},
         std::nullopt, std::nullopt, 0, L"english.rcc", nullptr},
        {"ok without language", {"Up", "Up", "Right", "Up", "Left", "Return"},
         std::nullopt, 5, 1, L"english.rcc", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        platform::LoadHiveFromText(ScratchDirectory::Read(Image() + "registry.reg"));
        CPMDialog owner(kMeasuringScreen);
        CPowerMeterParamDialog dialog(&owner);
        std::string boxText;
        toolkittest::WhenShown<CPowerMeterParamDialog>("the parameters", [&](auto* shown) {
            EXPECT_EQ(shown->FieldText(CPowerMeterParamDialog::kIntervalField), "00:10");
            EXPECT_EQ(shown->FieldText(CPowerMeterParamDialog::kUnitField), "kilometres (km)");
            if (row.box != nullptr)
                toolkittest::WhenShown<CMessage>("the next-start box", [&](CMessage* box) {
                    boxText = platform::ToUtf8(box->Text());
                    QTest::keyClick(box, Qt::Key_Return);
                });
            Drive(shown, row.steps);
        });
        dialog.DoModal();
        EXPECT_EQ(boxText, row.box ? row.box : "");
        EXPECT_EQ(config.GetValue<bool>(autosave::AutoSaveValue), row.autoSave);
        EXPECT_EQ(config.GetValue<int>(autosave::AutoSaveIndexValue), row.index);
        EXPECT_EQ(config.GetValue<int>(L"UIDistanceUnit"), row.unit);
        EXPECT_EQ(config.GetString(L"DefaultLanguageDLL", L""), row.language);
    }
    EXPECT_EQ(lenUnit.GetUnit(), 1);
}

TEST_F(MainMenu, ParametersShowTheStoredValues) {
    const struct {
        const char* index;
        const char* unit;
        const char* language;
        const char* interval;
        const char* unitText;
        const char* languageText;
    } rows[] = {
        {"3", "2", "German.rcc", "01:00", "feet (ft)", "Deutsch"},
        {"5", "3", "english.rcc", "05:00", "kilofeet (kf)", "English"},
        {"9", "0", "thai.rcc", "00:10", "kilometres (km)", "thai.rcc"},
    };
    for (const auto& row : rows) {
        platform::LoadHiveFromText(std::string("Windows Registry Editor Version 5.00\n\n"
                                               "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n") +
                                   "\"PowerMeter_AutoSave\"=\"1\"\n\"PowerMeter_AutoSaveIndex\"=\"" +
                                   row.index + "\"\n\"UIDistanceUnit\"=\"" + row.unit +
                                   "\"\n\"DefaultLanguageDLL\"=\"" + row.language + "\"\n");
        CPowerMeterParamDialog dialog;
        ASSERT_TRUE(dialog.Create());
        EXPECT_EQ(dialog.FieldText(CPowerMeterParamDialog::kAutoSaveField), "On");
        EXPECT_EQ(dialog.FieldText(CPowerMeterParamDialog::kIntervalField), row.interval);
        EXPECT_EQ(dialog.FieldText(CPowerMeterParamDialog::kUnitField), row.unitText);
        EXPECT_EQ(dialog.FieldText(CPowerMeterParamDialog::kLanguageField), row.languageText);
    }
}

// The state machine's deliberate oddities, without the panel.
TEST_F(MainMenu, RecordingSwitchedOffWhileRunningRecordsOnceMoreAndNeedsTwoStoresToStartAgain) {
    InstallMeter();
    config.SetValue<bool>(autosave::AutoSaveValue, true);
    const struct {
        void (*action)();
        bool setting;  // set before the action
        size_t results;
        bool running;
    } steps[] = {
        {OnStoreResultCommand, true, 0, true},   // starts, takes nothing yet
        {OnAutoSaveTimer, true, 1, true},        // a tick records
        {OnAutoSaveTimer, false, 2, true},       // off: records once more, flag left set
        {OnStoreResultCommand, false, 3, true},  // off: one result at once
        {OnStoreResultCommand, true, 3, false},  // on again: only clears the flag
        {OnStoreResultCommand, true, 3, true},   // and now starts
    };
    for (const auto& step : steps) {
        config.SetValue<bool>(autosave::AutoSaveValue, step.setting);
        step.action();
        EXPECT_EQ(document.GetResultsCount(), step.results);
        EXPECT_EQ(IsAutoSaveRunning(), step.running);
    }
}

TEST_F(MainMenu, Screenshots) {
    InstallMeter();
    for (const char* language : {"english", "german"}) {
        ScopedLanguagePack shown{language};
        CPMDialog measuring(kMeasuringScreen);
        measuring.Create();
        measuring.show();
        screenshot::Save(QString("measuring-%1").arg(language), &measuring);
        measuring.ShowMainMenu();
        CMainMenuDialog* panel = measuring.GetMainMenu();
        screenshot::Save(QString("main-menu-%1").arg(language), &measuring, {panel});
        config.SetValue<bool>(autosave::AutoSaveValue, true);
        OnStoreResultCommand();
        panel->UpdateKeys();
        screenshot::Save(QString("main-menu-recording-%1").arg(language), &measuring, {panel});
        config.SetValue<bool>(autosave::AutoSaveValue, false);
        CPowerMeterParamDialog parameters(&measuring);
        parameters.Create();
        parameters.show();
        QTest::keyClick(&parameters, Qt::Key_Down);
        screenshot::Save(QString("parameters-%1").arg(language), &parameters);
        EXPECT_EQ(Caption(panel, 0), language == std::string("german") ? "■ Stopp" : "■ Stop");
        ResetAutoSave();
    }
}

}  // namespace
