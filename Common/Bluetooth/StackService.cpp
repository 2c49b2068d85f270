#include "Common/Bluetooth/StackService.h"

#include "Common/Bluetooth/SessionDevice.h"

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
    bindError.clear();
    if (device == nullptr) return nullptr;
    std::unique_ptr<ByteStream> stream = connector(*device, bindError);
    if (stream == nullptr) return nullptr;
    return std::make_unique<SessionDevice>(std::move(stream), timeoutMs);
}

DWORD StackService::HardwareStatus(int* state) {
    return status ? status(state) : static_cast<DWORD>(ERROR_SERVICE_NOT_ACTIVE);
}

}  // namespace obex
