// OBEX packets: exact request bytes, and replies taken apart or refused.

#include <gtest/gtest.h>

#include "Common/Bluetooth/ObexPacket.h"

namespace {

using obex::Bytes;
using obex::Header;

TEST(ObexPacket, RequestsAreTheExactBytes) {
    EXPECT_EQ(obex::ConnectRequest(0x2000, {}), (Bytes{0x80, 0x00, 0x07, 0x10, 0x00, 0x20, 0x00}));
    const std::uint8_t body[] = {'x', 'y', 'z'};
    EXPECT_EQ(
        obex::Request(obex::kPut,
                      {Header::Quad(obex::kConnectionId, 1), Header::Text(obex::kName, u"a.txt"),
                       Header::Quad(obex::kLength, 4999), Header::Data(obex::kBody, body, 3)}),
        (Bytes{0x02, 0x00, 0x22, 0xCB, 0,    0,    0,    1,   0x01, 0x00, 0x0F, 0,
               'a',  0,    '.',  0,    't',  0,    'x',  0,   't',  0,    0,    0xC3,
               0x00, 0x00, 0x13, 0x87, 0x48, 0x00, 0x06, 'x', 'y',  'z'}));
    EXPECT_EQ(obex::Request(obex::kPutFinal, {Header::Data(obex::kEndOfBody, body, 0)}),
              (Bytes{0x82, 0x00, 0x06, 0x49, 0x00, 0x03}));
    EXPECT_EQ(obex::Request(obex::kDisconnect, {}), (Bytes{0x81, 0x00, 0x03}));
    EXPECT_EQ(Header::Ascii(obex::kType, "text/plain").WireSize(), 14u);
}

TEST(ObexPacket, RepliesAreTakenApartOrRefused) {
    std::string error;
    const Bytes connected{0xA0, 0x00, 0x0C, 0x10, 0x00, 0x04, 0x00, 0xCB, 0x12, 0x34, 0x56, 0x78};
    const auto reply = obex::ParseReply(connected.data(), connected.size(), true, error);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->code, obex::kSuccess);
    EXPECT_EQ(reply->maxPacket, 0x400);
    ASSERT_TRUE(reply->Find(obex::kConnectionId));
    EXPECT_EQ(reply->Find(obex::kConnectionId)->QuadValue(), 0x12345678u);
    const Bytes named{0x90, 0x00, 0x0A, 0x01, 0x00, 0x07, 0x00, 'O', 0x00, 0x00};
    const auto continued = obex::ParseReply(named.data(), named.size(), false, error);
    ASSERT_TRUE(continued);
    EXPECT_EQ(continued->Find(obex::kName)->TextValue(), u"O");
    // Each refused, with what was wrong.
    for (const auto& [bytes, connect, why] : {
             std::tuple{Bytes{0xA0, 0x00}, false, "packet length missing for 2 bytes"},
             std::tuple{Bytes{0xA0, 0x00, 0x09}, false, "packet length 9 for 3 bytes"},
             std::tuple{Bytes{0xA0, 0x00, 0x02}, false, "packet length missing for 3 bytes"},
             std::tuple{Bytes{0xA0, 0x00, 0x05, 0x10, 0x00}, true,
                        "connect reply without its fields"},
             std::tuple{Bytes{0xA0, 0x00, 0x05, 0x48, 0x00}, false, "header length missing"},
             std::tuple{Bytes{0xA0, 0x00, 0x06, 0x48, 0x00, 0x09}, false,
                        "header runs past the packet"},
             std::tuple{Bytes{0xA0, 0x00, 0x06, 0x48, 0x00, 0x02}, false,
                        "header length 2 invalid"},
             std::tuple{Bytes{0xA0, 0x00, 0x07, 0x01, 0x00, 0x04, 0x00}, false,
                        "header length 4 invalid"},
             std::tuple{Bytes{0xA0, 0x00, 0x06, 0xCB, 0x00, 0x00}, false,
                        "header runs past the packet"},
         }) {
        error.clear();
        EXPECT_FALSE(obex::ParseReply(bytes.data(), bytes.size(), connect, error));
        EXPECT_EQ(error, why);
    }
}

}  // namespace
