#include "Common/Bluetooth/StackService.h"

#include <QHostAddress>
#include <QString>

#include "Common/Bluetooth/RfcommStream.h"
#include "Common/Bluetooth/SessionDevice.h"
#include "Common/Bluetooth/TcpStream.h"

namespace obex {

StackService::StackService(DiscoveryFactory discovery, StatusQuery status, Connector connector,
                           int timeoutMs)
    : makeDiscovery(std::move(discovery)),
      status(std::move(status)),
      connector(std::move(connector)),
      timeoutMs(timeoutMs) {}

StackService::~StackService() {
    StopDeviceEnum();
}

bool StackService::Initialize() {
    return makeDiscovery != nullptr && connector != nullptr;
}

bool StackService::Advise(std::shared_ptr<Sink> newSink) {
    std::lock_guard lock(mutex);
    if (sink != nullptr || newSink == nullptr) return false;
    sink = std::move(newSink);
    return true;
}

void StackService::Unadvise() {
    std::lock_guard lock(mutex);
    sink.reset();
}

bool StackService::StartDeviceEnum() {
    StopDeviceEnum();
    discovery = makeDiscovery();
    if (discovery == nullptr) return false;
    return discovery->Start([this](const std::wstring& identity, DeviceProperties properties) {
        OnReport(identity, std::move(properties));
    });
}

void StackService::StopDeviceEnum() {
    // Not under the lock: the discovery's thread may be waiting for it.
    if (discovery != nullptr) discovery->Stop();
    discovery.reset();
}

void StackService::OnReport(const std::wstring& identity, DeviceProperties properties) {
    std::lock_guard lock(mutex);
    auto known = devices.find(identity);
    int event = kDeviceChanged;
    if (known == devices.end()) {
        known = devices.emplace(identity, std::make_pair(std::make_shared<PropertyBag>(),
                                                         DeviceProperties{}))
                    .first;
        event = kDeviceArrived;
    } else if (known->second.second == properties) {
        return;  // reported again, unchanged
    }
    auto& [bag, seen] = known->second;
    for (const auto& [name, value] : properties) bag->Write(name, value);
    seen = std::move(properties);
    if (sink != nullptr) sink->Notify(event, bag);
}

std::unique_ptr<Device> StackService::BindToDevice(const PropertyBagPtr& device) {
    if (device == nullptr) return nullptr;
    std::string error;  // the sender says only that the device is not ready
    std::unique_ptr<ByteStream> stream = connector(*device, error);
    if (stream == nullptr) return nullptr;
    return std::make_unique<SessionDevice>(std::move(stream), timeoutMs);
}

DWORD StackService::HardwareStatus(int* state) {
    return status ? status(state) : static_cast<DWORD>(ERROR_SERVICE_NOT_ACTIVE);
}

namespace {
// "host:port", "[v6]:port" or a bare host; the port, when the text names one.
std::pair<QString, std::optional<int>> SplitHostPort(const QString& text) {
    if (!QHostAddress(text).isNull()) return {text, std::nullopt};  // a bare IPv6 address
    const int colon = text.lastIndexOf(':');
    bool ok = false;
    const int port = colon > 0 ? text.mid(colon + 1).toInt(&ok) : 0;
    if (!ok || port < 1 || port > 65535) return {text, std::nullopt};
    QString host = text.left(colon);
    if (host.startsWith('[') && host.endsWith(']')) host = host.mid(1, host.size() - 2);
    return {host, port};
}

std::optional<int> IntegerOf(const std::optional<Property>& value) {
    if (!value) return std::nullopt;
    if (const auto* number = std::get_if<std::int32_t>(&*value)) return *number;
    bool ok = false;
    const int number = QString::fromStdWString(std::get<std::wstring>(*value)).toInt(&ok);
    return ok ? std::optional<int>(number) : std::nullopt;
}

QString TextOf(const Property& value) {
    if (const auto* number = std::get_if<std::int32_t>(&value))
        return QHostAddress(static_cast<quint32>(*number)).toString();
    return QString::fromStdWString(std::get<std::wstring>(value));
}
}  // namespace

std::unique_ptr<ByteStream> ConnectTransport(const PropertyBag& device, int timeoutMs,
                                             std::string& error) {
    const std::optional<std::wstring> transport = device.Text(L"Transport");
    const std::optional<Property> address = device.Read(L"Address");
    if (!transport || !address) {
        error = "the device names no transport or address";
        return nullptr;
    }
    const std::optional<int> port = IntegerOf(device.Read(L"Port"));
    if (*transport == kTcpTransport) {
        const auto [host, addressPort] = SplitHostPort(TextOf(*address));
        const int tcpPort = addressPort.value_or(port.value_or(kObexTcpPort));
        if (tcpPort < 1 || tcpPort > 65535) {
            error = "port " + std::to_string(tcpPort) + " is out of range";
            return nullptr;
        }
        return TcpStream::Connect(host.toStdString(), static_cast<std::uint16_t>(tcpPort),
                                  timeoutMs, error);
    }
    if (*transport == kBluetoothTransport) {
        const std::string radio = TextOf(*address).toStdString();
        if (port && *port >= 1 && *port <= 30)
            return RfcommStream::ConnectChannel(radio, static_cast<std::uint8_t>(*port), timeoutMs,
                                                error);
        return RfcommStream::ConnectService(radio, kObjectPushUuid, timeoutMs, error);
    }
    error = "unknown transport " + QString::fromStdWString(*transport).toStdString();
    return nullptr;
}

std::unique_ptr<Service> MakeStackService(StackService::StatusQuery status) {
    constexpr int kTimeoutMs = 10000;
    return std::make_unique<StackService>(
        [] {
            std::unique_ptr<DeviceDiscovery> peers = NetworkPeerDiscovery();
            return peers != nullptr ? std::move(peers) : BluezDiscovery();
        },
        std::move(status),
        [](const PropertyBag& device, std::string& error) {
            return ConnectTransport(device, kTimeoutMs, error);
        },
        kTimeoutMs);
}

}  // namespace obex
