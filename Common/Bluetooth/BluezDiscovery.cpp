// BlueZ's devices as the service reports them: no port, because the RFCOMM
// channel is looked up by service when the device is bound.

#include "Common/Bluetooth/DeviceDiscovery.h"
#include "Platform/Bluez.h"

namespace obex {
namespace {

class BluezDevices : public DeviceDiscovery {
public:
    bool Start(Report report) override {
        return watcher.Start([report = std::move(report)](int, const platform::bluez::Device& device) {
            std::wstring services;
            for (const std::wstring& uuid : device.uuids)
                services += (services.empty() ? L"{" : L";{") + uuid + L"}";
            report(device.address, {{L"Name", device.name},
                                    {L"Transport", std::wstring(kBluetoothTransport)},
                                    {L"Address", device.address},
                                    {L"ServiceUUID", services}});
        });
    }
    void Stop() override { watcher.Stop(); }

private:
    platform::bluez::DeviceWatcher watcher;
};

}  // namespace

std::unique_ptr<DeviceDiscovery> BluezDiscovery() {
    return std::make_unique<BluezDevices>();
}

}  // namespace obex
