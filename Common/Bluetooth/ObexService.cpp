#include "Common/Bluetooth/ObexService.h"

namespace obex {

std::optional<Property> PropertyBag::Read(const std::wstring& name) const {
    std::lock_guard lock(mutex);
    const auto it = values.find(name);
    if (it == values.end()) return std::nullopt;
    return it->second;
}

void PropertyBag::Write(const std::wstring& name, Property value) {
    std::lock_guard lock(mutex);
    values[name] = std::move(value);
}

std::optional<std::wstring> PropertyBag::Text(const std::wstring& name) const {
    const auto value = Read(name);
    if (!value || !std::holds_alternative<std::wstring>(*value)) return std::nullopt;
    return std::get<std::wstring>(*value);
}

namespace {
std::mutex factoryMutex;
ServiceFactory& Factory() {
    static ServiceFactory factory;
    return factory;
}
}  // namespace

std::unique_ptr<Service> CreateService() {
    ServiceFactory factory;
    {
        std::lock_guard lock(factoryMutex);
        factory = Factory();
    }
    return factory ? factory() : nullptr;
}

void SetServiceFactory(ServiceFactory factory) {
    std::lock_guard lock(factoryMutex);
    Factory() = std::move(factory);
}

}  // namespace obex
