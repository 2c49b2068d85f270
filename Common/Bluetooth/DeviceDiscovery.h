#pragma once
// Where the devices a search finds come from: BlueZ, or the OBEX peers the
// Bluetooth driver reaches over TCP. A discovery reports each device it sees,
// again whenever it may have changed, with the properties a device's bag
// holds; telling new devices from changed ones is the service's job.

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "Common/Bluetooth/ObexService.h"

namespace obex {

using DeviceProperties = std::map<std::wstring, Property>;

class DeviceDiscovery {
public:
    // `identity` stays the same for one device however its properties change.
    using Report = std::function<void(const std::wstring& identity, DeviceProperties properties)>;

    virtual ~DeviceDiscovery() = default;
    // Reports may come from any thread.
    virtual bool Start(Report report) = 0;
    // No report arrives after it returns.
    virtual void Stop() = 0;
};

// The OBEX peers the "BTD0:" driver names (the simulated instrument's
// bench), read every `pollMs`; null when the driver has no such list.
std::unique_ptr<DeviceDiscovery> NetworkPeerDiscovery(int pollMs = 500);
// The devices BlueZ reports, offering Object Push or File Transfer. Start
// and Stop on the user-interface thread, whose event loop the reports come from.
std::unique_ptr<DeviceDiscovery> BluezDiscovery();

}  // namespace obex
