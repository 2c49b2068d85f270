#include "PowerMeter/Screens/PMDialog.h"

#include "PowerMeter/Screens/MainMenuDialog.h"

CPMDialog::CPMDialog(UINT templateId, QWidget* parent) : CBaseDialog(templateId, parent) {}

CPMDialog::~CPMDialog() = default;

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
