#include "Platform/Bluez.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace platform::bluez {
namespace {

constexpr char kService[] = "org.bluez";
constexpr char kAdapterInterface[] = "org.bluez.Adapter1";
constexpr char kDeviceInterface[] = "org.bluez.Device1";
constexpr char kObjectManager[] = "org.freedesktop.DBus.ObjectManager";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";
// A screen waits for the answer; a daemon that takes longer is broken.
constexpr int kCallTimeoutMs = 2000;

using InterfaceMap = QMap<QString, QVariantMap>;
using ManagedObjects = QMap<QDBusObjectPath, InterfaceMap>;

QDBusMessage Call(const QString& path, const char* interface, const char* method,
                  const QVariantList& arguments = {}) {
    auto message = QDBusMessage::createMethodCall(kService, path, interface, method);
    message.setArguments(arguments);
    // Asking must not start a stack that is not running.
    message.setAutoStartService(false);
    return message;
}

bool NotOnBus(const QDBusMessage& reply) {
    const QString name = reply.errorName();
    return name == "org.freedesktop.DBus.Error.ServiceUnknown" ||
           name == "org.freedesktop.DBus.Error.NameHasNoOwner";
}

// The first adapter in path order ("hci0" before "hci1"); empty when none.
QString FirstAdapter(const ManagedObjects& objects) {
    for (auto it = objects.begin(); it != objects.end(); ++it)
        if (it->contains(kAdapterInterface)) return it.key().path();
    return {};
}

// Powered alone cannot tell a blocked radio from one switched off, so the
// power state wins where BlueZ has it. Being switched on counts as
// initializing (the screen may wait for it); being switched off already
// counts as shut down.
int StateOf(const QVariantMap& adapter) {
    const QString power = adapter.value("PowerState").toString();
    if (power == "on") return kRunning;
    if (power == "off") return kShutDown;
    if (power == "off-blocked") return kError;
    if (power == "off-enabling") return kInitializing;
    if (power == "on-disabling") return kShutDown;
    const QVariant powered = adapter.value("Powered");
    if (powered.metaType() != QMetaType::fromType<bool>()) return kError;
    return powered.toBool() ? kRunning : kShutDown;
}

std::vector<std::wstring> ToWide(const QStringList& texts) {
    std::vector<std::wstring> wide;
    for (const QString& text : texts) wide.push_back(text.toStdWString());
    return wide;
}

Device MakeDevice(const QString& path, const QVariantMap& properties) {
    Device device;
    device.path = path.toStdString();
    device.address = properties.value("Address").toString().toStdWString();
    for (const char* key : {"Alias", "Name"}) {
        const QString name = properties.value(key).toString();
        if (device.name.empty() && !name.isEmpty()) device.name = name.toStdWString();
    }
    if (device.name.empty()) device.name = device.address;
    device.uuids = ToWide(properties.value("UUIDs").toStringList());
    return device;
}

bool OffersPush(const Device& device) {
    for (const std::wstring& uuid : device.uuids) {
        const QString text = QString::fromStdWString(uuid).toLower();
        if (text == kObjectPushUuid || text == kFileTransferUuid) return true;
    }
    return false;
}

}  // namespace

int AdapterState() {
    QDBusConnection bus = QDBusConnection::systemBus();
    // Without a system bus no Bluetooth daemon can run either.
    if (!bus.isConnected()) return kNotPresent;
    const QDBusMessage reply =
        bus.call(Call("/", kObjectManager, "GetManagedObjects"), QDBus::Block, kCallTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage) return NotOnBus(reply) ? kNotPresent : kError;
    if (reply.signature() != "a{oa{sa{sv}}}") return kError;
    const auto objects = qdbus_cast<ManagedObjects>(reply.arguments().value(0));
    const QString adapter = FirstAdapter(objects);
    if (adapter.isEmpty()) return kNotPresent;
    return StateOf(objects.value(QDBusObjectPath(adapter)).value(kAdapterInterface));
}

// Lives on the thread that started the watcher, so that QtDBus delivers the
// signals there.
class DeviceWatcher::Receiver : public QObject {
    Q_OBJECT

public:
    explicit Receiver(Callback callback) : callback(std::move(callback)) {}

    bool Start() {
        // Listen before listing, so that nothing falls between the two; a
        // device reported twice shows no change the second time.
        bool connected = true;
        for (const auto& [interface, name, slot] : Signals())
            connected &= bus.connect(kService, {}, interface, name, this, slot);
        const QDBusMessage reply = connected
                                       ? bus.call(Call("/", kObjectManager, "GetManagedObjects"),
                                                  QDBus::Block, kCallTimeoutMs)
                                       : QDBusMessage();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != "a{oa{sa{sv}}}") {
            Stop();
            return false;
        }
        running = true;
        const auto objects = qdbus_cast<ManagedObjects>(reply.arguments().value(0));
        UseAdapter(FirstAdapter(objects));
        for (auto it = objects.begin(); it != objects.end() && running; ++it)
            if (it->contains(kDeviceInterface))
                Update(it.key().path(), it->value(kDeviceInterface), {}, true);
        return true;
    }

    void Stop() {
        for (const auto& [interface, name, slot] : Signals())
            bus.disconnect(kService, {}, interface, name, this, slot);
        // BlueZ ends our discovery session anyway when we leave the bus.
        if (running && !adapter.isEmpty())
            bus.send(Call(adapter, kAdapterInterface, "StopDiscovery"));
        running = false;
        adapter.clear();
        devices.clear();
    }

public slots:
    void OnInterfacesAdded(const QDBusMessage& message) {
        if (!running || message.arguments().size() < 2) return;
        const QString path = message.arguments().at(0).value<QDBusObjectPath>().path();
        const auto interfaces = qdbus_cast<InterfaceMap>(message.arguments().at(1));
        if (adapter.isEmpty() && interfaces.contains(kAdapterInterface)) UseAdapter(path);
        if (interfaces.contains(kDeviceInterface))
            Update(path, interfaces.value(kDeviceInterface), {}, true);
    }

    void OnInterfacesRemoved(const QDBusMessage& message) {
        if (!running || message.arguments().size() < 2) return;
        const QString path = message.arguments().at(0).value<QDBusObjectPath>().path();
        const QStringList interfaces = message.arguments().at(1).toStringList();
        if (interfaces.contains(kDeviceInterface)) devices.erase(path);
        if (interfaces.contains(kAdapterInterface) && path == adapter) adapter.clear();
    }

    void OnPropertiesChanged(const QDBusMessage& message) {
        const QVariantList arguments = message.arguments();
        if (!running || arguments.size() < 3) return;
        const QString interface = arguments.at(0).toString();
        const auto changed = qdbus_cast<QVariantMap>(arguments.at(1));
        // BlueZ drops every discovery when the adapter goes off; ask again
        // when it is back, so that a list left open fills once Bluetooth is on.
        if (interface == kAdapterInterface && message.path() == adapter &&
            changed.value("Powered").toBool())
            UseAdapter(adapter);
        if (interface == kDeviceInterface)
            Update(message.path(), changed, arguments.at(2).toStringList(), false);
    }

private:
    struct Signal {
        const char* interface;
        const char* name;
        const char* slot;
    };
    static std::vector<Signal> Signals() {
        return {{kObjectManager, "InterfacesAdded", SLOT(OnInterfacesAdded(QDBusMessage))},
                {kObjectManager, "InterfacesRemoved", SLOT(OnInterfacesRemoved(QDBusMessage))},
                {kProperties, "PropertiesChanged", SLOT(OnPropertiesChanged(QDBusMessage))}};
    }

    // Object Push and File Transfer run over BR/EDR only: an LE scan would
    // only slow the inquiry down. The filter holds for our discovery alone.
    void UseAdapter(const QString& path) {
        adapter = path;
        if (adapter.isEmpty()) return;
        const QVariantMap filter{{"Transport", "bredr"}};
        bus.send(Call(adapter, kAdapterInterface, "SetDiscoveryFilter", {filter}));
        bus.send(Call(adapter, kAdapterInterface, "StartDiscovery"));
    }

    // Changes of a device we never saw appear are ignored: BlueZ announces
    // every device before it changes.
    void Update(const QString& path, const QVariantMap& changed, const QStringList& invalidated,
                bool appeared) {
        const auto found = devices.find(path);
        if (found == devices.end() && !appeared) return;
        Known& known = devices[path];
        for (auto it = changed.begin(); it != changed.end(); ++it)
            known.properties.insert(it.key(), it.value());
        for (const QString& name : invalidated) known.properties.remove(name);
        Device device = MakeDevice(path, known.properties);
        if (device == known.shown) return;
        const bool reported = known.reported;
        if (!reported && !OffersPush(device)) return;
        known.reported = true;
        known.shown = device;
        callback(reported ? kDeviceChanged : kDeviceArrived, device);
    }

    struct Known {
        QVariantMap properties;
        bool reported = false;
        Device shown;
    };

    Callback callback;
    QDBusConnection bus = QDBusConnection::systemBus();
    bool running = false;
    QString adapter;
    std::map<QString, Known> devices;
};

DeviceWatcher::DeviceWatcher() = default;

DeviceWatcher::~DeviceWatcher() {
    Stop();
}

bool DeviceWatcher::Start(Callback callback) {
    Stop();
    receiver = std::make_unique<Receiver>(std::move(callback));
    if (receiver->Start()) return true;
    receiver.reset();
    return false;
}

// The receiver outlives Stop: the callback may stop the watcher from
// within one of the receiver's own slots.
void DeviceWatcher::Stop() {
    if (receiver) receiver->Stop();
}

}  // namespace platform::bluez

#include "Bluez.moc"
