#pragma once
// The main menu: a modeless panel over its screen (template 398) with the
// store-result command (or start/stop of timed recording), the parameters,
// the results (a column: the results list, the result files) and quit.
// Escape hides it and gives the focus back to the screen.

#include <QFont>
#include <vector>

#include "Common/Toolkit/BaseDialog.h"

class CPMDialog;
class CTextMenuKey;

class CMainMenuDialog : public CBaseDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 398;
    // Command ids of the panel's soft keys.
    static constexpr UINT kStoreCommand = 1;
    static constexpr UINT kParametersCommand = 2;
    static constexpr UINT kQuitCommand = 3;
    static constexpr UINT kResultsCommand = 4;
    // The results column's keys.
    static constexpr UINT kResultsListCommand = 0;
    static constexpr UINT kResultFilesCommand = 1;

    explicit CMainMenuDialog(CPMDialog* owner);
    ~CMainMenuDialog() override;

    // Shows the panel (creating it once) with its keys matching the
    // timed-recording state.
    void Open();
    void Close();

    // Captions and enabled states from the setting, the recording state and
    // the presence of a power meter.
    void UpdateKeys();

protected:
    bool OnInitDialog() override;
    void OnSetTexts() override;
    std::vector<CMenuKey*> GetMenuKeys() override;
    void OnStatusHook(UINT timerId) override;
    bool OnArrowPressed(int direction) override;
    bool OnEnterPressed() override;
    bool OnSpacePressed() override;
    bool OnEscapePressed() override;
    bool OnTabPressed() override { return true; }
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void StoreResult();
    void OpenParameters();
    void OpenResults();
    void Quit();
    void Place();
    std::vector<CTextMenuKey*> CommandKeys() const;
    CTextMenuKey* FocusedKey() const;
    void FocusFirstEnabled();
    void SetCurrent(size_t index);

    CPMDialog* owner;
    QFont keyFont;
    CTextMenuKey* storeKey = nullptr;
    CTextMenuKey* parametersKey = nullptr;
    CTextMenuKey* resultsKey = nullptr;
    CTextMenuKey* quitKey = nullptr;
    size_t current = 0;  // index into CommandKeys()
};
