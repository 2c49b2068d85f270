#pragma once
// The base of the power meter's screens: a CBaseDialog that owns the modeless
// main menu panel. Enter, or a touch on the menu hint (control 1115) of the
// screen, opens the panel over the screen; the screen underneath keeps
// measuring. A line beside the hint (control 1116) tells how many results the
// document holds and which file they belong to, so a stored or loaded result
// is acknowledged on the screen the user is looking at.

#include <memory>

#include "Common/Toolkit/BaseDialog.h"
#include "PowerMeter/Results/OPMDocument.h"

class CMainMenuDialog;

constexpr int IDC_MAIN_MENU_HINT = 1115;
constexpr int IDC_RESULTS_STATUS = 1116;

class CPMDialog : public CBaseDialog, public CPMDocumentObserver {
    Q_OBJECT
public:
    explicit CPMDialog(UINT templateId, QWidget* parent = nullptr);
    ~CPMDialog() override;

    // Creates the panel on first use and brings it up with the focus.
    void ShowMainMenu();
    // Null until the panel was first opened.
    CMainMenuDialog* GetMainMenu() const { return mainMenu.get(); }

    // The results line from the document as it is now; a load does not
    // notify, so whoever loads calls this.
    void ShowResultsStatus();
    void OnDocumentChanged(COPMDocument* document, int changeCode) override;

protected:
    // A screen deriving from this one calls it first from its own.
    bool OnInitDialog() override;
    bool OnEnterPressed() override;
    void OnDestroy() override;

private:
    void StopWatchingDocument();

    std::unique_ptr<CMainMenuDialog> mainMenu;
    COPMDocument* document = nullptr;  // watched while the screen is up
};
