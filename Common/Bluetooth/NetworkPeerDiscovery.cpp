// The bench can change while a search runs, so the list is read again and
// again on a thread of its own; every read reports every peer.

#include <QString>
#include <QStringList>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "Common/Bluetooth/DeviceDiscovery.h"
#include "Platform/BluetoothControlCodes.h"
#include "Platform/StreamDevice.h"

namespace obex {
namespace {

class Driver {
public:
    Driver()
        : handle(CreateFileW(L"BTD0:", GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                             nullptr)) {}
    ~Driver() {
        if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
    }
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    // The driver's lines; none when it has no list or the call failed.
    std::optional<std::string> Lines() const {
        if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
        std::string buffer(4096, '\0');
        for (int attempt = 0; attempt < 3; ++attempt) {
            DWORD size = 0;
            if (DeviceIoControl(handle, IOCTL_BTD_NETWORK_PEERS, nullptr, 0, buffer.data(),
                                static_cast<DWORD>(buffer.size()), &size, nullptr)) {
                buffer.resize(std::min<size_t>(size, buffer.size()));
                return buffer;
            }
            if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size <= buffer.size())
                return std::nullopt;
            buffer.assign(size, '\0');  // the size asked for; the bench may grow again meanwhile
        }
        return std::nullopt;
    }

private:
    HANDLE handle;
};

struct Peer {
    std::wstring name;
    std::wstring address;  // host:port
    int port = 0;
    std::wstring services;
};

std::vector<Peer> ParsePeers(const std::string& lines) {
    std::vector<Peer> peers;
    for (const QString& line : QString::fromUtf8(lines).split('\n', Qt::SkipEmptyParts)) {
        const QStringList fields = line.split('\t');
        if (fields.size() != 3) continue;
        Peer peer{fields[0].toStdWString(), fields[1].toStdWString(), 0,
                  fields[2].toStdWString()};
        bool ok = false;
        peer.port = fields[1].section(':', -1).toInt(&ok);
        if (ok) peers.push_back(std::move(peer));
    }
    return peers;
}

class PeerDiscovery : public DeviceDiscovery {
public:
    PeerDiscovery(std::unique_ptr<Driver> driver, int pollMs)
        : driver(std::move(driver)), pollMs(pollMs) {}
    ~PeerDiscovery() override { Stop(); }

    bool Start(Report report) override {
        Stop();
        stopping = false;
        worker = std::thread([this, report = std::move(report)] { Run(report); });
        return true;
    }

    void Stop() override {
        {
            std::lock_guard lock(mutex);
            stopping = true;
        }
        wake.notify_all();
        if (worker.joinable()) worker.join();
    }

private:
    void Run(const Report& report) {
        std::unique_lock lock(mutex);
        while (!stopping) {
            lock.unlock();
            if (const auto lines = driver->Lines())
                for (Peer& peer : ParsePeers(*lines)) {
                    DeviceProperties properties{{L"Name", peer.name},
                                                {L"Transport", std::wstring(kTcpTransport)},
                                                {L"Address", peer.address},
                                                {L"Port", std::int32_t{peer.port}}};
                    if (!peer.services.empty()) properties[L"ServiceUUID"] = peer.services;
                    report(peer.address, std::move(properties));
                }
            lock.lock();
            wake.wait_for(lock, std::chrono::milliseconds(pollMs), [this] { return stopping; });
        }
    }

    std::unique_ptr<Driver> driver;
    int pollMs;
    std::mutex mutex;
    std::condition_variable wake;
    bool stopping = false;
    std::thread worker;
};

}  // namespace

std::unique_ptr<DeviceDiscovery> NetworkPeerDiscovery(int pollMs) {
    auto driver = std::make_unique<Driver>();
    if (!driver->Lines()) return nullptr;
    return std::make_unique<PeerDiscovery>(std::move(driver), pollMs);
}

}  // namespace obex
