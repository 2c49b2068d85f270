// BlueZ as a mock (python3-dbusmock) on a bus of the test's own that stands in
// for the system bus; the mock is driven through its mock interfaces.

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <QtDBus>
#include <csignal>

#include "Platform/Bluez.h"
#include "Platform/Registry.h"
#include "Platform/StreamDevice.h"

namespace {
constexpr int kBoundMs = 15000;
const QString kHci0 = "/org/bluez/hci0";
const QVariantList kNewAdapter = {"hci0", "meter"};

// Runs the event loop until `done`, for a bounded time; false when it never came.
bool Await(const std::function<bool()>& done) {
    for (QDeadlineTimer end(kBoundMs); !done() && !end.hasExpired();)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return done();
}

// Killed when the application goes or the test dies, however it ends.
QProcess* Spawn(const QString& program, const QStringList& arguments) {
    auto* child = new QProcess(qApp);
    child->setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    child->start(program, arguments);
    return child;
}

// The mock's own methods: BlueZ-wide ones on "/", property changes (which
// BlueZ signals) on the object they change.
QVariant Mock(const QString& path, const QString& method, const QVariantList& arguments) {
    const char* iface = path == "/" ? "org.bluez.Mock" : "org.freedesktop.DBus.Mock";
    auto message = QDBusMessage::createMethodCall("org.bluez", path, iface, method);
    message.setArguments(arguments);
    const auto reply = QDBusConnection::systemBus().call(message, QDBus::Block, kBoundMs);
    EXPECT_EQ(reply.errorMessage().toStdString(), "") << method.toStdString();
    return reply.arguments().value(0);
}
void Set(const QString& path, const char* property, const QVariant& value,
         const char* how = "UpdateProperties") {
    const char* iface = path == kHci0 ? "org.bluez.Adapter1" : "org.bluez.Device1";
    Mock(path, how, {iface, QVariantMap{{property, value}}});
}
QString AddDevice(const char* address, const char* alias, const QString& uuid) {
    const QString path = Mock("/", "AddDevice", {"hci0", address, alias}).toString();
    Set(path, "UUIDs", QStringList{uuid});
    return path;
}

// One run, as the instrument meets BlueZ: not there, there without an
// adapter, an adapter in every state; then the devices it finds, of which
// only those that take a push are reported, at once when BlueZ knows them,
// later when they appear or gain the service, and then what changes of them.
TEST(Bluez, AdapterStateAndDevicesFollowBluez) {
    QProcess* bus = Spawn("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
    ASSERT_TRUE(bus->waitForReadyRead(kBoundMs)) << "the private bus's address";
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus->readLine().trimmed());
    platform::LoadHiveFromText(
        "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0]\n"
        "\"Index\"=dword:0\n\"Dll\"=\"tavix_btd.dll\"\n\"Prefix\"=\"BTD\"\n");
    const HANDLE bt = CreateFileW(L"BTD0:", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(bt, INVALID_HANDLE_VALUE) << GetLastError();
    std::vector<std::wstring> events;
    const auto record = [&](int event, const platform::bluez::Device& d) {
        events.push_back(std::to_wstring(event) + L" " + d.name + L" " + d.address + L" " +
                         d.uuids.at(0));
    };
    platform::bluez::DeviceWatcher watcher;
    EXPECT_FALSE(watcher.Start(record)) << "without BlueZ";
    const auto startBluez = [] {
        Spawn("/usr/bin/python3", {"-m", "dbusmock", "--template", "bluez5"});
        const auto* dbus = QDBusConnection::systemBus().interface();
        EXPECT_TRUE(Await([&] { return dbus->isServiceRegistered("org.bluez"); })) << "BlueZ up";
    };
    const std::tuple<const char*, std::function<void()>, DWORD> cases[] = {
        {"no BlueZ", [] {}, 1},
        {"no adapter", startBluez, 1},
        {"on", [] { Mock("/", "AddAdapter", kNewAdapter); }, 3},
        {"off", [] { Set(kHci0, "Powered", false); }, 4},
        {"blocked", [] { Set(kHci0, "PowerState", "off-blocked", "AddProperties"); }, 5},
        {"switching on", [] { Set(kHci0, "PowerState", "off-enabling"); }, 2},
    };
    for (const auto& [what, change, state] : cases) {
        change();
        EXPECT_EQ(platform::bluez::AdapterState(), static_cast<int>(state)) << what;
        DWORD buffer[8] = {};
        EXPECT_TRUE(DeviceIoControl(bt, 44, buffer, 32, nullptr, 0, nullptr, nullptr)) << what;
        EXPECT_EQ(buffer[0], state) << what;
    }
    const QString laptop =
        AddDevice("11:22:33:44:55:66", "Laptop", "00001106-0000-1000-8000-00805f9b34fb");
    ASSERT_TRUE(watcher.Start(record));
    // Signals keep their order: a headset or a signal strength reported would come first.
    AddDevice("AA:BB:CC:DD:EE:01", "Headset", "0000110b-0000-1000-8000-00805f9b34fb");
    const QString phone =
        AddDevice("AA:BB:CC:DD:EE:02", "Phone", "0000111f-0000-1000-8000-00805f9b34fb");
    Set(laptop, "RSSI", QVariant::fromValue<qint16>(-40));
    Set(laptop, "Alias", "Desk laptop");
    Set(phone, "UUIDs", QStringList{"00001105-0000-1000-8000-00805f9b34fb"});
    ASSERT_TRUE(Await([&] { return events.size() >= 3; })) << "the new alias and the phone";
    EXPECT_EQ(events, (std::vector<std::wstring>{
                          L"5 Laptop 11:22:33:44:55:66 00001106-0000-1000-8000-00805f9b34fb",
                          L"7 Desk laptop 11:22:33:44:55:66 00001106-0000-1000-8000-00805f9b34fb",
                          L"5 Phone AA:BB:CC:DD:EE:02 00001105-0000-1000-8000-00805f9b34fb"}));
}

}  // namespace
