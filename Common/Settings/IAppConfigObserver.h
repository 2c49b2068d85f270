#pragma once
// Told about every value the settings store wrote, after the write.

#include <string>

class CAppConfig;

class IAppConfigObserver {
public:
    virtual ~IAppConfigObserver() = default;
    // Called synchronously inside CAppConfig::SetValue, in subscription order.
    virtual void OnConfigValueChanged(CAppConfig* config, const std::wstring& valueName) = 0;
};
