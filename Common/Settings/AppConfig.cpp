#include "Common/Settings/AppConfig.h"

#include <algorithm>
#include <locale>
#include <memory>
#include <sstream>

#include "Platform/FatalError.h"
#include "Platform/Registry.h"

namespace {

// Every path closes its handle; a close that fails means the registry is broken.
void CloseKey(HKEY key) {
    OPM_ASSERT_AT(RegCloseKey(key) == ERROR_SUCCESS, "AppConfig", 11);
}

using KeyGuard = std::unique_ptr<RegistryKey, decltype(&CloseKey)>;

template <typename T>
std::wstring ToText(const T& value) {
    if constexpr (std::is_same_v<T, std::wstring>) {
        return value;
    } else {
        // Decimal digits, '-' for negatives, bool as 1/0: the stream's defaults,
        // never a user locale's digit grouping.
        std::wostringstream stream;
        stream.imbue(std::locale::classic());
        stream << value;
        return stream.str();
    }
}

template <typename T>
T FromText(const std::wstring& text) {
    if constexpr (std::is_same_v<T, std::wstring>) {
        return text;
    } else {
        std::wistringstream stream(text);
        stream.imbue(std::locale::classic());
        T value{};
        // A text that does not parse leaves 0 (false).
        stream >> value;
        return value;
    }
}

}  // namespace

CAppConfig::CAppConfig(const std::wstring& keyPath, int flushMode)
    : applicationSpecicKey(keyPath), flushMode(flushMode) {}

bool CAppConfig::SetRegKeyValue(const std::wstring& key, const std::wstring& valueName,
                                const std::wstring& text) {
    HKEY hKey = nullptr;
    // The key is opened, never created: creating keys is the installer's job.
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_ALL_ACCESS, &hKey) != ERROR_SUCCESS)
        return false;
    OPM_ASSERT_AT(hKey, "AppConfig", 62);
    const KeyGuard guard(hKey, &CloseKey);
    // The terminator is part of the data. WCHAR is 4 bytes here (wchar_t on
    // Linux), 2 on the embedded OS: the size follows sizeof(WCHAR).
    const auto size = static_cast<DWORD>((text.length() + 1) * sizeof(WCHAR));
    return RegSetValueExW(hKey, valueName.c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(text.c_str()), size) == ERROR_SUCCESS;
}

bool CAppConfig::GetRegKeyValue(const std::wstring& key, const std::wstring& valueName,
                                std::wstring& text) {
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_ALL_ACCESS, &hKey) != ERROR_SUCCESS)
        return false;
    OPM_ASSERT_AT(hKey, "AppConfig", 32);
    const KeyGuard guard(hKey, &CloseKey);

    DWORD requiredDataSize = 0;
    if (RegQueryValueExW(hKey, valueName.c_str(), nullptr, nullptr, nullptr, &requiredDataSize) !=
        ERROR_SUCCESS)
        return false;
    // Zero-filled with room for a terminator, so that data of any type (or a
    // string stored without its terminator) still reads as a terminated string.
    std::vector<WCHAR> buffer(requiredDataSize / sizeof(WCHAR) + 2, L'\0');
    DWORD actualyWritedDataSize = requiredDataSize;
    const LONG read =
        RegQueryValueExW(hKey, valueName.c_str(), nullptr, nullptr,
                         reinterpret_cast<BYTE*>(buffer.data()), &actualyWritedDataSize);
    text = buffer.data();
    OPM_ASSERT_AT(requiredDataSize == actualyWritedDataSize, "AppConfig", 53);
    return read == ERROR_SUCCESS;
}

std::wstring CAppConfig::GetString(const std::wstring& valueName,
                                   const std::wstring& defaultValue) {
    std::wstring text;
    return GetRegKeyValue(applicationSpecicKey, valueName, text) ? text : defaultValue;
}

template <AppConfigType T>
std::optional<T> CAppConfig::GetValue(const std::wstring& valueName) {
    std::wstring text;
    if (!GetRegKeyValue(applicationSpecicKey, valueName, text)) return std::nullopt;
    return FromText<T>(text);
}

template <AppConfigType T>
void CAppConfig::SetValue(const std::wstring& key, const T& value) {
    const std::optional<T> current = GetValue<T>(key);
    if (current && *current == value) return;
    WriteChanged(key, ToText(value));
}

void CAppConfig::WriteChanged(const std::wstring& key, const std::wstring& strVal) {
    OPM_ASSERT_AT(SetRegKeyValue(applicationSpecicKey, key, strVal), "AppConfig", 167);
    // A failed flush keeps the value in memory; the next successful one persists it.
    if (flushMode == 1) RegFlushKey(HKEY_LOCAL_MACHINE);

    // Observers may unsubscribe (themselves or others) while being told: walk
    // a copy, and skip whoever has left the list meanwhile.
    const std::vector<IAppConfigObserver*> subscribed = observers;
    for (auto it = subscribed.begin(); it != subscribed.end(); ++it) {
        if (std::find(observers.begin(), observers.end(), *it) == observers.end()) continue;
        OPM_ASSERT_AT(*it, "AppConfig", 237);
        (*it)->OnConfigValueChanged(this, key);
    }
}

void CAppConfig::AddObserver(IAppConfigObserver* observer) {
    observers.push_back(observer);
}

void CAppConfig::RemoveObserver(IAppConfigObserver* observer) {
    const auto it = std::find(observers.begin(), observers.end(), observer);
    if (it != observers.end()) observers.erase(it);
}

template std::optional<bool> CAppConfig::GetValue<bool>(const std::wstring&);
template std::optional<int> CAppConfig::GetValue<int>(const std::wstring&);
template std::optional<unsigned> CAppConfig::GetValue<unsigned>(const std::wstring&);
template std::optional<std::wstring> CAppConfig::GetValue<std::wstring>(const std::wstring&);
template void CAppConfig::SetValue<bool>(const std::wstring&, const bool&);
template void CAppConfig::SetValue<int>(const std::wstring&, const int&);
template void CAppConfig::SetValue<unsigned>(const std::wstring&, const unsigned&);
template void CAppConfig::SetValue<std::wstring>(const std::wstring&, const std::wstring&);
