#pragma once
// The modal results a dialog's DoModal returns, with the old system's values.

constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDYES = 6;
constexpr int IDNO = 7;
