#include "PowerMeter/PowerMeter.h"

#include <atomic>

#include "Platform/FatalError.h"
#include "Platform/ModulePath.h"
#include "Support/LenUnit.h"

namespace {
std::atomic<TLenUnit*> installedLenUnit{nullptr};
CAppConfig* installedConfig = nullptr;
CPowerMeterDeviceManager* installedDeviceManager = nullptr;
COPMDocument* installedDocument = nullptr;
// The module file name buffer of the embedded OS, in wide characters.
constexpr DWORD ModuleNameSize = 1000;
}  // namespace

TLenUnit& LenUnit() {
    TLenUnit* const LenUnit = installedLenUnit.load();
    OPM_ASSERT_AT(LenUnit, "PowerMeter", 63);
    return *LenUnit;
}

void SetLenUnit(TLenUnit* lenUnit) {
    installedLenUnit.store(lenUnit);
}

TLenUnit* InstalledLenUnit() {
    return installedLenUnit.load();
}

CAppConfig& AppConfig() {
    OPM_ASSERT_AT(installedConfig, "PowerMeter", 40);
    return *installedConfig;
}

void SetAppConfig(CAppConfig* config) {
    installedConfig = config;
}

CPowerMeterDeviceManager& PowerMeterDeviceManager() {
    // The expression of the application object's owning pointer.
    if (!installedDeviceManager) FatalAssertion("powerMeterDeviceManager.get()", "PowerMeter", 45);
    return *installedDeviceManager;
}

CPowerMeterDeviceManager* InstalledDeviceManager() {
    return installedDeviceManager;
}

void SetPowerMeterDeviceManager(CPowerMeterDeviceManager* manager) {
    installedDeviceManager = manager;
}

COPMDocument& OPMDocument() {
    OPM_ASSERT_AT(installedDocument, "PowerMeter", 50);
    return *installedDocument;
}

COPMDocument* InstalledOPMDocument() {
    return installedDocument;
}

void SetOPMDocument(COPMDocument* document) {
    installedDocument = document;
}

std::wstring ComputeApplicationDirectory() {
    wchar_t moduleName[ModuleNameSize] = {};
    GetModuleFileNameW(nullptr, moduleName, ModuleNameSize);
    std::wstring appPath = moduleName;
    std::size_t separator = appPath.rfind(L'/');
    if (separator == std::wstring::npos) separator = appPath.rfind(L'\\');
    if (separator != std::wstring::npos) appPath.erase(separator + 1);
    // Reported under the expression technicians have always seen for this check.
    if (appPath.empty()) FatalAssertion("appPath.GetLength() > 0", "PowerMeter", 33);
    return appPath;
}
