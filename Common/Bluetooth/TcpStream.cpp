#include "Common/Bluetooth/TcpStream.h"

#include <QTcpSocket>

namespace obex {

TcpStream::TcpStream(std::unique_ptr<QTcpSocket> connected, int timeoutMs)
    : SocketStream(*connected, timeoutMs), socket(std::move(connected)) {}

TcpStream::~TcpStream() = default;

std::unique_ptr<TcpStream> TcpStream::Connect(const std::string& host, std::uint16_t port,
                                              int timeoutMs, std::string& error) {
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QString::fromStdString(host), port);
    if (!socket->waitForConnected(timeoutMs)) {
        error = host + ":" + std::to_string(port) + ": " + socket->errorString().toStdString();
        return nullptr;
    }
    // Each packet waits for its reply; a partial segment held back for an
    // acknowledgement would stall the exchange.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    return std::unique_ptr<TcpStream>(new TcpStream(std::move(socket), timeoutMs));
}

bool TcpStream::WaitReadable(int timeoutMs) {
    return socket->waitForReadyRead(timeoutMs);
}

bool TcpStream::WaitWritten(int timeoutMs) {
    // Straight to the system when it has room: a poll first costs a round of its own.
    return socket->flush() || (socket->state() == QAbstractSocket::ConnectedState &&
                               socket->waitForBytesWritten(timeoutMs));
}

}  // namespace obex
