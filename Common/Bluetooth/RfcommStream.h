#pragma once
// OBEX over Bluetooth RFCOMM, used blocking like the TCP stream. The socket
// has no blocking waits of its own, so each wait runs a local event loop that
// leaves user input queued.

#include <functional>
#include <memory>
#include <string>

#include "Common/Bluetooth/SocketStream.h"

class QBluetoothAddress;
class QBluetoothSocket;

namespace obex {

class RfcommStream : public SocketStream {
public:
    // To the channel the device's service records give `serviceUuid`
    // ("{0000...}"); the record lookup is part of `timeoutMs`.
    static std::unique_ptr<RfcommStream> ConnectService(const std::string& address,
                                                        const std::wstring& serviceUuid,
                                                        int timeoutMs, std::string& error);
    static std::unique_ptr<RfcommStream> ConnectChannel(const std::string& address,
                                                        std::uint8_t channel, int timeoutMs,
                                                        std::string& error);
    ~RfcommStream() override;

private:
    RfcommStream(std::unique_ptr<QBluetoothSocket> socket, int timeoutMs);
    static std::unique_ptr<RfcommStream> Open(
        const std::string& address,
        const std::function<void(QBluetoothSocket&, const QBluetoothAddress&)>& start,
        int timeoutMs, std::string& error);
    bool WaitReadable(int timeoutMs) override;
    bool WaitWritten(int timeoutMs) override;

    std::unique_ptr<QBluetoothSocket> socket;
};

}  // namespace obex
