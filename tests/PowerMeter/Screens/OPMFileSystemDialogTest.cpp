// The result files dialog over a scratch flash folder, driven by keys.

#include <QLabel>

#include "Common/Toolkit/MessageBoxEx.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Screens/OPMFileSystemDialog.h"
#include "ScreenTestSupport.h"

namespace {

// Notes each preview it builds, with a preview timer still running or an old
// preview still shown then.
struct Probed : COPMFileSystemDialog {
    QStringList notes;
    bool MakePreview(const QString& path, std::wstring& text) override {
        notes << (IsTimerRunning(kPreviewTimerId) ? "built(timer on)" : "built") +
                     GetDlgItemText(IDC_PREVIEW);
        return COPMFileSystemDialog::MakePreview(path, text);
    }
};

using FileDialog = screentest::Instrument;

// Steps: "/path" made current; "?" notes the current item and its preview
// once built; "!keys" go to the box the next key opens, whose text is noted;
// otherwise a key. The soft keys are noted first, the results and the
// dialog's code last.
TEST_F(FileDialog, OpensOnTheLastSavedFilePreviewsSavesAndOpens) {
    ScopedLanguagePack pack{"english"};
    COPMDocument document;
    const QDir dir(CFileSystemBrowser::DataFolder());
    SetOPMDocument(&document), dir.mkpath("2015/empty");
    for (const auto& [name, text] : {std::pair{"bad.txt", "OLTS"}, {"2015/a.txt", R"({"OLTS":[{
            "Date":"2015-2-15","Time":"9:5","WaveLen":"1310","Abs":"-12.34","Ref":"-2"}]})"}}) {
        QFile file(dir.filePath(name));
        file.open(QIODevice::WriteOnly), file.write(text);
    }
    const QString a = "2015/a.txt=2015-2-15/2015-2-15\nsize 1\n1310 Ref -10.34\n ",
                  en = "Save Open More Close ", bad = "bad.txt=Error to load file ",
                  two = "=2015-2-15/2015-2-15\nsize 2\n1310 Ref -10.34\n1310 Ref -10.34\n ",
                  ask = "DO YOU REALLY WANT TO OPEN FILE?UNSAVED DATA WILL BE LOST! ";
    using Row = std::tuple<const char*, const char*, const char*, QString>;
    for (const auto& [language, lastSaved, steps, notes] :
         {Row{"english", "2015/a.txt", "? /2015/a.txt /2015 /bad.txt ? !F3 F3",
              en + "built " + a + "built " + bad + "2 0"},
          Row{"german", "bad.txt", "? /2015/a.txt ?",
              "Speichern Öffnen Mehr Schließen built " + bad + "built " + a + "2 0"},
          Row{"english", "2015/gone.txt", "? /2015/empty !Return F1 ? /bad.txt ? !Return F1 ?",
              en + "2015= File name built 2015/empty/temp.txt" + two + "built " + bad +
                  "File name built temp.txt" + two + "2 0"},
          Row{"english", "bad.txt",
              "? !Return F2 /2015 !Return F2 /2015/a.txt ? !Return F2 !Left,Return Return",
              en + "built " + bad + "Error bad.txt(1): expected value ! No files built " + a + ask +
                  ask + "1 1"}}) {
        ScopedLanguagePack shown{language};
        document.Clear(), document.Load(dir.filePath("2015/a.txt").toStdWString());
        document.AddResult(document.GetResult(0));
        config.SetValue(L"PowerMeter_LastSavedPath", dir.filePath(lastSaved).toStdWString());
        Probed d;
        // Only the preview timer may build a preview.
        d.Create(), d.show(), d.KillTimer(kStatusTimerId);
        for (unsigned slot = 0; slot < 4; ++slot)
            d.notes << static_cast<CTextMenuKey*>(d.GetMenuCtrl().GetCurrentKey(slot))->Caption();
        for (const QString& step : QString(steps).split(' ')) {
            if (step == "?") {
                EXPECT_TRUE(toolkittest::WaitUntil([&] { return !d.IsTimerRunning(305); }));
                d.notes << dir.relativeFilePath(d.CurrentPath()) + '=' + d.GetDlgItemText(1502);
                screenshot::Save(
                    QString("files-%1-%2").arg(language, QFileInfo(d.CurrentPath()).fileName()),
                    &d);
            } else if (step[0] == '/') {
                d.SelectPath(dir.filePath(step.mid(1)));
            } else if (step[0] == '!') {
                toolkittest::WhenShown<QDialog>(
                    "a box over the dialog",
                    [&, step](QDialog* box) {
                        for (QLabel* text : box->findChildren<QLabel*>())
                            d.notes << text->text().replace('\n', ' ');
                        for (const QString& key : step.mid(1).split(','))
                            QTest::keyClick(box, screentest::Key(key));
                    },
                    &d);
            } else {
                QTest::keyClick(&d, screentest::Key(step));
            }
        }
        d.notes << QString::number(document.GetResultsCount()) << QString::number(d.result());
        EXPECT_EQ(d.notes.join(' ').remove(dir.path() + '/'), notes);
    }
    SetOPMDocument(nullptr);
}

}  // namespace
