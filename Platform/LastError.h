#pragma once
// Per-thread last-error code, as the embedded OS keeps it.

#include "Platform/WinTypes.h"

DWORD GetLastError();
void SetLastError(DWORD error);
