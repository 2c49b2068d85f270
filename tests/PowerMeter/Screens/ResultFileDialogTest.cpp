// The results list: row texts, the summary, scrolling a long list at the cost
// of the rows in view, and descriptions going back into the document.

#include <QLineEdit>
#include <QTemporaryDir>

#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "PowerMeter/Results/ResultFile.h"
#include "PowerMeter/Screens/ResultFileDialog.h"
#include "support/Screenshot.h"

namespace {

const std::wstring kUtf8Description = L"Spleiß Nord – Ø 9 µm";

OPMResult Result(float absPower, float refLevel = 0, std::wstring description = L"") {
    return {30, 5, 9, 15, 2, 2015, 0, 0, 0, 1310, absPower, refLevel, std::move(description)};
}

QString Joined(const std::array<QString, 3>& texts) {
    return texts[0] + "|" + texts[1] + "|" + texts[2];
}

struct Document : COPMDocument {
    using COPMDocument::Notify;
    const std::vector<OPMResult>& Results() const { return results; }
};

TEST(ResultTexts, RowsAndSummaryShowTheValueAgainstTheReferenceWhenOneWasSet) {
    using Rows = std::vector<OPMResult>;
    for (const auto& [results, summary] :
         {std::pair{Rows{Result(-10), Result(-12), Result(-14)},
                    "Min: -14.000|Max: -10.000|Avr: 1.633"},
          std::pair{Rows{Result(-20, -30)}, "Min: 10.000|Max: 10.000|Avr: 0.000"}})
        EXPECT_EQ(Joined(CResultSummaryBar::Texts(CResultSummaryBar::Summarise(results))), summary);
    EXPECT_EQ(CStaticResultCtrl::DisplayedValue(Result(-20, 0.00005f)), -20.0f);
    EXPECT_EQ(Joined(CStaticResultCtrl::RowTexts(Result(-23.4567f, 0, kUtf8Description))),
              QString::fromStdWString(L"2015-2-15 09:05| 1310 nm -23.457 dBm 0.000 dBm|" +
                                      kUtf8Description));
}

// The list follows the document's notifications; in a long list the selection
// stays in view and the scroll bar follows it, and a paint draws the rows in
// view only, wherever the list stands.
TEST(ResultList, FollowsTheDocumentAndDrawsOnlyTheRowsInView) {
    for (const auto& [language, empty, title] :
         {std::tuple{"english", "Not Results", "Results"},
          std::tuple{"german", "Keine Ergebnisse", "Ergebnisse"}}) {
        ScopedLanguagePack pack{language};
        Document document;
        CResultFileDialog dialog(nullptr, &document);
        ASSERT_TRUE(dialog.Create());
        dialog.show();
        CStaticResultCtrl& list = dialog.GetResultList();
        CScrollBar& bar = dialog.GetScrollBar();
        EXPECT_TRUE(dialog.GetDlgItem(CResultFileDialog::IDC_RESULT_LIST) == &list &&
                    dialog.GetDlgItem(CResultFileDialog::IDC_SUMMARY) == &dialog.GetSummaryBar() &&
                    dialog.GetDlgItem(101) == &bar);
        auto state = [&] {
            return QString("%1 %2 %3 %4 %5 %6")
                .arg(dialog.GetResults().size())
                .arg(dialog.GetSelected())
                .arg(list.GetFirstVisible())
                .arg(bar.isVisible() ? bar.value() : -1)
                .arg(list.grab().isNull() ? -1 : list.RowsPainted())
                .arg(dialog.GetDlgItemText(CResultFileDialog::IDC_TITLE).section(' ', -1));
        };
        EXPECT_EQ(dialog.GetDlgItemText(CResultFileDialog::IDC_RESULT_LIST), empty);
        EXPECT_EQ(state(), QString("0 0 0 -1 0 %1").arg(title));
        EXPECT_EQ(Joined(dialog.GetSummaryBar().ShownTexts()), "||");
        screenshot::Save(QString("results-empty-%1").arg(language), &dialog);

        for (const auto& description :
             {std::wstring(L"Patch A1"), kUtf8Description, std::wstring()}) {
            document.AddResult(Result(-10 - 2.0f * static_cast<float>(document.GetResultsCount()),
                                      0, description));
            if (document.GetResultsCount() == 1) document.Notify(COPMDocument::kResultAdded);
        }
        document.Notify(2);  // not a change the list follows
        EXPECT_EQ(state(), "1 0 0 -1 1 1/1");
        document.Notify(COPMDocument::kResultAdded);
        EXPECT_EQ(state(), "3 2 0 -1 3 3/3");
        EXPECT_EQ(dialog.GetDlgItemText(CResultFileDialog::IDC_RESULT_LIST), "");
        EXPECT_EQ(Joined(dialog.GetSummaryBar().ShownTexts()),
                  "Min: -14.000|Max: -10.000|Avr: 1.633");
        screenshot::Save(QString("results-rows-%1").arg(language), &dialog);

        // 100,000 results saved, previewed, loaded and listed.
        std::vector<OPMResult> many(100000, Result(-30));
        std::copy_n(document.Results().begin(), 3, many.begin());
        const QTemporaryDir dir;
        const QString file = dir.filePath("many.txt");
        resultfile::Write(file.toStdString(), many);
        std::wstring preview;
        ASSERT_TRUE(BuildPreview(file.toStdWString(), preview));
        EXPECT_EQ(QString::fromStdWString(preview).section('\n', 1, 2),
                  "size 100000\n1310 Abs -30.00");
        document.Clear();
        ASSERT_TRUE(document.Load(file.toStdWString()));
        document.Notify(COPMDocument::kResultAdded);
        const int fit = list.RowsFit(), end = 100000 - fit;
        ASSERT_GE(fit, 3);
        EXPECT_EQ(bar.maximum(), end);
        EXPECT_EQ(state(), QString("100000 99999 %1 %1 %2 100000/100000").arg(end).arg(fit));
        bar.setSliderPosition(50000);  // a drag
        EXPECT_EQ(state(), QString("100000 99999 50000 50000 %1 100000/100000").arg(fit));
        QTest::keyClick(&dialog, Qt::Key_Up);  // back to the selection
        EXPECT_EQ(state(), QString("100000 99998 %1 %1 %2 99999/100000").arg(end - 1).arg(fit));
        // Up a page twice, down a row and a page: the selection ends a page
        // up, on the bottom row.
        for (auto key : {Qt::Key_Left, Qt::Key_F2, Qt::Key_Down, Qt::Key_Right})
            QTest::keyClick(&dialog, key);
        const int selected = 99998 - fit + 1, top = selected - fit + 1;
        EXPECT_EQ(state(), QString("100000 %1 %2 %2 %3 %4/100000")
                               .arg(selected)
                               .arg(top)
                               .arg(fit)
                               .arg(selected + 1));
        QTest::mouseClick(&list, Qt::LeftButton, {}, QPoint(40, 8));
        EXPECT_EQ(dialog.GetSelected(), top);
        screenshot::Save(QString("results-long-%1").arg(language), &dialog);
    }
}

// F1, Enter or a second touch on the selected row opens the entry with the
// result's description; OK writes the text into the list and the document.
TEST(ResultList, DescriptionGoesIntoTheDocumentOnOkOnly) {
    ScopedLanguagePack pack{"english"};
    Document document;
    for (int i = 0; i < 3; ++i) document.AddResult(Result(-10, 0, L"old"));
    toolkittest::WhenShown<CResultFileDialog>("the results list", [&](CResultFileDialog* shown) {
        using Step = std::tuple<std::function<void()>, std::wstring, bool, size_t>;
        for (const auto& [open, text, ok, row] :
             {Step{[&] { QTest::keyClick(shown, Qt::Key_F1); }, kUtf8Description, true, 2},
              Step{[&] { QTest::keyClick(shown, Qt::Key_Return); }, L"cancelled", false, 2},
              Step{[&] {
                       for (int tap = 0; tap < 2; ++tap)
                           QTest::mouseClick(&shown->GetResultList(), Qt::LeftButton, {},
                                             QPoint(40, 8));
                   },
                   L"first", true, 0}}) {
            const std::wstring before = shown->GetResults()[row].description;
            toolkittest::WhenShown<CVirtualKeyboard>("the description entry", [&](auto* entry) {
                auto* edit =
                    qobject_cast<QLineEdit*>(GetDlgItem(entry, CVirtualKeyboard::IDC_TEXT));
                EXPECT_EQ(entry->windowTitle() + "|" + edit->text(),
                          QString::fromStdWString(L"Enter Description|" + before));
                edit->setText(QString::fromStdWString(text));
                screenshot::Save(QString("results-description-%1").arg(row), shown, {entry});
                ok ? QTest::keyClick(edit, Qt::Key_Return) : QTest::keyClick(edit, Qt::Key_Escape);
            });
            open();
            const std::wstring expected = ok ? text : before;
            EXPECT_EQ(document.GetResult(row).description, expected);
            EXPECT_EQ(shown->GetResults()[row].description, expected);
            EXPECT_EQ(CStaticResultCtrl::RowTexts(shown->GetResults()[row])[2],
                      QString::fromStdWString(expected));
        }
        EXPECT_EQ(document.GetResult(1).description, L"old");
        QTest::keyClick(shown, Qt::Key_Escape);
    });
    EXPECT_EQ(CResultFileDialog(nullptr, &document).DoModal(), IDCANCEL);
}

}  // namespace
