#pragma once
// BlueZ on the system D-Bus: the adapter's state, numbered as the Bluetooth
// stack reports its hardware state, and the nearby devices that take an
// OBEX push. Nothing here blocks for more than a couple of seconds, however
// the bus or the daemon behaves.

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform::bluez {

// Hardware states; the OBEX service's numbers, kept here because Platform
// sits below it.
constexpr int kNotPresent = 1;
constexpr int kInitializing = 2;
constexpr int kRunning = 3;
constexpr int kShutDown = 4;
constexpr int kError = 5;

// Device events; the OBEX service's sink numbers.
constexpr int kDeviceArrived = 5;
constexpr int kDeviceChanged = 7;

// The two services a file can be pushed to, as BlueZ lists them.
inline constexpr char kObjectPushUuid[] = "00001105-0000-1000-8000-00805f9b34fb";
inline constexpr char kFileTransferUuid[] = "00001106-0000-1000-8000-00805f9b34fb";

// The state of the first adapter BlueZ lists: kNotPresent without BlueZ or
// without an adapter, kShutDown when powered off, kError when blocked or
// when BlueZ does not answer properly, kRunning when powered.
int AdapterState();

struct Device {
    std::string path;                 // BlueZ's object path of the device
    std::wstring name;                // its alias, else its name, else its address
    std::wstring address;             // "AA:BB:CC:DD:EE:FF"
    std::vector<std::wstring> uuids;  // as BlueZ gives them: lower-case, 128-bit

    bool operator==(const Device&) const = default;
};

// Reports the devices that offer Object Push or File Transfer, and keeps the
// adapter discovering while it runs.
//
// Threads: Start and Stop belong to one thread, which must run a Qt event
// loop (the UI thread). The callback runs on that thread only: from within
// Start for the devices BlueZ already knows, then from its event loop. The
// callback may call Stop, but must not destroy the watcher.
class DeviceWatcher {
public:
    using Callback = std::function<void(int event, const Device& device)>;

    DeviceWatcher();
    ~DeviceWatcher();
    DeviceWatcher(const DeviceWatcher&) = delete;
    DeviceWatcher& operator=(const DeviceWatcher&) = delete;

    // kDeviceArrived when a device offering either service appears or gains
    // one; kDeviceChanged when what Device shows of a reported device
    // changes. False, with no callback ever, when BlueZ cannot be reached;
    // a refused discovery is no failure (the known devices still count).
    bool Start(Callback callback);
    // No callback after it returns.
    void Stop();

private:
    class Receiver;
    std::unique_ptr<Receiver> receiver;
};

}  // namespace platform::bluez
