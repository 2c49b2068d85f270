#include "PowerMeter/Screens/ReferenceDisplay.h"

#include "Common/Settings/AppConfig.h"
#include "PowerMeter/PowerMeter.h"

bool IsReferenceDisplayOn() {
    return AppConfig().GetValue<bool>(ReferenceDisplayValue).value_or(false);
}

void SetReferenceDisplay(bool on) {
    AppConfig().SetValue(ReferenceDisplayValue, on);
}
