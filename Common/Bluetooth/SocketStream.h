#pragma once
// A byte stream over a connected Qt socket, driven in a blocking way from a
// thread that runs no event loop of its own, as the instrument's OBEX calls
// are. Every call is bounded: a peer that stops answering costs the timeout,
// a dropped link fails at once.

#include "Common/Bluetooth/ObexSession.h"

class QIODevice;

namespace obex {

class SocketStream : public ByteStream {
public:
    // All the bytes handed to the link within the write timeout, or false.
    bool Write(const Bytes& bytes) override;
    bool Read(std::uint8_t* data, std::size_t size, int timeoutMs) override;

protected:
    SocketStream(QIODevice& device, int writeTimeoutMs)
        : device(device), writeTimeoutMs(writeTimeoutMs) {}
    // Block until the socket may have moved on (data in, data out, a change
    // of state); false when `timeoutMs` passed first or the link is gone.
    virtual bool WaitReadable(int timeoutMs) = 0;
    virtual bool WaitWritten(int timeoutMs) = 0;

private:
    QIODevice& device;
    int writeTimeoutMs;
};

}  // namespace obex
