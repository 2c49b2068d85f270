#pragma once
// The main menu: a modeless panel over its screen (template 398) with the
// store-result command (or start/stop of timed recording), the parameters
// and quit. Escape hides it and gives the focus back to the screen.

#include "Common/Toolkit/BaseDialog.h"

class CPMDialog;

class CMainMenuDialog : public CBaseDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 398;

    explicit CMainMenuDialog(CPMDialog* owner);
    ~CMainMenuDialog() override;

    // Shows the panel (creating it once) with its keys matching the
    // timed-recording state.
    void Open();
    void Close();
};
