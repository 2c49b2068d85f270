#pragma once
// The client side of an OBEX exchange over any byte stream: connect with the
// packet size both sides accept, push one object in PUT packets no larger than
// that, finish with PUT-final, disconnect. A reply that is malformed, larger
// than we allow, late, or not the one expected ends the exchange with a
// reason; nothing a peer sends is trusted further than it was checked.

#include <cstdint>
#include <string>

#include "Common/Bluetooth/ObexPacket.h"

namespace obex {

// What the session needs of a transport (RFCOMM, TCP, a test's script).
class ByteStream {
public:
    virtual ~ByteStream() = default;
    virtual bool Write(const Bytes& bytes) = 0;
    // Exactly `size` bytes within `timeoutMs`, or false.
    virtual bool Read(std::uint8_t* data, std::size_t size, int timeoutMs) = 0;
};

class Session {
public:
    // The largest packet we send or accept. Every packet waits for its
    // reply, so the size sets the throughput: 60 KB is within 2x of the raw
    // link on loopback, where 8 KB was 8x.
    static constexpr std::uint16_t kOurMaxPacket = 0xF000;

    explicit Session(ByteStream& stream, int timeoutMs = 10000)
        : stream(stream), timeoutMs(timeoutMs) {}

    bool Connect();
    // Starts an object; `name` is sent as it is, so pass a base name only.
    bool BeginPut(const std::u16string& name, std::uint32_t length);
    // Sends whole packets as the body fills them; keeps the rest.
    bool Write(const std::uint8_t* data, std::size_t size);
    // Sends what is left with PUT-final and wants Success.
    bool Commit();
    bool Disconnect();
    // Ends an object half sent; true when the peer agreed.
    bool Abort();

    std::uint16_t MaxPacket() const { return maxPacket; }
    // The code of the last reply (0 when none came) and why the last call failed.
    std::uint8_t LastCode() const { return lastCode; }
    const std::string& Error() const { return error; }
    // A reply was lost or garbled: the session refuses everything after it.
    bool Broken() const { return broken; }

private:
    bool Exchange(const Bytes& request, bool connect, std::uint8_t expected,
                  Reply* reply = nullptr);
    // Sends a PUT with the pending headers and `size` bytes of the body.
    bool SendPut(std::size_t size, bool final);
    std::size_t BodyRoom() const;
    bool Fail(const std::string& why);
    bool Broke(const std::string& why);

    ByteStream& stream;
    int timeoutMs;
    std::uint16_t maxPacket = kMinPacket;
    std::optional<std::uint32_t> connectionId;
    std::vector<Header> pendingHeaders;  // go out with the next PUT
    Bytes body;
    bool connected = false;
    bool broken = false;
    // The peer agreed to answer only the object's last packet.
    bool singleResponse = false;
    std::uint8_t lastCode = 0;
    std::string error;
};

}  // namespace obex
