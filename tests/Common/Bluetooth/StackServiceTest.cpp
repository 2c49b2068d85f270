// The service on the simulated instrument: the bench's peers, read through
// the Bluetooth driver, become device events with one bag per peer that a
// change updates in place; a sink taken away hears nothing more.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
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

void WriteBench(const std::string& text) {
    std::ofstream(scratch.Path("b.new")) << text;
    std::filesystem::rename(scratch.Path("b.new"), scratch.Path("b.ini"));
}

struct Recorder : Sink {
    void Notify(int event, const PropertyBagPtr& device) override {
        std::lock_guard lock(mutex);
        events.emplace_back(event, device);
    }
    std::vector<std::pair<int, PropertyBagPtr>> Wait(size_t count) {
        for (int i = 0; i < 500; ++i) {
            {
                std::lock_guard lock(mutex);
                if (events.size() >= count) return events;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << "waited 5 s for " << count << " device events";
        std::lock_guard lock(mutex);
        return events;
    }
    std::mutex mutex;
    std::vector<std::pair<int, PropertyBagPtr>> events;
};

TEST(StackService, BenchPeersArriveOnceAndAChangeReusesTheirBag) {
    platform::LoadHiveFromText(
        "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0]\n\"Dll\"=\"tavix_sim_btd.dll\"\n"
        "\"Prefix\"=\"BTD\"\n\"Index\"=dword:0\n");
    const std::string push = "{00001105-0000-1000-8000-00805f9b34fb}";
    WriteBench("[peers]\nPhone = 127.0.0.1:6500 " + push + "\nKiosk = ::1:7000\n");
    StackService service([] { return NetworkPeerDiscovery(10); }, nullptr,
                         [](const PropertyBag&, std::string&) { return nullptr; });
    auto sink = std::make_shared<Recorder>();
    ASSERT_TRUE(service.Initialize());
    ASSERT_TRUE(service.Advise(sink));
    ASSERT_TRUE(service.StartDeviceEnum());
    auto events = sink->Wait(2);
    ASSERT_EQ(events.size(), 2u);
    const PropertyBagPtr phone = events[0].second;
    EXPECT_EQ(events[0].first, kDeviceArrived);
    EXPECT_EQ(phone->Text(L"Name"), L"Phone");
    EXPECT_EQ(phone->Text(L"Transport"), kTcpTransport);
    EXPECT_EQ(phone->Text(L"Address"), L"127.0.0.1:6500");
    EXPECT_EQ(phone->Read(L"Port"), Property(std::int32_t{6500}));
    EXPECT_EQ(phone->Text(L"ServiceUUID"), std::wstring(push.begin(), push.end()));
    EXPECT_EQ(events[1].second->Read(L"ServiceUUID"), std::nullopt);
    EXPECT_EQ(events[1].second->Read(L"Port"), Property(std::int32_t{7000}));

    // Renamed on the bench: the same device, so the same bag, changed.
    WriteBench("[peers]\nPhone2 = 127.0.0.1:6500 " + push + "\nKiosk = ::1:7000\n");
    events = sink->Wait(3);
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[2], std::make_pair(kDeviceChanged, phone));
    EXPECT_EQ(phone->Text(L"Name"), L"Phone2");
    EXPECT_EQ(service.HardwareStatus(nullptr), static_cast<DWORD>(ERROR_SERVICE_NOT_ACTIVE));

    service.Unadvise();
    WriteBench("[peers]\nTablet = 127.0.0.1:6600\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(sink->events.size(), 3u) << "no event after the sink was taken away";
    service.StopDeviceEnum();
}

}  // namespace
}  // namespace obex
