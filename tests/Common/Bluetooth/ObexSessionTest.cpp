// The client session against a scripted peer: the packets it sends, and how
// it ends on a refusal, a drop or a malformed reply.

#include <gtest/gtest.h>

#include <deque>

#include "Common/Bluetooth/ObexSession.h"
#include "Common/Bluetooth/SessionDevice.h"

namespace {

using obex::Bytes;

// Answers each request with the next scripted reply; none left is a drop,
// unless the peer agrees to everything (Continue to PUT, Success otherwise).
struct Peer : obex::ByteStream {
    std::deque<Bytes> replies;
    bool agreeing = false;
    bool single = false;  // agrees to answer only the last packet of an object
    bool answered = false;
    std::vector<Bytes> requests;
    Bytes pending;
    bool Write(const Bytes& bytes) override {
        requests.push_back(bytes);
        if (!replies.empty())
            pending = replies.front(), replies.pop_front();
        else if (agreeing && bytes[0] == obex::kPut && answered)
            return true;  // single-response mode: the last packet only
        else if (agreeing && bytes[0] == obex::kPut)
            pending = single ? (answered = true, Bytes{0x90, 0, 5, 0x97, 1}) : Bytes{0x90, 0, 3};
        else if (agreeing)
            pending = {0xA0, 0x00, 0x03}, answered = false;
        return true;
    }
    bool Read(std::uint8_t* data, std::size_t size, int) override {
        if (pending.size() < size) return false;
        std::copy_n(pending.begin(), size, data);
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(size));
        return true;
    }
};

const Bytes kConnected{0xA0, 0x00, 0x0C, 0x10, 0x00, 0x01, 0x00, 0xCB, 0, 0, 0, 7};  // 256
const Bytes kContinue{0x90, 0x00, 0x03};

// The body bytes the requests carried, and whether each fitted the packet size.
Bytes Body(const Peer& peer, std::size_t maxPacket) {
    Bytes body;
    std::string why;
    for (const Bytes& request : peer.requests) {
        EXPECT_LE(request.size(), maxPacket);
        if (request[0] != obex::kPut && request[0] != obex::kPutFinal) continue;
        const auto parsed = obex::ParseReply(request.data(), request.size(), false, why);
        if (!parsed) return ADD_FAILURE() << why, body;
        for (const obex::Header& h : parsed->headers)
            if (h.id == obex::kBody || h.id == obex::kEndOfBody)
                body.insert(body.end(), h.value.begin(), h.value.end());
    }
    return body;
}

TEST(ObexSession, PushesAFileInPacketsOfTheAgreedSize) {
    for (const std::size_t size : {0u, 4999u, 10000u, 10001u}) {
        Peer peer;
        peer.replies = {kConnected}, peer.agreeing = true, peer.single = size > 10000;
        Bytes file(size);
        for (std::size_t i = 0; i < size; ++i) file[i] = static_cast<std::uint8_t>(i * 7);
        obex::Session session(peer);
        ASSERT_TRUE(session.Connect());
        EXPECT_EQ(session.MaxPacket(), 256);
        ASSERT_TRUE(session.BeginPut(u"a.txt", static_cast<std::uint32_t>(size)));
        for (std::size_t at = 0; at < size; at += 1000)
            ASSERT_TRUE(session.Write(file.data() + at, std::min<std::size_t>(1000, size - at)));
        ASSERT_TRUE(session.Commit()) << session.Error();
        ASSERT_TRUE(session.Disconnect());
        EXPECT_EQ(Body(peer, 256), file);
        EXPECT_EQ(peer.requests[1][0], size == 0 ? obex::kPutFinal : obex::kPut);
        EXPECT_EQ(peer.requests[peer.requests.size() - 2][0], obex::kPutFinal);
        EXPECT_EQ(peer.requests.back(), (Bytes{0x81, 0x00, 0x08, 0xCB, 0, 0, 0, 7}));
        // Every packet but the last of the object is full.
        for (std::size_t i = 1; i + 2 < peer.requests.size(); ++i)
            EXPECT_EQ(peer.requests[i].size(), 256u);
    }
}

TEST(ObexSession, EndsWithAReasonOnARefusalADropOrABadReply) {
    using Case = std::tuple<std::deque<Bytes>, const char*, int>;  // replies, error, code
    for (const auto& [replies, why, code] : {
             Case{{{0xD3, 0x00, 0x03}}, "refused with 0xD3", 0xD3},
             Case{{kConnected, {0xC3, 0x00, 0x03}}, "refused with 0xC3", 0xC3},
             Case{{kConnected, kContinue}, "no reply", 0},
             Case{{kConnected, {0x90, 0xFF, 0xFF}}, "reply of 65535 bytes refused", 0},
             Case{{kConnected, {0x90, 0x00, 0x09, 0x48}}, "reply cut short", 0},
             Case{{kConnected, {0x90, 0x00, 0x05, 0x48, 0x00}}, "header length missing", 0},
         }) {
        Peer peer;
        peer.replies = replies;
        obex::Session session(peer);
        const Bytes file(3000, 1);
        const bool sent = session.Connect() && session.BeginPut(u"b.txt", 3000) &&
                          session.Write(file.data(), file.size()) && session.Commit();
        EXPECT_FALSE(sent);
        EXPECT_EQ(session.Error(), why);
        EXPECT_EQ(session.LastCode(), code);
        const std::size_t asked = peer.requests.size();
        session.Abort();
        EXPECT_EQ(peer.requests.size(), asked + (code != 0)) << "only a peer in step hears more";
    }
}

TEST(SessionDevice, NamesTheFileByItsBaseNameAndDisconnectsAtTheEnd) {
    auto stream = std::make_unique<Peer>();
    Peer& peer = *stream;
    peer.replies = {kConnected}, peer.agreeing = true;
    obex::SessionDevice device(std::move(stream), 1000);
    ASSERT_TRUE(device.Connect({}) && device.Connect({}));
    auto put = device.Put({L"/data/sub\\nord1.txt", 5});
    ASSERT_TRUE(put && put->Write(nullptr, 0) &&
                put->Write(reinterpret_cast<const std::uint8_t*>("abcde"), 5) && put->Commit());
    device.EndExchange({});
    ASSERT_EQ(peer.requests.size(), 3u) << "one CONNECT, one PUT-final, DISCONNECT";
    std::string why;
    const auto request = obex::ParseReply(peer.requests[1].data(), peer.requests[1].size(), false, why);
    ASSERT_TRUE(request && request->Find(obex::kName));
    EXPECT_EQ(request->Find(obex::kName)->value, obex::Header::Text(obex::kName, u"nord1.txt").value);
    EXPECT_EQ(peer.requests[2][0], obex::kDisconnect);
}

}  // namespace
