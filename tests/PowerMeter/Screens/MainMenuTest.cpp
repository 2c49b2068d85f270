// The main menu panel over a measuring screen, the parameter dialog and timed
// recording, on the simulated instrument.

#include "Common/Settings/CommonConfig.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "PowerMeter/Results/AutoSave.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Results/ResultFile.h"
#include "PowerMeter/Screens/MainMenuDialog.h"
#include "PowerMeter/Screens/OPMFileSystemDialog.h"
#include "PowerMeter/Screens/PMDialog.h"
#include "PowerMeter/Screens/PowerMeterParamDialog.h"
#include "PowerMeter/Screens/ResultFileDialog.h"
#include "ScreenTestSupport.h"

namespace {

QString Join(int count, auto text) {
    QStringList texts;
    for (int i = 0; i < count; ++i) texts << text(i);
    return texts.join('|');
}

// The soft keys' captions and the title.
QString Texts(CMainMenuDialog* panel) {
    return Join(5, [&](int i) {
        auto* key = dynamic_cast<CTextMenuKey*>(panel->GetMenuCtrl().GetCurrentKey(i));
        return i == 4 ? panel->GetDlgItemText(1310) : key ? key->Caption() : "";
    });
}

class MainMenu : public screentest::Instrument {
protected:
    void SetUp() override { Instrument::SetUp(), SetOPMDocument(&document), StartDevices(); }
    void TearDown() override { ResetAutoSave(), SetOPMDocument(nullptr), Instrument::TearDown(); }

    ScopedLanguagePack pack{"english"};
    COPMDocument document;
};

TEST_F(MainMenu, PanelAndParametersInEitherLanguage) {
    for (const auto& [language, texts] :
         {std::pair{"english", "Store result|Parameters|Results|Quit|Menu|Enter ▸ Menu"},
          std::pair{"german", "Speichern|Parameter|Ergebnisse|Beenden|Menü|Enter ▸ Menü"}}) {
        ScopedLanguagePack shown{language};
        CPMDialog screen(394);
        CPowerMeterParamDialog parameters(&screen);
        screen.Create(), screen.ShowMainMenu(), parameters.Create(), parameters.show();
        EXPECT_EQ(Texts(screen.GetMainMenu()) + "|" + screen.GetDlgItemText(1115), QString(texts));
        EXPECT_EQ(screen.GetMainMenu()->geometry().bottom(),
                  screen.mapToGlobal(QPoint(0, 479)).y());
        screenshot::Save(QString("main-menu-%1").arg(language), &screen, {screen.GetMainMenu()});
        screenshot::Save(QString("parameters-%1").arg(language), &parameters);
    }
}

// The store key on the panel (focused first, so Enter presses it too) and the
// timed recording behind it, whose oddities show through the commands alone.
TEST_F(MainMenu, StoreKeyTakesOneResultOrStartsAndStopsRecordingAndQuitEndsTheScreen) {
    CPMDialog screen(394);
    screen.Create(), screen.show(), QTest::keyClick(&screen, Qt::Key_Return);
    EXPECT_EQ(screen.GetDlgItemText(IDC_RESULTS_STATUS), "No results stored");
    CMainMenuDialog* panel = screen.GetMainMenu();
    // The setting, the texts of the panel opened then, the command (null: the
    // key on the panel) and the results afterwards.
    using Step = std::tuple<bool, const char*, void (*)(), Qt::Key, size_t>;
    for (const auto& [setting, texts, command, key, results] :
         {Step{false, "Store result|Menu", nullptr, Qt::Key_F1, 1},
          Step{true, "● Record|Menu · 00:10", nullptr, Qt::Key_Return, 1},  // takes nothing yet
          Step{true, "■ Stop|Recording · 00:10", OnAutoSaveTimer, {}, 2},   // a tick records
          Step{false, "Store result|Menu", OnAutoSaveTimer, {}, 3},  // records once more, stops
          Step{false, "Store result|Menu", OnStoreResultCommand, {}, 4},
          Step{true, "■ Stop|Recording · 00:10", OnStoreResultCommand, {}, 4},  // flag left
                                                                                // set
          Step{true, "● Record|Menu · 00:10", nullptr, Qt::Key_F1, 4},
          Step{true, "■ Stop|Recording · 00:10", nullptr, Qt::Key_F1, 4}}) {
        config.SetValue<bool>(autosave::AutoSaveValue, setting);
        panel->Open();
        EXPECT_EQ(Texts(panel).remove("|Parameters|Results|Quit"), QString(texts));
        command ? command() : QTest::keyClick(panel, key);
        EXPECT_EQ(panel->isVisible(), command != nullptr);  // the key hides the panel first
        EXPECT_EQ(document.GetResultsCount(), results);
        // The screen's results line follows every result added.
        EXPECT_EQ(screen.GetDlgItemText(IDC_RESULTS_STATUS),
                  results == 1 ? "1 result" : QString("%1 results").arg(results));
    }
    QTest::keyClick(panel, Qt::Key_Escape);
    EXPECT_FALSE(panel->isVisible());
    // Touching the hint opens the panel; without a meter the arrows go round
    // the store key, and Enter on quit ends the screen.
    SetPowerMeterDeviceManager(nullptr);
    QTest::mouseClick(screen.GetDlgItem(IDC_MAIN_MENU_HINT), Qt::LeftButton);
    for (auto key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Left, Qt::Key_Return})
        QTest::keyClick(panel, key);
    EXPECT_EQ(screen.result(), IDCANCEL);
}

// F3's column leads to the results list (left with Escape) and to the result
// files, where F2 opens the last saved file: the measuring screen shows it.
TEST_F(MainMenu, ResultsColumnOpensTheListAndTheFilesAndAnOpenedFileShowsOnTheScreen) {
    const QString file = QDir(CFileSystemBrowser::DataFolder()).filePath("span.txt");
    resultfile::Write(file.toStdString(), std::vector<OPMResult>(2));
    config.SetValue(LastSavedPathValue, file.toStdWString());
    CPMDialog screen(394);
    screen.Create(), screen.show(), screen.ShowMainMenu();
    for (const bool files : {false, true}) {
        toolkittest::WhenShown<CSubmenuDialog>("the results column", [files](CSubmenuDialog* c) {
            if (files) QTest::keyClick(c, Qt::Key_Down);
            QTest::keyClick(c, Qt::Key_Return);
        });
        auto close = [](auto* d) { QTest::keyClick(d, Qt::Key_Escape); };
        auto open = [](auto* d) { QTest::keyClick(d, Qt::Key_F2); };
        files ? toolkittest::WhenShown<COPMFileSystemDialog>("the result files", open)
              : toolkittest::WhenShown<CResultFileDialog>("the results list", close);
        QTest::keyClick(screen.GetMainMenu(), Qt::Key_F3);
        EXPECT_EQ(screen.GetMainMenu()->isVisible(), !files);
    }
    EXPECT_EQ(screen.GetDlgItemText(IDC_RESULTS_STATUS), "2 results · span.txt");
    QFile::remove(file);
}

TEST_F(MainMenu, ParametersShowTheStoredValuesAndWriteTheChangedOnesOnOkOnly) {
    const wchar_t* const values[] = {autosave::AutoSaveValue, autosave::AutoSaveIndexValue,
                                     UIDistanceUnitValue, L"DefaultLanguageDLL"};
    auto stored = [&](int i) { return QString::fromStdWString(config.GetString(values[i], L"-")); };
    // The settings before ('-' absent), the steps (keys by name, "tap<id>" a
    // touch), the fields shown then, the last key, the settings afterwards and
    // the box's text.
    using Row = std::tuple<const char*, const char*, QString, const char*, QString, const char*>;
    for (const auto& [before, steps, fields, last, after, message] :
         {Row{"-|-|-|english.rcc", "Right Down Right tap1351 Down Left tap1333 Right",
              "On|00:30|miles (mi)|Deutsch", "Return", "1|2|4|german.rcc",
              "The new language is used from the next start."},
          Row{"1|9|2|thai.rcc", "Up Left Up Left Up Left tap1320 Right",
              "Off|05:00|metres (m)|Deutsch", "Esc", "1|9|2|thai.rcc", ""},
          Row{"-|3|0|german.rcc", "Down Left", "Off|00:30|kilometres (km)|Deutsch", "Return",
              "-|2|0|german.rcc", ""}}) {
        platform::LoadHiveFromText("[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n");
        for (int i = 0; i < 4; ++i)
            if (QString text = QString(before).section('|', i, i); text != "-")
                config.SetValue(values[i], text.toStdWString());
        toolkittest::WhenShown<CPowerMeterParamDialog>("the parameters", [&](auto* shown) {
            if (*message)
                toolkittest::WhenShown<CMessage>("the next-start box", [&](CMessage* shownBox) {
                    EXPECT_EQ(QString::fromStdWString(shownBox->Text()), message);
                    shownBox->accept();
                });
            for (const QString& step : QString(steps).split(' '))
                step.startsWith("tap")
                    ? QTest::mouseClick(shown->GetDlgItem(step.mid(3).toInt()), Qt::LeftButton)
                    : QTest::keyClick(shown, screentest::Key(step));
            EXPECT_EQ(Join(4, [&](int i) { return shown->GetDlgItemText(1330 + i); }), fields);
            QTest::keyClick(shown, screentest::Key(last));
        });
        CPowerMeterParamDialog().DoModal();
        EXPECT_EQ(Join(4, stored), after);
    }
    EXPECT_EQ(lenUnit.GetUnit(), 4);
}

}  // namespace
