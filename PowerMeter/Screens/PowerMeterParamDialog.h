#pragma once
// The parameters (template 399): timed recording on/off and its interval,
// the distance unit and the language pack. OK writes the changed values
// through the settings store; Escape leaves every value as it was.

#include "Common/Toolkit/BaseDialog.h"

class CPowerMeterParamDialog : public CBaseDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 399;

    explicit CPowerMeterParamDialog(QWidget* parent = nullptr);
    ~CPowerMeterParamDialog() override;
};
