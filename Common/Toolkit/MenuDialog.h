#pragma once
// Third link of the chain: hosts the soft-key row (placeholder control
// IDC_MENU_CTRL of the template), presses its slots on F1..F4, routes the
// keys' notifications through a table of command ids, and runs the screen's
// one-second timer 304 that drives the status hook.

#include <functional>
#include <map>
#include <vector>

#include "Common/Toolkit/LayoutableDialog.h"
#include "Common/Toolkit/MenuCtrl.h"

class CMenuKey;

constexpr int IDC_MENU_CTRL = 1000;
constexpr UINT kStatusTimerId = 304;
constexpr UINT kStatusTimerPeriodMs = 1000;

class CMenuDialog : public CLayoutableDialog {
    Q_OBJECT
public:
    explicit CMenuDialog(UINT templateId, QWidget* parent = nullptr);
    ~CMenuDialog() override;

    CMenuCtrl& GetMenuCtrl() { return menuCtrl; }

protected:
    // Called once when the dialog initialises and then by timer 304.
    virtual void OnStatusHook(UINT /*timerId*/) {}
    // The keys for the four slots, in slot order; the default leaves the
    // blank keys.
    virtual std::vector<CMenuKey*> GetMenuKeys() { return {}; }

    bool OnInitDialog() override;
    void OnTimer(UINT timerId) override;
    bool OnNotify(WPARAM wParam, NMHDR* header) override;
    bool OnF1Pressed() override;
    bool OnF2Pressed() override;
    bool OnF3Pressed() override;
    bool OnF4Pressed() override;

    // A soft key whose face is bitmap `bitmapId`, owned by the menu.
    CMenuKey* CreateMenuKey(UINT keyId, UINT bitmapId);
    // Entry of the screen's table: what a soft key's command id runs.
    void OnMenuCommand(UINT commandId, std::function<void()> handler);

private:
    CMenuCtrl menuCtrl;
    std::map<UINT, std::function<void()>> commandTable;
};
