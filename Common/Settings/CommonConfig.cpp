#include "Common/Settings/CommonConfig.h"

#include "Platform/FatalError.h"

TDistanceUnit GetDistanceUnit(CAppConfig& commonConfig) {
    const int rawUnit = commonConfig.GetValue<int>(UIDistanceUnitValue).value_or(duKM);
    OPM_ASSERT_AT(rawUnit >= duKM && rawUnit <= duMI, "CommonConfig", 18);
    return static_cast<TDistanceUnit>(rawUnit);
}
