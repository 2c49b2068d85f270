// The sender on BlueZ as a mock (python3-dbusmock), on a bus of the test's
// own that stands in for the system bus: readiness is the adapter's state as
// the instrument's "BTD0:" driver reads it, and the devices BlueZ finds are
// listed as they come and change. The mock is driven through its mock
// interfaces.

#include <sys/prctl.h>

#include <QLabel>
#include <QListWidget>
#include <QtDBus>
#include <csignal>

#include "Common/Bluetooth/SendFileViaBlueTooth.h"
#include "Common/Bluetooth/StackService.h"
#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/BluetoothControlCodes.h"
#include "Platform/Bluez.h"
#include "Platform/Registry.h"
#include "Platform/StreamDevice.h"
#include "support/LanguagePack.h"

namespace {
constexpr int kBoundMs = 15000;
const QString kHci0 = "/org/bluez/hci0";

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
QString AddDevice(const char* address, const char* alias, const char* uuid) {
    const QString path = Mock("/", "AddDevice", {"hci0", address, alias}).toString();
    Set(path, "UUIDs", QStringList{QString(uuid) + "-0000-1000-8000-00805f9b34fb"});
    return path;
}

// One run, as the instrument meets BlueZ: not there, there without an
// adapter, an adapter in every state; then a search, in which only the
// devices that take a push are listed, at once when BlueZ knows them, later
// when they appear or gain the service, and relabelled when they change.
TEST(SenderOnBluez, ReadinessAndDevicesFollowBluez) {
    QProcess* bus = Spawn("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
    ASSERT_TRUE(bus->waitForReadyRead(kBoundMs)) << "the private bus's address";
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus->readLine().trimmed());
    platform::LoadHiveFromText(
        "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0]\n\"Index\"=dword:0\n"
        "\"Dll\"=\"tavix_btd.dll\"\n\"Prefix\"=\"BTD\"\n[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n");
    const HANDLE bt = CreateFileW(L"BTD0:", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(bt, INVALID_HANDLE_VALUE) << GetLastError();
    const auto probe = [bt](int* state) -> DWORD {
        DWORD buffer[8] = {};
        if (!DeviceIoControl(bt, IOCTL_BTD_HARDWARE_STATUS, buffer, 32, nullptr, 0, nullptr,
                             nullptr))
            return GetLastError();
        return *state = static_cast<int>(buffer[0]), ERROR_SUCCESS;
    };
    obex::SetServiceFactory([probe] {
        return std::make_unique<obex::StackService>(
            obex::BluezDiscovery, probe, [](const obex::PropertyBag&, std::string&) {
                return std::unique_ptr<obex::ByteStream>();
            });
    });
    ScopedLanguagePack pack;
    CAppConfig config(L"Software\\Tavix", 0);
    CSendFileViaBlueTooth sender(config);
    sender.Create(), sender.show();
    const auto startBluez = [] {
        Spawn("/usr/bin/python3", {"-m", "dbusmock", "--template", "bluez5"});
        const auto* dbus = QDBusConnection::systemBus().interface();
        EXPECT_TRUE(Await([&] { return dbus->isServiceRegistered("org.bluez"); })) << "BlueZ up";
    };
    const std::tuple<const char*, std::function<void()>, int> cases[] = {
        {"no BlueZ", [] {}, 1},
        {"no adapter", startBluez, 1},
        {"on", [] { Mock("/", "AddAdapter", {"hci0", "meter"}); }, 3},
        {"off", [] { Set(kHci0, "Powered", false); }, 4},
        {"blocked", [] { Set(kHci0, "PowerState", "off-blocked", "AddProperties"); }, 5},
        {"switching on", [] { Set(kHci0, "PowerState", "off-enabling"); }, 2},
    };
    for (const auto& [what, change, state] : cases) {
        change();
        EXPECT_EQ(platform::bluez::AdapterState(), state) << what;
        QString box;
        const bool ready = state != 1 && state != 4 && state != 5;
        if (!ready)
            toolkittest::WhenShown<CMessageBoxEx>("the not-ready box", [&](CMessageBoxEx* shown) {
                box = shown->windowTitle() + " " + shown->findChild<QLabel*>("1192")->text();
                shown->reject();
            });
        EXPECT_EQ(CSendFileViaBlueTooth::CheckBluetoothReady(&sender), ready) << what;
        EXPECT_EQ(box, ready ? "" : "! Device not present or not ready") << what;
    }
    Set(kHci0, "PowerState", "on");
    const QString laptop = AddDevice("11:22:33:44:55:66", "Laptop", "00001106");
    const auto listed = [&] {
        QStringList rows;
        for (int row = 0; row < sender.DeviceList()->count(); ++row)
            rows << sender.DeviceList()->item(row)->text();
        return rows.join('|');
    };
    QTest::keyClick(&sender, Qt::Key_F1);
    EXPECT_TRUE(Await([&] { return listed() == "Laptop <Ready:NO>"; })) << listed().toStdString();
    sender.DeviceList()->setCurrentRow(0);
    // Signals keep their order: a headset or a signal strength listed would come first.
    AddDevice("AA:BB:CC:DD:EE:01", "Headset", "0000110b");
    const QString phone = AddDevice("AA:BB:CC:DD:EE:02", "Phone", "0000111f");
    Set(laptop, "RSSI", QVariant::fromValue<qint16>(-40));
    Set(laptop, "Alias", "Desk laptop");
    Set(phone, "UUIDs", QStringList{"00001105-0000-1000-8000-00805f9b34fb"});
    EXPECT_TRUE(Await([&] { return listed() == "Desk laptop <Ready:NO>|Phone <Ready:YES>"; }))
        << listed().toStdString();
    EXPECT_EQ(sender.DeviceList()->currentRow(), 0) << "relabelled in place";
    sender.reject();
    obex::SetServiceFactory(nullptr);
}

}  // namespace
