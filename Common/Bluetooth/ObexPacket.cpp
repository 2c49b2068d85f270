#include "Common/Bluetooth/ObexPacket.h"

namespace obex {
namespace {

enum Form : std::uint8_t {
    kTextForm = 0x00,
    kBytesForm = 0x40,
    kByteForm = 0x80,
    kQuadForm = 0xC0
};

Form FormOf(std::uint8_t id) {
    return static_cast<Form>(id & 0xC0);
}

void PutShort(Bytes& out, std::uint16_t value) {
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value & 0xFF));
}

std::uint16_t ShortAt(const std::uint8_t* data) {
    return static_cast<std::uint16_t>(data[0] << 8 | data[1]);
}

void Append(Bytes& out, const Header& header) {
    out.push_back(header.id);
    const Form form = FormOf(header.id);
    if (form == kTextForm || form == kBytesForm)
        PutShort(out, static_cast<std::uint16_t>(header.value.size() + 3));
    out.insert(out.end(), header.value.begin(), header.value.end());
}

// The opcode, the length to be filled in, and the headers.
Bytes Packet(std::uint8_t opcode, const Bytes& fields, const std::vector<Header>& headers) {
    Bytes out{opcode, 0, 0};
    out.insert(out.end(), fields.begin(), fields.end());
    for (const Header& header : headers) Append(out, header);
    out[1] = static_cast<std::uint8_t>(out.size() >> 8);
    out[2] = static_cast<std::uint8_t>(out.size() & 0xFF);
    return out;
}

}  // namespace

Header Header::Text(std::uint8_t id, std::u16string_view text) {
    Header header{id, {}};
    for (const char16_t unit : text) PutShort(header.value, unit);
    PutShort(header.value, 0);
    return header;
}

Header Header::Data(std::uint8_t id, const std::uint8_t* data, std::size_t size) {
    return {id, Bytes(data, data + size)};
}

Header Header::Ascii(std::uint8_t id, std::string_view text) {
    Header header{id, Bytes(text.begin(), text.end())};
    header.value.push_back(0);
    return header;
}

Header Header::Quad(std::uint8_t id, std::uint32_t value) {
    return {id,
            {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
             static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)}};
}

std::uint32_t Header::QuadValue() const {
    std::uint32_t result = 0;
    for (const std::uint8_t byte : value) result = result << 8 | byte;
    return result;
}

std::u16string Header::TextValue() const {
    std::u16string text;
    for (std::size_t i = 0; i + 1 < value.size(); i += 2)
        text += static_cast<char16_t>(ShortAt(&value[i]));
    if (!text.empty() && text.back() == u'\0') text.pop_back();
    return text;
}

std::size_t Header::WireSize() const {
    const Form form = FormOf(id);
    return 1 + (form == kTextForm || form == kBytesForm ? 2 : 0) + value.size();
}

Bytes Request(Opcode opcode, const std::vector<Header>& headers) {
    return Packet(opcode, {}, headers);
}

Bytes ConnectRequest(std::uint16_t maxPacket, const std::vector<Header>& headers) {
    Bytes fields{kVersion, 0};
    PutShort(fields, maxPacket);
    return Packet(kConnect, fields, headers);
}

std::optional<std::uint16_t> AnnouncedLength(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return std::nullopt;
    const std::uint16_t length = ShortAt(data + 1);
    if (length < 3) return std::nullopt;
    return length;
}

const Header* Reply::Find(std::uint8_t id) const {
    for (const Header& header : headers)
        if (header.id == id) return &header;
    return nullptr;
}

std::optional<Reply> ParseReply(const std::uint8_t* data, std::size_t size, bool connect,
                                std::string& error) {
    const std::optional<std::uint16_t> length = AnnouncedLength(data, size);
    if (!length || *length != size) {
        error = "packet length " + (length ? std::to_string(*length) : std::string("missing")) +
                " for " + std::to_string(size) + " bytes";
        return std::nullopt;
    }
    Reply reply;
    reply.code = data[0];
    std::size_t at = 3;
    if (connect) {
        if (size < 7) {
            error = "connect reply without its fields";
            return std::nullopt;
        }
        reply.version = data[3], reply.flags = data[4], reply.maxPacket = ShortAt(data + 5);
        at = 7;
    }
    while (at < size) {
        const std::uint8_t id = data[at];
        const Form form = FormOf(id);
        std::size_t start = at + 1, end = 0;
        if (form == kByteForm || form == kQuadForm) {
            end = start + (form == kByteForm ? 1 : 4);
        } else {
            if (size - at < 3) {
                error = "header length missing";
                return std::nullopt;
            }
            const std::uint16_t headerLength = ShortAt(data + at + 1);
            if (headerLength < 3 || (form == kTextForm && headerLength % 2 == 0)) {
                error = "header length " + std::to_string(headerLength) + " invalid";
                return std::nullopt;
            }
            start = at + 3, end = at + headerLength;
        }
        if (end > size) {
            error = "header runs past the packet";
            return std::nullopt;
        }
        reply.headers.push_back({id, Bytes(data + start, data + end)});
        at = end;
    }
    return reply;
}

}  // namespace obex
