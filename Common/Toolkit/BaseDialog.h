#pragma once
// Last link of the chain, the base of every screen: adds the battery bar,
// placed exactly over the template's placeholder control 1078, and the hook
// through which a screen sets its texts once the template is loaded.

#include "Common/Toolkit/BattaryBar.h"
#include "Common/Toolkit/MenuDialog.h"

constexpr int IDC_BATTERY_BAR_PLACEHOLDER = 1078;

class CBaseDialog : public CMenuDialog {
    Q_OBJECT
public:
    explicit CBaseDialog(UINT templateId, QWidget* parent = nullptr);
    ~CBaseDialog() override;

    CBattaryBar& GetBatteryBar() { return batteryBar; }

protected:
    // Runs once the template is loaded and the bar placed.
    virtual void OnSetTexts() {}

    bool OnInitDialog() override;
    void OnTimer(UINT timerId) override;

private:
    CBattaryBar batteryBar;
};
