#include "Common/Toolkit/BaseDialog.h"

#include "Common/Toolkit/ToolkitStyle.h"
#include "Platform/FatalError.h"

CBaseDialog::CBaseDialog(UINT templateId, QWidget* parent) : CMenuDialog(templateId, parent) {
    setStyleSheet(CToolkitStyle::ScreenStyleSheet());
}

CBaseDialog::~CBaseDialog() = default;

bool CBaseDialog::OnInitDialog() {
    const bool result = CMenuDialog::OnInitDialog();

    OPM_ASSERT_AT(batteryBar.Create(this, IDD_BATTARY_BAR, CBRS_NOALIGN, IDD_BATTARY_BAR),
                  "BaseDialog", 100);
    QWidget* batteryBarPlaceholder = GetDlgItem(IDC_BATTERY_BAR_PLACEHOLDER);
    OPM_ASSERT(batteryBarPlaceholder &&
               "Did you forget to add IDC_BATTERY_BAR_PLACEHOLDER to dialog in editor ?");
    const QRect placeholderRect(batteryBarPlaceholder->mapTo(this, QPoint(0, 0)),
                                batteryBarPlaceholder->size());
    batteryBar.setGeometry(placeholderRect);
    batteryBar.show();
    batteryBar.raise();
    batteryBar.repaint();

    OnSetTexts();
    return result;
}

void CBaseDialog::OnTimer(UINT timerId) {
    if (timerId == kStatusTimerId) batteryBar.Refresh();
    CMenuDialog::OnTimer(timerId);
}
