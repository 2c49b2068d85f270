#pragma once
// The results list (template 395): every result of the measurement document
// in a scrolling list with a summary bar, kept up to date while it is open,
// and the entry of a result's description. Up and Down move the selection,
// Left and Right (F2, F3) a page; Enter or F1 (or a second touch on the
// selected row) edits the description, which goes back into the document;
// F4 and Escape close.

#include <QFont>
#include <QString>
#include <vector>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/ScrollBar.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Screens/ResultSummaryBar.h"
#include "PowerMeter/Screens/StaticResultCtrl.h"

class CTextMenuKey;

class CResultFileDialog : public CBaseDialog, public CPMDocumentObserver {
    Q_OBJECT
public:
    static constexpr UINT IDD = 395;
    static constexpr int IDC_TITLE = 1010;
    static constexpr int IDC_RESULT_LIST = 1401;
    static constexpr int IDC_SUMMARY = 1402;
    static constexpr UINT kDescriptionCommand = 1;
    static constexpr UINT kPageUpCommand = 2;
    static constexpr UINT kPageDownCommand = 3;
    static constexpr UINT kCloseCommand = 4;

    // Follows `document`, or the application's when none is given.
    explicit CResultFileDialog(QWidget* parent = nullptr, COPMDocument* document = nullptr);
    ~CResultFileDialog() override;

    void OnDocumentChanged(COPMDocument* document, int changeCode) override;

    const std::vector<OPMResult>& GetResults() const { return results; }
    int GetSelected() const { return selected; }
    CStaticResultCtrl& GetResultList() { return m_ResultList; }
    CResultSummaryBar& GetSummaryBar() { return m_Summary; }
    CScrollBar& GetScrollBar() { return m_VScrollBar; }

    // The description entry for the selected result.
    void EditDescription();

protected:
    bool OnInitDialog() override;
    void OnSetTexts() override;
    std::vector<CMenuKey*> GetMenuKeys() override;
    bool OnArrowPressed(int direction) override;
    bool OnEnterPressed() override;
    bool OnEscapePressed() override;

private:
    void Refresh();
    void ShowTitle();

    COPMDocument& document;
    std::vector<OPMResult> results;
    int selected = 0;

    // The list follows the bar, so it goes first.
    CScrollBar m_VScrollBar;
    CResultSummaryBar m_Summary;
    CStaticResultCtrl m_ResultList;
    CTextMenuKey* descriptionKey = nullptr;
    QString title;
    QFont keyFont;
};
