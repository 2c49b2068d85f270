#include "PowerMeter/Devices/PowerMeterDeviceManager.h"

#include <exception>
#include <vector>

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/Logging.h"
#include "Common/Toolkit/IUserNotifier.h"
#include "Platform/FatalError.h"
#include "Platform/WideText.h"
#include "PowerMeter/Devices/HardwareOPMMeterBackend.h"
#include "PowerMeter/Devices/ModuleDll.h"
#include "PowerMeter/PowerMeter.h"

namespace {
constexpr const char* kStarting = "Starting power meter initializations...";
constexpr const char* kLoadingModule = "Loading tavix_otdr.dll...";
constexpr const char* kInitializingOtdr = "Initializing OTDR device...";
constexpr const char* kSecondAttemptSucceeded = "Second Attemp of OTDR initialization sucessfull";
constexpr const char* kOtdrSucceeded = "OTDR initialization sucessfull";
constexpr const char* kOtdrFailed = "OTDR initialization failure";
constexpr const char* kInitializingLightSource = "Initializing light source...";
constexpr const char* kNoLasers =
    "No light sources on board. Light source functionality will be unavailabile...";
constexpr const char* kLightSourceFailed = "Can't initialize light source... ";
constexpr const char* kInitializingPowerMeter = "Initializing power meter...";
constexpr const char* kPowerMeterFailed = "Can't initialize power meter...";
constexpr const wchar_t* kNoConnection = L"No connection with the OTDR!";

constexpr const wchar_t* kIdDllValue = L"ID_DLL";
constexpr const char* kIniDirectory = "etc_gui/";
constexpr const char* kIniFileName = "opm.ini";
constexpr const wchar_t* kUnknownHardwareId = L"0";
constexpr std::size_t kHardwareIdFields = 4;

std::vector<std::wstring> SplitAtPlus(const std::wstring& text) {
    std::vector<std::wstring> fields;
    std::size_t start = 0;
    for (;;) {
        const std::size_t plus = text.find(L'+', start);
        fields.push_back(text.substr(start, plus - start));
        if (plus == std::wstring::npos) return fields;
        start = plus + 1;
    }
}
}  // namespace

CPowerMeterDeviceManager::CPowerMeterDeviceManager(CAppConfig& config, IUserNotifier& notifier)
    : config(config), notifier(notifier) {}

CPowerMeterDeviceManager::~CPowerMeterDeviceManager() {
    powerMeter.reset();
    lightSource.reset();
    lightSourceConfig.reset();
}

bool CPowerMeterDeviceManager::Init() {
    otdrReady = false;
    LogMessage(kStarting);

    // A thrown failure is shown and then tolerated; a returned one stops start-up.
    try {
        LoadModuleAndInitOtdr();
        if (!otdrReady) return false;
    } catch (const std::exception& error) {
        notifier.ShowMessage(platform::FromUtf8(error.what()));
    } catch (...) {
        notifier.ShowMessage(kNoConnection);
    }

    InitLightSource();
    // Without a configuration the model counts as having a power meter.
    if (lightSourceConfig && lightSourceConfig->HasNoOPM()) return true;
    InitPowerMeter();
    return true;
}

void CPowerMeterDeviceManager::LoadModuleAndInitOtdr() {
    LogMessage(kLoadingModule);
    if (ModuleDll == nullptr) {
        ModuleDll = new TModuleDll(platform::ToUtf8(ComputeApplicationDirectory()).c_str());
        TLenUnit* lenUnit = InstalledLenUnit();
        OPM_ASSERT_AT(lenUnit, "PowerMeterDeviceManager", 58);
        // A failed load shows up below as a missing InitOTDR.
        ModuleDll->Load(TModuleDll::kModuleFileName, lenUnit);
    }

    const std::string idDll = platform::ToUtf8(config.GetString(kIdDllValue, L""));
    LogMessage(kInitializingOtdr);
    auto initOtdr = [&idDll] {
        if (ModuleDll->InitOTDR == nullptr) return 1;
        return ModuleDll->InitOTDR(TModuleDll::kInitOTDRCode, idDll.c_str(), 0);
    };
    if (initOtdr() == 0) {
        otdrReady = true;
    } else if (initOtdr() == 0) {
        // One immediate retry: the board may miss the first call after power-up.
        otdrReady = true;
        LogMessage(kSecondAttemptSucceeded);
    }
    LogMessage(otdrReady ? kOtdrSucceeded : kOtdrFailed);
}

void CPowerMeterDeviceManager::InitLightSource() {
    try {
        LogMessage(kInitializingLightSource);
        OPM_ASSERT_AT(ModuleDll, "PowerMeterDeviceManager", 94);
        hardwareId = ReadHardwareId();
        lightSourceConfig = std::make_unique<CLightSourceConfig>(IniPath().c_str(), hardwareId);
        lightSource = std::make_unique<CLightSource>(*lightSourceConfig);
        if (lightSource->GetLasersNum() == 0) LogMessage(kNoLasers);
    } catch (const std::exception& error) {
        LogMessage(kLightSourceFailed, error.what());
    } catch (...) {
        LogMessage(kLightSourceFailed);
    }
}

void CPowerMeterDeviceManager::InitPowerMeter() {
    try {
        LogMessage(kInitializingPowerMeter);
        OPM_ASSERT_AT(ModuleDll, "PowerMeterDeviceManager", 116);
        // The meter owns the backend once constructed; until then the
        // unique_ptr deletes a backend that was not handed over.
        auto backend = std::make_unique<CHardwareOpmMeterBackend>();
        hardwareId = ReadHardwareId();
        powerMeter =
            std::make_unique<ZuOPMMeter>(IniPath().c_str(), hardwareId, std::move(backend));
    } catch (const std::exception& error) {
        LogMessage(kPowerMeterFailed, error.what());
    } catch (...) {
        LogMessage(kPowerMeterFailed);
    }
}

std::string CPowerMeterDeviceManager::IniPath() {
    return platform::ToUtf8(ComputeApplicationDirectory()) + kIniDirectory + kIniFileName;
}

std::wstring CPowerMeterDeviceManager::ReadHardwareId() {
    int inOut = 0;
    char* text = nullptr;
    if (ModuleDll != nullptr && ModuleDll->ServiceFunction != nullptr)
        ModuleDll->ServiceFunction(TModuleDll::kReadHardwareId, &inOut, &text);
    const std::vector<std::wstring> fields =
        SplitAtPlus(text != nullptr ? platform::FromUtf8(text) : std::wstring());
    return fields.size() == kHardwareIdFields ? fields.back() : kUnknownHardwareId;
}
