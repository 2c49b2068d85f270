#include "PowerMeter/Screens/PowerMeterParamDialog.h"

CPowerMeterParamDialog::CPowerMeterParamDialog(QWidget* parent) : CBaseDialog(IDD, parent) {}

CPowerMeterParamDialog::~CPowerMeterParamDialog() = default;
