#pragma once
// The debugger output channel: standard error on Linux.

#include <string>

#include "Platform/WinTypes.h"

void OutputDebugStringW(LPCWSTR text);
// Breaks into a debugger only when one is attached; otherwise does nothing.
void DebugBreak();

namespace platform {
bool IsDebuggerAttached();

// With OPM_TRACE=1 in the environment, what a person would see (texts shown)
// and what the program records (results taken) also goes to the debug output,
// one line each, so that end-to-end runs and benchmarks follow the program
// without reading pixels. Off otherwise, at the cost of one test.
bool Tracing();
void Trace(const std::wstring& line);
}
