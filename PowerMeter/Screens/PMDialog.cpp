#include "PowerMeter/Screens/PMDialog.h"

#include <QAbstractButton>

#include "PowerMeter/Screens/MainMenuDialog.h"

CPMDialog::CPMDialog(UINT templateId, QWidget* parent) : CBaseDialog(templateId, parent) {}

CPMDialog::~CPMDialog() = default;

bool CPMDialog::OnInitDialog() {
    const bool result = CBaseDialog::OnInitDialog();
    // The hint tells a user without a manual where the menu is; it opens it
    // when touched. It never takes the focus, so Enter keeps its one meaning.
    if (auto* hint = qobject_cast<QAbstractButton*>(GetDlgItem(IDC_MAIN_MENU_HINT))) {
        hint->setFocusPolicy(Qt::NoFocus);
        connect(hint, &QAbstractButton::clicked, this, [this] { ShowMainMenu(); });
    }
    return result;
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
    CBaseDialog::OnDestroy();
}
