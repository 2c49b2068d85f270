#include "Common/Bluetooth/SocketStream.h"

#include <QDeadlineTimer>
#include <QIODevice>

namespace obex {

bool SocketStream::Write(const Bytes& bytes) {
    const auto size = static_cast<qint64>(bytes.size());
    if (!device.isOpen()) return false;  // closed when the link dropped
    if (device.write(reinterpret_cast<const char*>(bytes.data()), size) != size) return false;
    const QDeadlineTimer deadline(writeTimeoutMs);
    while (device.bytesToWrite() > 0)
        if (deadline.hasExpired() || !WaitWritten(static_cast<int>(deadline.remainingTime())))
            return false;
    return true;
}

bool SocketStream::Read(std::uint8_t* data, std::size_t size, int timeoutMs) {
    const QDeadlineTimer deadline(timeoutMs);
    // What arrived before the peer closed still counts.
    while (device.bytesAvailable() < static_cast<qint64>(size))
        if (deadline.hasExpired() || !WaitReadable(static_cast<int>(deadline.remainingTime())))
            return false;
    return device.read(reinterpret_cast<char*>(data), static_cast<qint64>(size)) ==
           static_cast<qint64>(size);
}

}  // namespace obex
