#pragma once
// The base of the power meter's screens: a CBaseDialog that owns the modeless
// main menu panel. Enter, or a touch on the menu hint (control 1115) of the
// screen, opens the panel over the screen; the screen underneath keeps
// measuring.

#include <memory>

#include "Common/Toolkit/BaseDialog.h"

class CMainMenuDialog;

constexpr int IDC_MAIN_MENU_HINT = 1115;

class CPMDialog : public CBaseDialog {
    Q_OBJECT
public:
    explicit CPMDialog(UINT templateId, QWidget* parent = nullptr);
    ~CPMDialog() override;

    // Creates the panel on first use and brings it up with the focus.
    void ShowMainMenu();
    // Null until the panel was first opened.
    CMainMenuDialog* GetMainMenu() const { return mainMenu.get(); }

protected:
    // A screen deriving from this one calls it first from its own.
    bool OnInitDialog() override;
    bool OnEnterPressed() override;
    void OnDestroy() override;

private:
    std::unique_ptr<CMainMenuDialog> mainMenu;
};
