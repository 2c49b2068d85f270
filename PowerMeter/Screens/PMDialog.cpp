#include "PowerMeter/Screens/PMDialog.h"

#include <QAbstractButton>
#include <QFontMetrics>
#include <QLabel>

#include "Common/Utilities/LanguageResources.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Screens/MainMenuDialog.h"

namespace {
constexpr UINT IDS_NO_RESULTS = 61400;
constexpr UINT IDS_ONE_RESULT = 61401;
constexpr UINT IDS_RESULTS = 61402;
}  // namespace

CPMDialog::CPMDialog(UINT templateId, QWidget* parent) : CBaseDialog(templateId, parent) {}

CPMDialog::~CPMDialog() {
    StopWatchingDocument();
}

bool CPMDialog::OnInitDialog() {
    const bool result = CBaseDialog::OnInitDialog();
    // The hint tells a user without a manual where the menu is; it opens it
    // when touched. It never takes the focus, so Enter keeps its one meaning.
    if (auto* hint = qobject_cast<QAbstractButton*>(GetDlgItem(IDC_MAIN_MENU_HINT))) {
        hint->setFocusPolicy(Qt::NoFocus);
        connect(hint, &QAbstractButton::clicked, this, [this] { ShowMainMenu(); });
    }
    document = InstalledOPMDocument();
    if (document != nullptr) document->AddObserver(this);
    ShowResultsStatus();
    return result;
}

void CPMDialog::OnDocumentChanged(COPMDocument* /*document*/, int changeCode) {
    if (changeCode == COPMDocument::kResultAdded) ShowResultsStatus();
}

void CPMDialog::ShowResultsStatus() {
    auto* line = qobject_cast<QLabel*>(GetDlgItem(IDC_RESULTS_STATUS));
    if (line == nullptr) return;
    if (document == nullptr) return line->hide();
    const size_t count = document->GetResultsCount();
    QString text = count == 0   ? ResourceString(IDS_NO_RESULTS)
                   : count == 1 ? ResourceString(IDS_ONE_RESULT)
                                : ResourceString(IDS_RESULTS).arg(count);
    if (count > 0 && !document->GetFileName().empty())
        text += QStringLiteral(" · ") + QString::fromStdWString(document->GetFileName());
    // A long file name gives way in its middle; its start and extension stay.
    SetDlgItemText(IDC_RESULTS_STATUS,
                   QFontMetrics(line->font()).elidedText(text, Qt::ElideMiddle, line->width()));
}

void CPMDialog::StopWatchingDocument() {
    if (document != nullptr) document->RemoveObserver(this);
    document = nullptr;
}

void CPMDialog::ShowMainMenu() {
    if (!mainMenu) mainMenu = std::make_unique<CMainMenuDialog>(this);
    mainMenu->Open();
}

bool CPMDialog::OnEnterPressed() {
    ShowMainMenu();
    return true;
}

void CPMDialog::OnDestroy() {
    mainMenu.reset();
    StopWatchingDocument();
    CBaseDialog::OnDestroy();
}
