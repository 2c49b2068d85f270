#pragma once
// The base of the power meter's screens: a CBaseDialog that owns the modeless
// main menu panel. Enter, or a touch on the menu hint of the status line,
// opens the panel over the screen; the screen underneath keeps measuring.

#include <memory>

#include "Common/Toolkit/BaseDialog.h"

class CMainMenuDialog;

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
    bool OnEnterPressed() override;
    void OnDestroy() override;

private:
    std::unique_ptr<CMainMenuDialog> mainMenu;
};
