#include "PowerMeter/PowerMeterApp.h"

#include "Common/Bluetooth/StackService.h"
#include "Common/Settings/AppConfig.h"
#include "Common/Settings/CommonConfig.h"
#include "Common/Settings/Logging.h"
#include "Common/Toolkit/FatalErrorBox.h"
#include "Platform/FatalError.h"
#include "Platform/Library.h"
#include "Platform/TerminationRequest.h"
#include "Platform/WideText.h"
#include "Platform/WindowMessages.h"
#include "PowerMeter/Devices/ModuleDll.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/AutoSave.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Screens/OPMDialog.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"

namespace {
constexpr const wchar_t* kSettingsKey = L"Software\\Tavix";
constexpr int kFlushAfterEveryWrite = 1;
constexpr const char* kLogFileName = "PowerMeter.log";
// Exit codes posted by start-up.
constexpr int kQuitNoBoard = 1;
constexpr int kQuitNothingToMeasure = 2;
}  // namespace

CPowerMeterApp::CPowerMeterApp(int& argc, char** argv)
    : application(argc, argv),
      config(std::make_unique<CAppConfig>(kSettingsKey, kFlushAfterEveryWrite)),
      appConfig(*config),
      commonConfig(*config),
      document(std::make_unique<COPMDocument>()),
      lenUnit(std::make_unique<TLenUnit>()) {
    CFatalErrorBox::Install();
    SetAppConfig(config.get());
    SetOPMDocument(document.get());
    SetLenUnit(lenUnit.get());
    const std::string logPath = platform::ToUtf8(ComputeApplicationDirectory()) + kLogFileName;
    logFile = std::make_unique<TLogFile>(logPath.c_str(), 1, 0);
    logFile->SetLevels(-1);
    SetLogFile(logFile.get());
    // The sender's readiness test is the module area's driver probe.
    obex::SetServiceFactory([] { return obex::MakeStackService(BthGetHardwareStatus); });
}

CPowerMeterApp::~CPowerMeterApp() {
    obex::SetServiceFactory(nullptr);
    ResetAutoSave();
    SetLogFile(nullptr);
    logFile.reset();
    SetLenUnit(nullptr);
    lenUnit.reset();
    SetOPMDocument(nullptr);
    document.reset();
    SetPowerMeterDeviceManager(nullptr);
    powerMeterDeviceManager.reset();
    SetAppConfig(nullptr);
    config.reset();
}

int CPowerMeterApp::Run() {
    // A stop by the service manager or a terminal ends like the main menu's
    // quit: the screen's close path stops the meter and saves its state.
    platform::OnTerminationRequest([] { PostQuitMessage(0); });
    InitInstance();
    return platform::PendingQuitCode().value_or(0);
}

void CPowerMeterApp::InitInstance() {
    QCoreApplication::setOrganizationName(QStringLiteral("Local AppWizard-Generated Applications"));
    LoadResourceLibrary();
    LenUnit().SetUnit(GetDistanceUnit(commonConfig));

    powerMeterDeviceManager = std::make_unique<CPowerMeterDeviceManager>(appConfig, notifier);
    SetPowerMeterDeviceManager(powerMeterDeviceManager.get());
    if (!powerMeterDeviceManager->Init()) PostQuitMessage(kQuitNoBoard);
    if (!powerMeterDeviceManager->GetPowerMeter() && !powerMeterDeviceManager->GetLightSource())
        PostQuitMessage(kQuitNothingToMeasure);
    CPowerMeterDeviceManager& manager = PowerMeterDeviceManager();

    COPMDialog dialog(manager.GetPowerMeter(), manager.GetLightSource());
    dialog.DoModal();
}

void CPowerMeterApp::LoadResourceLibrary() {
    const std::wstring name = appConfig.GetString(DefaultLanguageValue, L"");
    LogMessage("Loading main resource dll...", name);
    HMODULE dllHandle = LoadLibraryW(name.c_str());
    LogMessage(dllHandle ? "Loading main resource dll sucessfull" : "Loading main resource dll failure");
    OPM_ASSERT_AT(dllHandle && "Resource library not found", "PowerMeter", 129);
    AfxSetResourceHandle(dllHandle);
}

