#pragma once
// Settings shared by the instrument's applications, read from the common
// configuration store.

#include "Common/Settings/AppConfig.h"
#include "Support/LenUnit.h"

// Registry value naming the language pack, loaded at start-up.
inline constexpr const wchar_t* DefaultLanguageValue = L"DefaultLanguageDLL";
// Registry value of the user's distance unit (0 km .. 4 mi).
inline constexpr const wchar_t* UIDistanceUnitValue = L"UIDistanceUnit";

// Kilometres when the value is absent or does not parse; a stored unit
// outside km..mi is fatal.
TDistanceUnit GetDistanceUnit(CAppConfig& commonConfig);
