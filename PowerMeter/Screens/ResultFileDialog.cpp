#include "PowerMeter/Screens/ResultFileDialog.h"

#include <algorithm>

#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"
#include "PowerMeter/PowerMeter.h"

namespace {
constexpr UINT kNotResultsString = 61410;
constexpr UINT kEnterDescriptionString = 61411;
constexpr UINT kDescriptionKeyString = 61412;
constexpr UINT kPageUpKeyString = 61413;
constexpr UINT kPageDownKeyString = 61414;
constexpr UINT kCloseKeyString = 61415;
constexpr int kKeyFontHeight = 17;
constexpr int kScrollBarGap = 2;

int LastRow(const std::vector<OPMResult>& results) {
    return static_cast<int>(results.size()) - 1;
}
}  // namespace

CResultFileDialog::CResultFileDialog(QWidget* parent, COPMDocument* followed)
    : CBaseDialog(IDD, parent), document(followed != nullptr ? *followed : OPMDocument()) {
    FontCreator::CreateCommonFont(keyFont, kKeyFontHeight, 700);
    document.AddObserver(this);
    OnDocumentChanged(&document, COPMDocument::kResultAdded);
}

CResultFileDialog::~CResultFileDialog() {
    document.RemoveObserver(this);
}

void CResultFileDialog::OnDocumentChanged(COPMDocument* changed, int changeCode) {
    if (changeCode != COPMDocument::kResultAdded) return;
    const COPMDocument& source = changed != nullptr ? *changed : document;
    // A selection on the newest result (or on none) moves on to the one just
    // added, so a list left open during timed recording shows what comes in.
    const bool followNewest = selected >= LastRow(results);
    results.clear();
    results.reserve(source.GetResultsCount());
    for (size_t index = 0; index < source.GetResultsCount(); ++index)
        results.push_back(source.GetResult(index));
    if (followNewest) selected = std::max(0, LastRow(results));
    Refresh();
}

bool CResultFileDialog::OnInitDialog() {
    const bool result = CBaseDialog::OnInitDialog();
    OnMenuCommand(kDescriptionCommand, [this] { EditDescription(); });
    OnMenuCommand(kPageUpCommand, [this] { OnArrowPressed(0); });
    OnMenuCommand(kPageDownCommand, [this] { OnArrowPressed(2); });
    OnMenuCommand(kCloseCommand, [this] { EndDialog(IDOK); });

    OPM_ASSERT(m_ResultList.SubclassDlgItem(IDC_RESULT_LIST, this));
    OPM_ASSERT(m_Summary.SubclassDlgItem(IDC_SUMMARY, this));
    OPM_ASSERT_AT(m_VScrollBar.Create(WS_VISIBLE | SBS_VERT | WS_CHILD, CRect(), this, 101),
                  "ResultFileDialog", 56);
    const QRect list(m_ResultList.mapTo(this, QPoint(0, 0)), m_ResultList.size());
    m_VScrollBar.setGeometry(list.right() + 1 + kScrollBarGap, list.top(), CScrollBar::kWidth,
                             list.height());
    m_ResultList.SetScrollBar(&m_VScrollBar);
    connect(&m_ResultList, &CStaticResultCtrl::SelectionChanged, this, [this](int row) {
        selected = row;
        ShowTitle();
    });
    connect(&m_ResultList, &CStaticResultCtrl::RowActivated, this, [this] { EditDescription(); });
    Refresh();
    return result;
}

void CResultFileDialog::OnSetTexts() {
    title = GetDlgItemText(IDC_TITLE);
}

std::vector<CMenuKey*> CResultFileDialog::GetMenuKeys() {
    CMenuCtrl& menu = GetMenuCtrl();
    auto add = [&](UINT command, UINT caption) {
        return menu.AddKey(
            std::make_unique<CTextMenuKey>(command, ResourceString(caption), &keyFont));
    };
    descriptionKey = static_cast<CTextMenuKey*>(add(kDescriptionCommand, kDescriptionKeyString));
    return {descriptionKey, add(kPageUpCommand, kPageUpKeyString),
            add(kPageDownCommand, kPageDownKeyString), add(kCloseCommand, kCloseKeyString)};
}

void CResultFileDialog::Refresh() {
    if (!IsCreated()) return;
    // The list reports its clamped selection while it takes the new results.
    const int wanted = selected;
    m_ResultList.SetResults(&results, ResourceString(kNotResultsString));
    m_ResultList.SetSelected(wanted);
    m_Summary.SetResults(results);
    if (descriptionKey != nullptr) descriptionKey->setEnabled(!results.empty());
    ShowTitle();
}

// The position in the list beside the title: in a long list the scroll bar
// alone does not say where one is.
void CResultFileDialog::ShowTitle() {
    SetDlgItemText(
        IDC_TITLE,
        results.empty()
            ? title
            : QStringLiteral("%1  %2/%3").arg(title).arg(selected + 1).arg(results.size()));
}

void CResultFileDialog::EditDescription() {
    if (results.empty()) return;
    const size_t index = static_cast<size_t>(selected);
    CVirtualKeyboard keyboard(ResourceString(kEnterDescriptionString).toStdWString(),
                              results[index].description, this);
    if (keyboard.DoModal() != IDOK) return;
    // Results are only ever added while the keyboard is up, so the index
    // still names the result it was opened for.
    results[index].description = keyboard.GetText();
    document.SetDescription(index, keyboard.GetText());
    m_ResultList.update();
}

bool CResultFileDialog::OnArrowPressed(int direction) {
    const int page = m_ResultList.RowsFit();
    const int steps[] = {-page, -1, page, 1};
    m_ResultList.MoveSelection(steps[direction & 3]);
    return true;
}

bool CResultFileDialog::OnEnterPressed() {
    EditDescription();
    return true;
}

bool CResultFileDialog::OnEscapePressed() {
    EndDialog(IDCANCEL);
    return true;
}
