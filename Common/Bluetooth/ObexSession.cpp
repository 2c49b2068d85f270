#include "Common/Bluetooth/ObexSession.h"

#include <algorithm>
#include <cstdio>

namespace obex {

bool Session::Fail(const std::string& why) {
    error = why;
    return false;
}

bool Session::Broke(const std::string& why) {
    broken = true;
    return Fail(why);
}

bool Session::Exchange(const Bytes& request, bool connect, std::uint8_t expected, Reply* reply) {
    lastCode = 0;
    // After a lost or garbled reply the stream is out of step; every further
    // request would only wait for its own timeout.
    if (broken) return Fail("link lost: " + error);
    if (!stream.Write(request)) return Broke("write failed");
    std::uint8_t head[3];
    if (!stream.Read(head, sizeof head, timeoutMs)) return Broke("no reply");
    const std::optional<std::uint16_t> length = AnnouncedLength(head, sizeof head);
    // Our CONNECT told the peer the largest packet we take.
    if (!length || *length > kOurMaxPacket)
        return Broke("reply of " + std::to_string(length.value_or(0)) + " bytes refused");
    Bytes packet(head, head + 3);
    packet.resize(*length);
    if (*length > 3 && !stream.Read(packet.data() + 3, *length - 3, timeoutMs))
        return Broke("reply cut short");
    std::string why;
    // A refusal of CONNECT often comes without the connect fields.
    const bool fields = connect && (packet.size() >= 7 || packet[0] == expected);
    std::optional<Reply> parsed = ParseReply(packet.data(), packet.size(), fields, why);
    if (!parsed) return Broke(why);
    lastCode = parsed->code;
    if (parsed->code != expected) {
        char text[48];
        std::snprintf(text, sizeof text, "refused with 0x%02X", parsed->code);
        return Fail(text);
    }
    if (reply != nullptr) *reply = std::move(*parsed);
    return true;
}

bool Session::Connect() {
    Reply reply;
    if (!Exchange(ConnectRequest(kOurMaxPacket, {}), true, kSuccess, &reply)) return false;
    if (reply.maxPacket < kMinPacket)
        return Fail("peer packet size " + std::to_string(reply.maxPacket) + " too small");
    maxPacket = std::min(reply.maxPacket, kOurMaxPacket);
    if (const Header* id = reply.Find(kConnectionId)) connectionId = id->QuadValue();
    connected = true;
    return true;
}

bool Session::BeginPut(const std::u16string& name, std::uint32_t length) {
    if (!connected) return Fail("not connected");
    pendingHeaders.clear(), body.clear();
    if (connectionId) pendingHeaders.push_back(Header::Quad(kConnectionId, *connectionId));
    pendingHeaders.push_back(Header::Text(kName, name));
    pendingHeaders.push_back(Header::Quad(kLength, length));
    // Asks the peer to answer only the last packet; one that does not know
    // the header ignores it and answers each as before.
    pendingHeaders.push_back(Header{kSingleResponseMode, {1}});
    singleResponse = false;
    std::size_t headers = 3 + 3;  // the packet's own three bytes and an empty body header
    for (const Header& header : pendingHeaders) headers += header.WireSize();
    if (headers > maxPacket) return Fail("name too long for the packet size");
    return true;
}

std::size_t Session::BodyRoom() const {
    std::size_t used = 3 + 3;
    for (const Header& header : pendingHeaders) used += header.WireSize();
    return maxPacket - used;
}

bool Session::SendPut(std::size_t size, bool final) {
    std::vector<Header> headers = std::move(pendingHeaders);
    pendingHeaders.clear();
    const bool first = !headers.empty() && headers.back().id == kSingleResponseMode;
    headers.push_back(Header::Data(final ? kEndOfBody : kBody, body.data(), size));
    body.erase(body.begin(), body.begin() + static_cast<std::ptrdiff_t>(size));
    const Bytes request = Request(final ? kPutFinal : kPut, headers);
    if (singleResponse && !final) return stream.Write(request) || Broke("write failed");
    Reply reply;
    if (!Exchange(request, false, final ? kSuccess : kContinue, &reply)) {
        // A refusal in single-response mode may be followed by more replies.
        if (singleResponse) broken = true;
        return false;
    }
    const Header* agreed = reply.Find(kSingleResponseMode);
    const Header* wait = reply.Find(kSrmParameters);
    singleResponse = first && agreed != nullptr && agreed->value == Bytes{1} &&
                     (wait == nullptr || wait->value != Bytes{1});
    return true;
}

bool Session::Write(const std::uint8_t* data, std::size_t size) {
    body.insert(body.end(), data, data + size);
    // Full packets only: the last piece may still fit the final one.
    while (body.size() > BodyRoom())
        if (!SendPut(BodyRoom(), false)) return false;
    return true;
}

bool Session::Commit() {
    while (body.size() > BodyRoom())
        if (!SendPut(BodyRoom(), false)) return false;
    return SendPut(body.size(), true);
}

bool Session::Abort() {
    pendingHeaders.clear(), body.clear();
    std::vector<Header> headers;
    if (connectionId) headers.push_back(Header::Quad(kConnectionId, *connectionId));
    return Exchange(Request(kAbort, headers), false, kSuccess);
}

bool Session::Disconnect() {
    std::vector<Header> headers;
    if (connectionId) headers.push_back(Header::Quad(kConnectionId, *connectionId));
    connected = false;
    return Exchange(Request(kDisconnect, headers), false, kSuccess);
}

}  // namespace obex
