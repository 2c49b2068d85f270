#pragma once
// The OBEX service the file sender talks to, shaped as the embedded OS's was:
// a device search reported to a sink as events that carry the device's
// property bag, binding to one device, and on the bound device a connect, a
// PUT stream written and committed, and the end of the exchange. Where the
// devices come from (BlueZ, or the peers the simulated instrument's bench
// names) and how they are reached (RFCOMM, TCP) is the service's business.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

#include "Platform/WinTypes.h"

namespace obex {

// A device property: text, or a 32-bit integer.
using Property = std::variant<std::wstring, std::int32_t>;

// A device's properties ("Name", "Transport", "Address", "Port",
// "ServiceUUID"). Shared between the thread that finds a device and the
// screen that lists it, so every access is locked.
class PropertyBag {
public:
    std::optional<Property> Read(const std::wstring& name) const;
    void Write(const std::wstring& name, Property value);
    // The text of a text property; none when absent or an integer.
    std::optional<std::wstring> Text(const std::wstring& name) const;

private:
    mutable std::mutex mutex;
    std::map<std::wstring, Property> values;
};
using PropertyBagPtr = std::shared_ptr<PropertyBag>;

// Device events.
constexpr int kDeviceArrived = 5;
constexpr int kDeviceChanged = 7;

// Stack hardware states; 1, 4 and 5 mean "not ready".
enum HardwareState : int {
    kStateUnknown = 0,
    kStateNotPresent = 1,
    kStateInitializing = 2,
    kStateRunning = 3,
    kStateShutDown = 4,
    kStateError = 5,
};

// The class identifiers a "Transport" property holds.
inline constexpr wchar_t kBluetoothTransport[] = L"{715ad7d6-a3a3-4556-95ed-d2850592e82a}";
inline constexpr wchar_t kTcpTransport[] = L"{7e8c6400-6fc9-412a-8692-f93f0de6b499}";
// The services a sender can push to, as "ServiceUUID" lists them.
inline constexpr wchar_t kObjectPushUuid[] = L"{00001105-0000-1000-8000-00805f9b34fb}";
inline constexpr wchar_t kFileTransferUuid[] = L"{00001106-0000-1000-8000-00805f9b34fb}";
// OBEX over TCP when the address names no port.
constexpr std::uint16_t kObexTcpPort = 650;

// Receives device events, from whatever thread finds the device.
class Sink {
public:
    virtual ~Sink() = default;
    virtual void Notify(int event, const PropertyBagPtr& device) = 0;
};

// The headers that go with a connect or a PUT.
struct HeaderCollection {
    std::wstring name;
    std::optional<std::uint32_t> length;
};

// The body of one PUT. A write of zero bytes sends nothing.
class PutStream {
public:
    virtual ~PutStream() = default;
    virtual bool Write(const std::uint8_t* data, std::size_t size) = 0;
    virtual bool Commit() = 0;
};

class Device {
public:
    virtual ~Device() = default;
    // Connects once; a connect on a connected device succeeds at once.
    virtual bool Connect(const HeaderCollection& headers) = 0;
    // Null when the peer refused the PUT or the device is not connected.
    virtual std::unique_ptr<PutStream> Put(const HeaderCollection& headers) = 0;
    // The header collection of the end of the exchange: the session ends
    // with DISCONNECT and the link is closed.
    virtual void EndExchange(const HeaderCollection& headers) = 0;
};

class Service {
public:
    virtual ~Service() = default;
    virtual bool Initialize() = 0;
    // One sink at a time; Unadvise stops its events (none arrive after it returns).
    virtual bool Advise(std::shared_ptr<Sink> sink) = 0;
    virtual void Unadvise() = 0;
    // Reports every device found (event 5) and every change (event 7) to
    // the sink until stopped.
    virtual bool StartDeviceEnum() = 0;
    virtual void StopDeviceEnum() = 0;
    // Null when the device cannot be reached.
    virtual std::unique_ptr<Device> BindToDevice(const PropertyBagPtr& device) = 0;
    // ERROR_SUCCESS and the state, or the error of a failed query.
    virtual DWORD HardwareStatus(int* state) = 0;
};

// The service of this machine; null when none can be made. Tests replace
// the factory.
using ServiceFactory = std::function<std::unique_ptr<Service>()>;
std::unique_ptr<Service> CreateService();
void SetServiceFactory(ServiceFactory factory);

}  // namespace obex
