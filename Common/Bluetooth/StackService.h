#pragma once
// The OBEX service on Linux: a search is a device discovery (BlueZ, or the
// peers the Bluetooth driver reaches over TCP) whose reports become device
// events with one property bag per device for the life of the service, so a
// change reaches the screen as the same bag it listed. Binding opens the
// device's transport; the device speaks our OBEX session over it.

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "Common/Bluetooth/DeviceDiscovery.h"
#include "Common/Bluetooth/ObexService.h"
#include "Common/Bluetooth/ObexSession.h"

namespace obex {

class StackService : public Service {
public:
    // Opens the byte stream to a device; null, with the reason, when it can't.
    using Connector =
        std::function<std::unique_ptr<ByteStream>(const PropertyBag& device, std::string& error)>;
    using DiscoveryFactory = std::function<std::unique_ptr<DeviceDiscovery>()>;
    using StatusQuery = std::function<DWORD(int* state)>;

    StackService(DiscoveryFactory discovery, StatusQuery status, Connector connector,
                 int timeoutMs = 10000);
    ~StackService() override;

    bool Initialize() override;
    bool Advise(std::shared_ptr<Sink> sink) override;
    void Unadvise() override;
    bool StartDeviceEnum() override;
    void StopDeviceEnum() override;
    std::unique_ptr<Device> BindToDevice(const PropertyBagPtr& device) override;
    DWORD HardwareStatus(int* state) override;

private:
    void OnReport(const std::wstring& identity, DeviceProperties properties);

    DiscoveryFactory makeDiscovery;
    StatusQuery status;
    Connector connector;
    int timeoutMs;
    std::unique_ptr<DeviceDiscovery> discovery;
    std::mutex mutex;  // the sink and the bags, against the discovery's thread
    std::shared_ptr<Sink> sink;
    std::map<std::wstring, std::pair<PropertyBagPtr, DeviceProperties>> devices;
};

// Opens TCP devices at their "Address" (host:port; without a port, "Port",
// else 650) and Bluetooth devices at their "Address" over RFCOMM, on the
// channel in "Port" or else by the Object Push service.
std::unique_ptr<ByteStream> ConnectTransport(const PropertyBag& device, int timeoutMs,
                                             std::string& error);

// The service of this machine: the driver's network peers when it names
// them, else BlueZ; `status` is the stack's hardware state query.
std::unique_ptr<Service> MakeStackService(StackService::StatusQuery status);

}  // namespace obex
