#pragma once
// An OBEX service, bound device and PUT stream in one, that answers as its
// script says and notes every call the sender makes in it.

#include <string>

#include "Common/Bluetooth/ObexService.h"

namespace obextest {

struct Script {
    bool service = true, init = true, bind = true, connect = true;
    int state = obex::kStateRunning, failingWrite = -1, writes = 0;
    std::shared_ptr<obex::Sink> sink{};
    std::wstring calls{};
};

struct ScriptedObex : obex::Service, obex::Device, obex::PutStream {
    using Headers = obex::HeaderCollection;
    explicit ScriptedObex(Script& s) : s(s) {}
    bool Initialize() override { return s.init; }
    bool Advise(std::shared_ptr<obex::Sink> sink) override { return s.sink = sink, true; }
    void Unadvise() override {}
    bool StartDeviceEnum() override { return true; }
    void StopDeviceEnum() override {}
    std::unique_ptr<obex::Device> BindToDevice(const obex::PropertyBagPtr& device) override {
        s.calls += L" bind " + *device->Text(L"Name");
        return s.bind ? std::make_unique<ScriptedObex>(s) : nullptr;
    }
    DWORD HardwareStatus(int* state) override {
        return s.calls += L" status", *state = s.state, s.state < 0;
    }
    bool Connect(const Headers& h) override { return Note(L" connect", h), s.connect; }
    std::unique_ptr<obex::PutStream> Put(const Headers& h) override {
        return Note(L" put", h), std::make_unique<ScriptedObex>(s);
    }
    void EndExchange(const Headers&) override { s.calls += L" end"; }
    bool Write(const std::uint8_t*, std::size_t size) override {
        return s.calls += L" write" + std::to_wstring(size), s.writes++ != s.failingWrite;
    }
    bool Commit() override { return s.calls += L" commit", true; }
    void Note(const wchar_t* what, const Headers& h) {
        s.calls += what + (L'(' + h.name) + L',' + std::to_wstring(*h.length) + L')';
    }

    Script& s;
};

// Serves the sender until the result goes.
[[nodiscard]] inline std::shared_ptr<void> Install(Script& s) {
    obex::SetServiceFactory([&s]() -> std::unique_ptr<obex::Service> {
        return s.service ? std::make_unique<ScriptedObex>(s) : nullptr;
    });
    return {nullptr, [](void*) { obex::SetServiceFactory(nullptr); }};
}

}  // namespace obextest
