#pragma once
// OBEX over TCP: one connection to a peer's OBEX port, used blocking.

#include <memory>
#include <string>

#include "Common/Bluetooth/SocketStream.h"

class QTcpSocket;

namespace obex {

class TcpStream : public SocketStream {
public:
    // Connected within `timeoutMs` (which then also bounds each write), or
    // null and `error` says why.
    static std::unique_ptr<TcpStream> Connect(const std::string& host, std::uint16_t port,
                                              int timeoutMs, std::string& error);
    ~TcpStream() override;

private:
    TcpStream(std::unique_ptr<QTcpSocket> socket, int timeoutMs);
    bool WaitReadable(int timeoutMs) override;
    bool WaitWritten(int timeoutMs) override;

    std::unique_ptr<QTcpSocket> socket;
};

}  // namespace obex
