#include "Common/Bluetooth/RfcommStream.h"

#include <QBluetoothAddress>
#include <QBluetoothSocket>
#include <QBluetoothUuid>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace obex {
namespace {

using State = QBluetoothSocket::SocketState;

// Runs events until the socket reports anything; false when `timeoutMs`
// passed first.
bool WaitForSocket(QBluetoothSocket& socket, int timeoutMs) {
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QIODevice::readyRead, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QIODevice::bytesWritten, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QBluetoothSocket::stateChanged, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QBluetoothSocket::errorOccurred, &loop, &QEventLoop::quit);
    timer.start(timeoutMs);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    return timer.isActive();
}

}  // namespace

RfcommStream::RfcommStream(std::unique_ptr<QBluetoothSocket> connected, int timeoutMs)
    : SocketStream(*connected, timeoutMs), socket(std::move(connected)) {}

RfcommStream::~RfcommStream() = default;

std::unique_ptr<RfcommStream> RfcommStream::Open(
    const std::string& address,
    const std::function<void(QBluetoothSocket&, const QBluetoothAddress&)>& start, int timeoutMs,
    std::string& error) {
    const QBluetoothAddress peer(QString::fromStdString(address));
    if (peer.isNull()) {
        error = "\"" + address + "\" is not a Bluetooth address";
        return nullptr;
    }
    auto socket = std::make_unique<QBluetoothSocket>(QBluetoothServiceInfo::RfcommProtocol);
    start(*socket, peer);
    const QDeadlineTimer deadline(timeoutMs);
    // A failed start reports its error before or after going unconnected.
    while (socket->state() != State::ConnectedState &&
           socket->error() == QBluetoothSocket::SocketError::NoSocketError) {
        if (deadline.hasExpired() ||
            !WaitForSocket(*socket, static_cast<int>(deadline.remainingTime()))) {
            error = address + ": no connection within " + std::to_string(timeoutMs) + " ms";
            return nullptr;
        }
    }
    if (socket->state() != State::ConnectedState) {
        error = address + ": " + socket->errorString().toStdString();
        return nullptr;
    }
    return std::unique_ptr<RfcommStream>(new RfcommStream(std::move(socket), timeoutMs));
}

std::unique_ptr<RfcommStream> RfcommStream::ConnectService(const std::string& address,
                                                           const std::wstring& serviceUuid,
                                                           int timeoutMs, std::string& error) {
    const QBluetoothUuid uuid(QString::fromStdWString(serviceUuid));
    if (uuid.isNull()) {
        error = "not a service UUID";
        return nullptr;
    }
    return Open(
        address,
        [&](QBluetoothSocket& socket, const QBluetoothAddress& peer) {
            socket.connectToService(peer, uuid);
        },
        timeoutMs, error);
}

std::unique_ptr<RfcommStream> RfcommStream::ConnectChannel(const std::string& address,
                                                           std::uint8_t channel, int timeoutMs,
                                                           std::string& error) {
    return Open(
        address,
        [&](QBluetoothSocket& socket, const QBluetoothAddress& peer) {
            socket.connectToService(peer, channel);
        },
        timeoutMs, error);
}

bool RfcommStream::WaitReadable(int timeoutMs) {
    return socket->state() == State::ConnectedState && WaitForSocket(*socket, timeoutMs);
}

bool RfcommStream::WaitWritten(int timeoutMs) {
    return WaitReadable(timeoutMs);
}

}  // namespace obex
