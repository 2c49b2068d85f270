// The service on the simulated instrument: the bench's peers, read through
// the Bluetooth driver, become device events with one bag per peer that a
// change updates in place; a sink taken away hears nothing more.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "Common/Bluetooth/StackService.h"
#include "Platform/Registry.h"
#include "Support/ScratchDirectory.h"

namespace obex {
namespace {

const ScratchDirectory scratch;
[[maybe_unused]] const int benchSet = setenv("TAVIX_BENCH", scratch.Path("b.ini").c_str(), 1);

void WriteBench(const std::string& peers) {
    std::ofstream(scratch.Path("b.new")) << "[peers]\n" << peers;
    std::filesystem::rename(scratch.Path("b.new"), scratch.Path("b.ini"));
}

struct Recorder : Sink {
    void Notify(int event, const PropertyBagPtr& device) override {
        std::lock_guard lock(mutex);
        events.emplace_back(event, device);
    }
    // The events once there are `count`, or after 5 s those there are.
    std::vector<std::pair<int, PropertyBagPtr>> Wait(size_t count) {
        for (int i = 0; i < 500 && (std::lock_guard(mutex), events.size() < count); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return std::lock_guard(mutex), events;
    }
    std::mutex mutex;
    std::vector<std::pair<int, PropertyBagPtr>> events;
};

TEST(StackService, BenchPeersArriveOnceAndAChangeReusesTheirBag) {
    platform::LoadHiveFromText(
        "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0]\n\"Dll\"=\"tavix_sim_btd.dll\"\n"
        "\"Prefix\"=\"BTD\"\n\"Index\"=dword:0\n");
    const std::string push = " {00001105-0000-1000-8000-00805f9b34fb}\n";
    WriteBench("Phone = 127.0.0.1:6500" + push + "Kiosk = ::1:7000\n");
    StackService service([] { return NetworkPeerDiscovery(10); }, nullptr, nullptr);
    auto sink = std::make_shared<Recorder>();
    ASSERT_TRUE(service.Advise(sink) && service.StartDeviceEnum());
    auto events = sink->Wait(2);
    ASSERT_EQ(events.size(), 2u);
    const PropertyBagPtr phone = events[0].second;
    EXPECT_EQ(events[0].first, kDeviceArrived);
    EXPECT_EQ(phone->Text(L"Transport"), kTcpTransport);
    EXPECT_EQ(phone->Text(L"Address"), L"127.0.0.1:6500");
    EXPECT_EQ(phone->Text(L"ServiceUUID"), std::wstring(push.begin() + 1, push.end() - 1));
    EXPECT_EQ(events[1].second->Read(L"ServiceUUID"), std::nullopt);
    EXPECT_EQ(events[1].second->Read(L"Port"), Property(std::int32_t{7000}));

    // Renamed on the bench: the same device, so the same bag, changed.
    WriteBench("Phone2 = 127.0.0.1:6500" + push + "Kiosk = ::1:7000\n");
    events = sink->Wait(3);
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[2], std::make_pair(kDeviceChanged, phone));
    EXPECT_EQ(phone->Text(L"Name"), L"Phone2");

    service.Unadvise();
    WriteBench("Tablet = 127.0.0.1:6600\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // ten reads of the bench
    EXPECT_EQ(sink->Wait(0).size(), 3u) << "no event after the sink was taken away";
}

}  // namespace
}  // namespace obex
