#pragma once
// The debugger output channel: standard error on Linux.

#include "Platform/WinTypes.h"

void OutputDebugStringW(LPCWSTR text);
// Breaks into a debugger only when one is attached; otherwise does nothing.
void DebugBreak();

namespace platform {
bool IsDebuggerAttached();
}
