#pragma once
// The reference display setting ("PowerMeter_ReferenceLevel"): shown on the
// measuring screen and recorded with every result. Absent counts as off.

inline constexpr const wchar_t* ReferenceDisplayValue = L"PowerMeter_ReferenceLevel";

bool IsReferenceDisplayOn();
void SetReferenceDisplay(bool on);
