#pragma once
// The simulated instrument under the screens: an image assembled once per
// process gives the hive, the module and the meter's driver; the log, units,
// settings and device manager are each test's own.

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/Logging.h"
#include "Common/Toolkit/IUserNotifier.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/ModulePath.h"
#include "Platform/Registry.h"
#include "PowerMeter/Devices/ModuleDll.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/PowerMeter.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"
#include "e2e/ProbeImage.h"
#include "support/Screenshot.h"

namespace screentest {

inline const std::string& Image() {
    static const e2e::ProbeImage image;
    return image.dir;
}

inline Qt::Key Key(const QString& name) {
    return QKeySequence(name)[0].key();
}

class Instrument : public testing::Test, public IUserNotifier {
protected:
    void SetUp() override {
        platform::OverrideModuleFileName(std::wstring(Image().begin(), Image().end()) +
                                         L"PowerMeter");
        platform::LoadHiveFromText(ScratchDirectory::Read(Image() + "registry.reg"));
        SetLogFile(&log), SetLenUnit(&lenUnit), SetAppConfig(&config);
    }
    // The devices come up and become the application's.
    void StartDevices() {
        manager = std::make_unique<CPowerMeterDeviceManager>(config, *this);
        ASSERT_TRUE(manager->Init());
        SetPowerMeterDeviceManager(manager.get());
    }
    void TearDown() override {
        SetPowerMeterDeviceManager(nullptr), manager.reset();
        SetAppConfig(nullptr), SetLenUnit(nullptr), SetLogFile(nullptr);
        delete std::exchange(ModuleDll, nullptr);  // loaded with this test's log and units
    }
    // Only a board that throws on start-up reports through here.
    void ShowMessage(const std::wstring& text) override { ADD_FAILURE() << text; }

    TLogFile log{(Image() + "PowerMeter.log").c_str(), 1, 0};
    TLenUnit lenUnit;
    CAppConfig config{L"Software\\Tavix", 0};
    std::unique_ptr<CPowerMeterDeviceManager> manager;
};

}  // namespace screentest
