#pragma once
// Second link of the chain: a dialog whose controls a BrevoLayouter keeps in
// place; the layouter is bound during the dialog's initialisation.

#include "Common/Toolkit/BrevoLayouter.h"
#include "Common/Toolkit/KeyboardControlledDialog.h"

class CLayoutableDialog : public CKeyboardControlledDialog {
    Q_OBJECT
public:
    explicit CLayoutableDialog(UINT templateId, QWidget* parent = nullptr);

protected:
    bool OnInitDialog() override;
    BrevoLayouter& Layouter() { return layouter; }

private:
    BrevoLayouter layouter;
};
