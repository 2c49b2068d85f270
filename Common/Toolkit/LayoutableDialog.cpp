#include "Common/Toolkit/LayoutableDialog.h"

CLayoutableDialog::CLayoutableDialog(UINT templateId, QWidget* parent)
    : CKeyboardControlledDialog(templateId, parent) {}

bool CLayoutableDialog::OnInitDialog() {
    const bool result = CKeyboardControlledDialog::OnInitDialog();
    layouter.Bind(this);
    return result;
}
