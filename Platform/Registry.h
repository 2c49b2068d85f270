#pragma once
// The registry of the embedded OS, kept in memory and persisted as a text
// hive in the .reg export format. Keys exist only when the hive file has
// them: opening a missing key fails and nothing here creates keys, because
// on the instrument that is the installer's job.

#include <string>

#include "Platform/WinTypes.h"

struct RegistryKey;
using HKEY = RegistryKey*;
using PHKEY = HKEY*;

// Predefined root; the application only ever uses HKEY_LOCAL_MACHINE.
extern const HKEY HKEY_LOCAL_MACHINE;

constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;
constexpr REGSAM KEY_READ = 0x20019;
constexpr DWORD REG_NONE = 0;
constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_DWORD = 4;

LONG RegOpenKeyExW(HKEY root, LPCWSTR subKey, DWORD options, REGSAM access, PHKEY result);
// Without a data buffer, reports the size in bytes (terminator included).
LONG RegQueryValueExW(HKEY key, LPCWSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data,
                      LPDWORD dataSize);
LONG RegSetValueExW(HKEY key, LPCWSTR valueName, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD dataSize);
// Persists the whole hive atomically: the file holds the old or the new content.
LONG RegFlushKey(HKEY key);
LONG RegCloseKey(HKEY key);

namespace platform {

// Hive file used until told otherwise: $TAVIX_REGISTRY, else registry.reg in
// the application directory. Loaded lazily on the first registry call.
std::string DefaultHivePath();

// Replaces the in-memory hive with the file's content (a missing file gives
// an empty hive). Lines that do not parse are reported on the debug output
// with their line number and skipped. A file that cannot be read, missing
// included, is named on the debug output with the reason. Returns false if
// the file exists but cannot be read.
bool LoadHive(const std::string& path);
// Replaces the in-memory hive with the given .reg text; its file becomes `path`.
void LoadHiveFromText(const std::string& text, const std::string& path = {});
std::string HiveAsText();
std::string HivePath();

// Administrative edits, as the installer or a test would make them.
void CreateRegistryKey(const std::wstring& fullPath);
void DeleteRegistryKey(const std::wstring& fullPath);

// Fault injection for tests: each arms one failure of the next such call.
struct RegistryFaults {
    bool failNextClose = false;         // RegCloseKey returns ERROR_INVALID_HANDLE
    bool nullHandleOnNextOpen = false;  // RegOpenKeyExW succeeds with a null handle
    bool shortNextRead = false;         // next data read delivers one WCHAR less
    bool failNextSet = false;           // RegSetValueExW returns ERROR_ACCESS_DENIED
    bool failNextFlush = false;         // RegFlushKey returns ERROR_GEN_FAILURE
};
RegistryFaults& InjectRegistryFaults();

}  // namespace platform
