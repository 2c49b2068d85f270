// BlueZ on a private bus: a dbus-daemon of the test's own stands in for the
// system bus, with a mock BlueZ on it driven through the mock's interfaces.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QProcess>

#include "Platform/Bluez.h"
#include "Platform/Registry.h"
#include "Platform/StreamDevice.h"

namespace {
using platform::bluez::Device;

constexpr int kBoundMs = 15000;
const QString kAdapter = "/org/bluez/hci0";
const QString kAdapterIface = "org.bluez.Adapter1";
const QString kDeviceIface = "org.bluez.Device1";
const QString kMockIface = "org.freedesktop.DBus.Mock";

// Runs the event loop until `done`, for a bounded time; false when it never came.
bool Await(const std::function<bool()>& done) {
    const QDeadlineTimer deadline(kBoundMs);
    while (!done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return done();
}

bool BluezOnBus() {
    return QDBusConnection::systemBus().interface()->isServiceRegistered("org.bluez");
}

// A child that dies with the test, however the test ends.
std::unique_ptr<QProcess> Spawn(const QString& program, const QStringList& arguments) {
    auto process = std::make_unique<QProcess>();
    process->setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process->start(program, arguments);
    return process;
}

void Kill(std::unique_ptr<QProcess>& process) {
    process->kill();
    EXPECT_TRUE(process->waitForFinished(kBoundMs)) << process->program().toStdString();
    process.reset();
}

class Bluez : public testing::Test {
protected:
    static void SetUpTestSuite() {
        bus = Spawn("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
        ASSERT_TRUE(bus->waitForReadyRead(kBoundMs)) << "the private bus's address";
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus->readLine().trimmed());
    }
    static void TearDownTestSuite() { Kill(bus); }

    void TearDown() override {
        if (!mock) return;
        Kill(mock);
        EXPECT_TRUE(Await([] { return !BluezOnBus(); })) << "the mock BlueZ leaving the bus";
    }

    void StartBluez() {
        mock = Spawn("/usr/bin/python3", {"-m", "dbusmock", "--template", "bluez5"});
        ASSERT_TRUE(Await(BluezOnBus)) << "the mock BlueZ on the bus";
    }

    static QVariant Mock(const QString& path, const QString& iface, const QString& method,
                         const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall("org.bluez", path, iface, method);
        message.setArguments(arguments);
        const auto reply = QDBusConnection::systemBus().call(message, QDBus::Block, kBoundMs);
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage)
            << method.toStdString() << ": " << reply.errorMessage().toStdString();
        return reply.arguments().value(0);
    }
    static void Set(const QString& path, const QString& iface, const QVariantMap& values) {
        Mock(path, kMockIface, "UpdateProperties", {iface, values});
    }
    static QString AddDevice(const QString& address, const QString& alias,
                             const QStringList& uuids) {
        const QString path =
            Mock("/", "org.bluez.Mock", "AddDevice", {"hci0", address, alias}).toString();
        Set(path, kDeviceIface, {{"UUIDs", uuids}});
        return path;
    }
    static bool Discovering() {
        return Mock(kAdapter, "org.freedesktop.DBus.Properties", "Get",
                    {kAdapterIface, "Discovering"})
            .value<QDBusVariant>()
            .variant()
            .toBool();
    }

    static inline std::unique_ptr<QProcess> bus;
    std::unique_ptr<QProcess> mock;
};

// The state BlueZ gives, asked directly and through the driver as the probe asks.
TEST_F(Bluez, AdapterStateFollowsBluezAndTheDriverAnswersWithIt) {
    platform::LoadHiveFromText(
        "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0]\n\"Dll\"=\"tavix_btd.dll\"\n"
        "\"Prefix\"=\"BTD\"\n\"Index\"=dword:0\n");
    const HANDLE driver =
        CreateFileW(L"BTD0:", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(driver, INVALID_HANDLE_VALUE) << GetLastError();
    const struct {
        const char* what;
        std::function<void()> change;
        DWORD state;
    } cases[] = {
        {"no BlueZ", [] {}, 1},
        {"no adapter", [this] { StartBluez(); }, 1},
        {"powered",
         [] {
             Mock("/", "org.bluez.Mock", "AddAdapter", {"hci0", "meter"});
         },
         3},
        {"powered off",
         [] {
             Set(kAdapter, kAdapterIface, {{"Powered", false}});
         },
         4},
        {"blocked",
         [] {
             Mock(kAdapter, kMockIface, "AddProperties",
                  {kAdapterIface, QVariantMap{{"PowerState", "off-blocked"}}});
         },
         5},
        {"switching on",
         [] {
             Set(kAdapter, kAdapterIface, {{"PowerState", "off-enabling"}});
         },
         2},
        {"on",
         [] {
             Set(kAdapter, kAdapterIface, {{"PowerState", "on"}});
         },
         3},
    };
    for (const auto& c : cases) {
        c.change();
        EXPECT_EQ(platform::bluez::AdapterState(), static_cast<int>(c.state)) << c.what;
        DWORD buffer[8] = {};
        EXPECT_TRUE(
            DeviceIoControl(driver, 44, buffer, sizeof buffer, nullptr, 0, nullptr, nullptr));
        EXPECT_EQ(buffer[0], c.state) << c.what;
    }
    DWORD word = 0;
    EXPECT_FALSE(DeviceIoControl(driver, 44, &word, 2, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_FALSE(DeviceIoControl(driver, 45, &word, sizeof word, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_SUPPORTED));
    EXPECT_TRUE(CloseHandle(driver));
}

// Only devices that take a push are reported: at once when BlueZ knows them,
// later when they appear or gain the service; then what changes of them.
TEST_F(Bluez, WatcherReportsDevicesThatTakeAPushAndTheirChanges) {
    const QString ftp = "00001106-0000-1000-8000-00805f9b34fb";
    platform::bluez::DeviceWatcher watcher;
    std::vector<std::pair<int, Device>> events;
    const auto record = [&](int event, const Device& device) {
        events.emplace_back(event, device);
    };
    EXPECT_FALSE(watcher.Start(record)) << "without BlueZ";
    StartBluez();
    Mock("/", "org.bluez.Mock", "AddAdapter", {"hci0", "meter"});
    const QString laptop = AddDevice("11:22:33:44:55:66", "Laptop", {ftp});
    ASSERT_TRUE(watcher.Start(record));
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0], std::make_pair(5, Device{laptop.toStdString(),
                                                  L"Laptop",
                                                  L"11:22:33:44:55:66",
                                                  {ftp.toStdWString()}}));
    EXPECT_TRUE(Await(Discovering)) << "discovery on the adapter";
    // Signals arrive in order: a headset or a mere signal strength reported
    // would come before the alias.
    AddDevice("AA:BB:CC:DD:EE:01", "Headset", {"0000110b-0000-1000-8000-00805f9b34fb"});
    const QString phone = AddDevice("AA:BB:CC:DD:EE:02", "Phone", {});
    Set(laptop, kDeviceIface, {{"RSSI", QVariant::fromValue<qint16>(-40)}});
    Set(laptop, kDeviceIface, {{"Alias", "Desk laptop"}});
    Set(phone, kDeviceIface, {{"UUIDs", QStringList{"00001105-0000-1000-8000-00805f9b34fb"}}});
    ASSERT_TRUE(Await([&] { return events.size() >= 3; }))
        << "the alias and the phone's push service";
    EXPECT_EQ(events[1].first, 7);
    EXPECT_EQ(events[1].second.name, L"Desk laptop");
    EXPECT_EQ(events[2].first, 5);
    EXPECT_EQ(events[2].second.path, phone.toStdString());
    watcher.Stop();
    EXPECT_TRUE(Await([] { return !Discovering(); })) << "discovery stopped";
}

}  // namespace
