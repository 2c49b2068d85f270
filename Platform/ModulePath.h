#pragma once
// Path of the running executable, as the embedded OS reports it.

#include <string>

#include "Platform/WinTypes.h"

// Copies the executable's full path into `buffer` (at most `size` characters,
// terminator included) and returns its length; 0 on failure. The module
// argument is accepted for symmetry and ignored: only the executable is asked.
DWORD GetModuleFileNameW(void* module, LPWSTR buffer, DWORD size);

namespace platform {
// Directory of the executable as a narrow UTF-8 path, with its trailing '/'.
std::string ApplicationDirectory();
// Test seam: when non-empty, reported instead of /proc/self/exe.
void OverrideModuleFileName(const std::wstring& path);
}  // namespace platform
