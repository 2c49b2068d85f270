#pragma once
// The application's persistent user settings: text values under one key of
// HKEY_LOCAL_MACHINE. Typed reads are optional so that every caller applies
// its own default; writes skip unchanged values, flush the hive and tell the
// observers. Used from the user-interface thread only.

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "Common/Settings/IAppConfigObserver.h"

// The program types a setting can have; every one is stored as text.
template <typename T>
concept AppConfigType = std::is_same_v<T, bool> || std::is_same_v<T, int> ||
    std::is_same_v<T, unsigned> || std::is_same_v<T, std::wstring>;

class CAppConfig {
public:
    // `flushMode` 1 persists the hive after every successful write.
    CAppConfig(const std::wstring& keyPath, int flushMode);

    // False when the key can't be opened (it is never created) or the write fails.
    bool SetRegKeyValue(const std::wstring& key, const std::wstring& valueName,
                        const std::wstring& text);
    // False when the key or the value is missing.
    bool GetRegKeyValue(const std::wstring& key, const std::wstring& valueName, std::wstring& text);

    std::wstring GetString(const std::wstring& valueName, const std::wstring& defaultValue);
    // The key the store reads and writes, for callers of SetRegKeyValue.
    const std::wstring& KeyPath() const { return applicationSpecicKey; }

    // For bool, int, unsigned and std::wstring. Empty when the value is
    // missing; a text that does not parse reads as 0 (false).
    template <AppConfigType T>
    std::optional<T> GetValue(const std::wstring& valueName);
    // Writes only a changed value; a write that fails is fatal.
    template <AppConfigType T>
    void SetValue(const std::wstring& key, const T& value);
    // A string literal is stored as a string.
    void SetValue(const std::wstring& key, const wchar_t* value) {
        SetValue(key, std::wstring(value ? value : L""));
    }

    void AddObserver(IAppConfigObserver* observer);
    void RemoveObserver(IAppConfigObserver* observer);

private:
    void WriteChanged(const std::wstring& key, const std::wstring& strVal);

    std::wstring applicationSpecicKey;
    int flushMode;
    std::vector<IAppConfigObserver*> observers;
};

// Defined and instantiated in AppConfig.cpp.
extern template std::optional<bool> CAppConfig::GetValue<bool>(const std::wstring&);
extern template std::optional<int> CAppConfig::GetValue<int>(const std::wstring&);
extern template std::optional<unsigned> CAppConfig::GetValue<unsigned>(const std::wstring&);
extern template std::optional<std::wstring> CAppConfig::GetValue<std::wstring>(const std::wstring&);
extern template void CAppConfig::SetValue<bool>(const std::wstring&, const bool&);
extern template void CAppConfig::SetValue<int>(const std::wstring&, const int&);
extern template void CAppConfig::SetValue<unsigned>(const std::wstring&, const unsigned&);
extern template void CAppConfig::SetValue<std::wstring>(const std::wstring&, const std::wstring&);
