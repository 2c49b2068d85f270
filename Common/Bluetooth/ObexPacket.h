#pragma once
// OBEX packets as bytes, both ways, with no I/O: the requests the file sender
// makes (CONNECT, PUT, PUT-final, DISCONNECT, ABORT) and the replies a peer
// sends. A packet is an opcode, its total length (16 bits, big-endian), for
// CONNECT and its reply the version, flags and maximum packet length, then
// headers. The header id's top two bits give its form: UTF-16BE text, byte
// sequence (both with a 16-bit length that counts the id and itself), one
// byte, or four bytes. Anything a peer sends is checked before it is used.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace obex {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kVersion = 0x10;  // OBEX 1.0
// The least every peer must accept, and the most the length field can say.
constexpr std::uint16_t kMinPacket = 255;
constexpr std::uint16_t kMaxPacket = 0xFFFF;

enum Opcode : std::uint8_t {
    kConnect = 0x80,
    kDisconnect = 0x81,
    kPut = 0x02,
    kPutFinal = 0x82,
    kAbort = 0xFF,
};

enum ResponseCode : std::uint8_t {
    kContinue = 0x90,
    kSuccess = 0xA0,
    kBadRequest = 0xC0,
    kForbidden = 0xC3,
    kNotAcceptable = 0xC6,
    kServiceUnavailable = 0xD3,
};

enum HeaderId : std::uint8_t {
    kName = 0x01,          // text
    kType = 0x42,          // bytes: ASCII, null-terminated
    kTarget = 0x46,        // bytes
    kBody = 0x48,          // bytes
    kEndOfBody = 0x49,     // bytes
    kLength = 0xC3,        // four bytes
    kConnectionId = 0xCB,  // four bytes
    kSingleResponseMode = 0x97,  // one byte: 1 asks for it, or agrees
    kSrmParameters = 0x98,       // one byte: 1 asks the other side to wait
};

struct Header {
    std::uint8_t id = 0;
    Bytes value;  // as on the wire, without the id and the length field

    static Header Text(std::uint8_t id, std::u16string_view text);  // adds the terminator
    static Header Data(std::uint8_t id, const std::uint8_t* data, std::size_t size);
    static Header Ascii(std::uint8_t id, std::string_view text);  // adds the terminator
    static Header Quad(std::uint8_t id, std::uint32_t value);

    // The value of a four-byte header; of a text header without its terminator.
    std::uint32_t QuadValue() const;
    std::u16string TextValue() const;
    // Bytes the header takes in a packet.
    std::size_t WireSize() const;
};

// A request, ready to send.
Bytes Request(Opcode opcode, const std::vector<Header>& headers);
Bytes ConnectRequest(std::uint16_t maxPacket, const std::vector<Header>& headers);

// The total length a packet announces in its first three bytes; nothing
// until three bytes are there, or when the length is below three.
std::optional<std::uint16_t> AnnouncedLength(const std::uint8_t* data, std::size_t size);

struct Reply {
    std::uint8_t code = 0;  // ResponseCode, final bit included
    // Of a CONNECT reply only.
    std::uint8_t version = 0;
    std::uint8_t flags = 0;
    std::uint16_t maxPacket = 0;
    std::vector<Header> headers;

    const Header* Find(std::uint8_t id) const;
};

// One whole reply packet (`connect`: the reply to a CONNECT, with its three
// extra fields). Nothing, and `error` says why, when the bytes are not one
// well-formed packet: a length that disagrees with the bytes, a header that
// runs past the end, a text of odd length.
std::optional<Reply> ParseReply(const std::uint8_t* data, std::size_t size, bool connect,
                                std::string& error);

}  // namespace obex
