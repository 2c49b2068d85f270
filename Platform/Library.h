#pragma once
// Run-time loading of libraries. A requested "name.dll" loads "name.so";
// a language pack (".rcc") is registered as a Qt resource file instead.
// Libraries are opened by explicit path only: a relative name is taken
// from the application directory, never from a search path.

#include <QString>

#include "Platform/WinTypes.h"

struct LoadedModule;
using HMODULE = LoadedModule*;
using HINSTANCE = HMODULE;
using FARPROC = void (*)();

HMODULE LoadLibraryW(LPCWSTR fileName);
// Resolves an export by its wide name; null when the library lacks it.
FARPROC GetProcAddressW(HMODULE module, LPCWSTR procName);
BOOL FreeLibrary(HMODULE module);

// The module dialog templates, strings and bitmaps are taken from.
void AfxSetResourceHandle(HMODULE module);
HMODULE AfxGetResourceHandle();

namespace platform {

// Path a request resolves to after the .dll rule and the directory rule.
std::string ResolveLibraryPath(const std::wstring& fileName);
// Resource root (":/res<n>") of a loaded language pack; empty for other modules.
QString ResourceRoot(HMODULE module);

}  // namespace platform
