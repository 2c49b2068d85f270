#pragma once
// Brings the instrument's hardware up in a fixed order and owns what it
// creates: the OTDR module library and board, the light source and, unless
// the model has none, the optical power meter on the hardware backend.

#include <memory>
#include <string>

#include "PowerMeter/Measurement/LightSource.h"
#include "PowerMeter/Measurement/LightSourceConfig.h"
#include "PowerMeter/Measurement/OPMMeter.h"

class CAppConfig;
class IUserNotifier;

class CPowerMeterDeviceManager {
public:
    // `config` gives the module's "ID_DLL"; `notifier` shows the message box
    // of a thrown board failure. Both must outlive the manager.
    CPowerMeterDeviceManager(CAppConfig& config, IUserNotifier& notifier);
    // Deletes the power meter, then the light source, then its configuration.
    // The module library stays loaded.
    ~CPowerMeterDeviceManager();
    CPowerMeterDeviceManager(const CPowerMeterDeviceManager&) = delete;
    CPowerMeterDeviceManager& operator=(const CPowerMeterDeviceManager&) = delete;

    // The whole start-up sequence; may run again, replacing each object.
    // False only when the OTDR board did not initialise.
    bool Init();

    // Each possibly null.
    ZuOPMMeter* GetPowerMeter() const { return powerMeter.get(); }
    CLightSource* GetLightSource() const { return lightSource.get(); }
    CLightSourceConfig* GetLightSourceConfig() const { return lightSourceConfig.get(); }
    bool IsOtdrReady() const { return otdrReady; }
    // The model tag the last Init read from the module; "0" before.
    const std::wstring& GetHardwareId() const { return hardwareId; }

    // "etc_gui/opm.ini" in the application directory.
    static std::string IniPath();
    // The model tag: the last of the four '+'-separated fields of the
    // module's command 715, or "0" when it can't be read.
    static std::wstring ReadHardwareId();

protected:
    // The steps of Init, each on its own.
    void LoadModuleAndInitOtdr();
    void InitLightSource();
    void InitPowerMeter();

private:
    std::unique_ptr<CLightSourceConfig> lightSourceConfig;
    std::unique_ptr<CLightSource> lightSource;
    std::unique_ptr<ZuOPMMeter> powerMeter;
    bool otdrReady = false;
    std::wstring hardwareId = L"0";

    CAppConfig& config;
    IUserNotifier& notifier;
};
