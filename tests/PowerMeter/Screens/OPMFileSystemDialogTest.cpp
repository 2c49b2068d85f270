// The result files dialog over a scratch flash folder: the preview beside the
// tree, the place it opens on, saving through the name entry and opening a
// file into the document.

#include <QFile>
#include <QLabel>
#include <QTemporaryDir>

#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/QuestionDialog.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/Registry.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Results/ResultFile.h"
#include "PowerMeter/Screens/OPMFileSystemDialog.h"
#include "support/Screenshot.h"

namespace {

QString Result(const char* date, const char* time, int nm, const char* abs, const char* ref) {
    return QString(R"({"Date":"%1","Time":"%2","WaveLen":"%3","Abs":"%4","Ref":"%5","Desc":""})")
        .arg(date, time)
        .arg(nm)
        .arg(abs, ref);
}
const QString kThree = "{\"OLTS\":[" + Result("2015-2-15", "09:05", 1310, "-12.34", "0.00") + "," +
                       Result("2015-2-15", "09:06", 1550, "-20.50", "0.00") + "," +
                       Result("2015-2-16", "10:00", 1550, "-20.50", "-3.00") + "]}";
const char* const kThreePreview =
    "2015-2-15/2015-2-16\nsize 3\n1310 Abs -12.34\n1550 Abs -20.50\n1550 Ref -17.50\n";

// Records every preview it builds, and whether the timer still ran then.
struct ProbedDialog : COPMFileSystemDialog {
    using COPMFileSystemDialog::OnTimer;
    QStringList built;
    bool MakePreview(const QString& path, std::wstring& text) override {
        built << path.section('/', -1) + (IsTimerRunning(kPreviewTimerId) ? "(timer on)" : "");
        return COPMFileSystemDialog::MakePreview(path, text);
    }
    QString Keys() {
        QStringList captions;
        for (unsigned slot = 0; slot < 4; ++slot)
            captions << static_cast<CTextMenuKey*>(GetMenuCtrl().GetCurrentKey(slot))->Caption();
        return captions.join('|');
    }
};

class FileDialog : public testing::Test {
protected:
    void SetUp() override {
        platform::LoadHiveFromText("[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n",
                                   hiveDir.filePath("registry.reg").toStdString());
        SetAppConfig(&config), SetOPMDocument(&document);
        QDir(flash.path()).mkpath("2015/empty");
        Write("2015/three.txt", kThree), Write("broken.txt", "OLTS = nothing");
        OneResult();
    }
    void OneResult() {
        OPMResult result;
        result.day = 1, result.year = 2016, result.waveLength = 850, result.absPower = -7.5f;
        document.Clear(), document.AddResult(result);
    }
    void TearDown() override { SetOPMDocument(nullptr), SetAppConfig(nullptr); }

    void Write(const QString& name, const QString& text) {
        QFile file(flash.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
    }
    QString Relative(const QString& path) const {
        return QDir(flash.path()).relativeFilePath(path);
    }
    // The dialog on the flash folder, opened and its preview built.
    std::unique_ptr<ProbedDialog> Open(const char* language = "english") {
        ScopedLanguagePack shown{language};
        auto dialog = std::make_unique<ProbedDialog>();
        dialog->SetLocationSource([this] {
            return std::vector<CFileSystemBrowser::Location>{{"Flash", flash.path()}};
        });
        dialog->Create(), dialog->show(), dialog->activateWindow();
        Settle(*dialog);
        return dialog;
    }
    static void Settle(ProbedDialog& dialog) {
        EXPECT_TRUE(toolkittest::WaitUntil(
            [&] { return !dialog.IsTimerRunning(COPMFileSystemDialog::kPreviewTimerId); }))
            << "waiting for the preview";
    }

    QTemporaryDir hiveDir, flash;
    ScopedLanguagePack pack{"english"};
    CAppConfig config{L"Software\\Tavix", 0};
    COPMDocument document;
};

// The keys, the place the dialog opens on (from the last saved file), what it
// previews there, in both languages; and a burst of moves previews once.
TEST_F(FileDialog, OpensOnTheLastSavedPlaceAndPreviewsTheCurrentFile) {
    using Row = std::tuple<const char*, const char*, const char*, const char*, const char*>;
    for (const auto& [language, lastSaved, current, preview, built] :
         {Row{"english", "2015/three.txt", "2015/three.txt", kThreePreview, "three.txt"},
          Row{"german", "2015/three.txt", "2015/three.txt", kThreePreview, "three.txt"},
          Row{"english", "broken.txt", "broken.txt", "Error to load file", "broken.txt"},
          Row{"german", "broken.txt", "broken.txt", "Error to load file", "broken.txt"},
          Row{"english", "2015/gone.txt", "2015", "", ""}}) {
        config.SetValue(LastSavedPathValue, flash.filePath(lastSaved).toStdWString());
        auto dialog = Open(language);
        EXPECT_EQ(dialog->Keys(), language == std::string("english")
                                      ? "Save|Open|Storage|Close"
                                      : "Speichern|Öffnen|Speicher|Schließen");
        EXPECT_EQ(Relative(dialog->CurrentPath()), current);
        EXPECT_EQ(dialog->GetDlgItemText(COPMFileSystemDialog::IDC_PREVIEW), preview) << lastSaved;
        EXPECT_EQ(dialog->built.join(' '), built);
        screenshot::Save(QString("result-files-%1-%2").arg(language).arg(*built ? built : "folder"),
                         dialog.get());
    }
    // Moves faster than the delay build one preview, with the timer stopped
    // first; another timer of the screen builds none.
    auto dialog = Open();
    for (const char* path : {"broken.txt", "2015", "2015/three.txt", "broken.txt"})
        dialog->SelectPath(flash.filePath(path));
    EXPECT_EQ(dialog->GetDlgItemText(COPMFileSystemDialog::IDC_PREVIEW), "");
    dialog->OnTimer(kStatusTimerId);
    Settle(*dialog);
    EXPECT_EQ(dialog->built.join(' '), "broken.txt");
    // The storage column closes on the key that opened it.
    toolkittest::WhenShown<CSubmenuDialog>(
        "the storage column", [](CSubmenuDialog* column) { QTest::keyClick(column, Qt::Key_F3); });
    QTest::keyClick(dialog.get(), Qt::Key_F3);
}

// Save writes into the current folder (a file's own folder) under the entered
// name, and the tree then shows the new file with its preview.
TEST_F(FileDialog, SaveWritesTheEnteredNameIntoTheCurrentFolderAndShowsTheFile) {
    using Row = std::tuple<const char*, const char*, const char*>;
    for (const auto& [select, typed, saved] : {Row{"2015/empty", "", "2015/empty/temp.txt"},
                                               Row{"2015/three.txt", "span A", "2015/span A.txt"},
                                               Row{"broken.txt", "", "temp.txt"}}) {
        auto dialog = Open();
        dialog->SelectPath(flash.filePath(select));
        toolkittest::WhenShown<CVirtualKeyboard>("the name entry", [typed](auto* keyboard) {
            if (*typed) {
                for (int i = 0; i < 4; ++i) QTest::keyClick(keyboard->focusWidget(), Qt::Key_Backspace);
                QTest::keyClicks(keyboard->focusWidget(), typed);
            }
            QTest::keyClick(keyboard, Qt::Key_Return);
        });
        QTest::keyClick(dialog.get(), Qt::Key_F1);
        const QString path = flash.filePath(saved);
        EXPECT_EQ(QString::fromStdWString(config.GetString(LastSavedPathValue, L"")), path);
        EXPECT_EQ(dialog->CurrentPath(), path);
        Settle(*dialog);
        EXPECT_EQ(dialog->GetDlgItemText(COPMFileSystemDialog::IDC_PREVIEW),
                  "2016-0-1/2016-0-1\nsize 1\n850 Abs -7.50\n");
        EXPECT_EQ(dialog->result(), 0);
    }
}

// Open asks before replacing the results and closes the dialog once they are
// loaded; a broken file shows the library's message; a folder has no file.
TEST_F(FileDialog, OpenLoadsTheFileOrShowsWhyNotAndLeavesTheResultsAlone) {
    using Row = std::tuple<const char*, Qt::Key, const char*, const char*, int, size_t>;
    for (const auto& [select, key, box, answer, code, results] :
         {Row{"2015/three.txt", Qt::Key_F2, "question", "Return", 0, 1},
          Row{"2015/three.txt", Qt::Key_F2, "question", "Left Return", IDOK, 3},
          Row{"2015/three.txt", Qt::Key_Return, "question", "Left Return", IDOK, 3},
          Row{"broken.txt", Qt::Key_F2, "Error|%1(1): expected value", "Return", 0, 1},
          Row{"2015", Qt::Key_F2, "!|No files", "Return", 0, 1}}) {
        OneResult();
        auto dialog = Open();
        dialog->SelectPath(flash.filePath(select));
        QString shown;
        toolkittest::WhenShown<QDialog>(
            "a box over the dialog",
            [&, answer = answer](QDialog* over) {
                auto* message = dynamic_cast<CMessageBoxEx*>(over);
                shown = message ? over->findChild<QLabel*>("caption")->text() + "|" +
                                      qobject_cast<QLabel*>(GetDlgItem(over, 1192))->text().replace('\n', ' ')
                                : over->inherits("CQuestionDialog") ? "question" : "?";
                if (message) screenshot::Save("result-files-open-error", dialog.get(), {over});
                for (const QString& step : QString(answer).split(' '))
                    QTest::keyClick(over, QKeySequence(step)[0].key());
            },
            dialog.get());
        QTest::keyClick(dialog.get(), key);
        EXPECT_EQ(shown, QString(box).replace("%1", flash.filePath("broken.txt")));
        EXPECT_EQ(dialog->result(), code) << select;
        EXPECT_EQ(document.GetResultsCount(), results);
        EXPECT_EQ(document.GetResult(0).waveLength, results == 3 ? 1310 : 850);
    }
}

}  // namespace
