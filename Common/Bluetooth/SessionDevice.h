#pragma once
// A bound device: our OBEX session over the device's byte stream. One
// connect serves every file of an exchange; the end of the exchange
// disconnects.

#include <memory>

#include "Common/Bluetooth/ObexService.h"
#include "Common/Bluetooth/ObexSession.h"

namespace obex {

class SessionDevice : public Device {
public:
    SessionDevice(std::unique_ptr<ByteStream> stream, int timeoutMs);
    ~SessionDevice() override;

    bool Connect(const HeaderCollection& headers) override;
    std::unique_ptr<PutStream> Put(const HeaderCollection& headers) override;
    void EndExchange(const HeaderCollection& headers) override;

    const Session& ObexSession() const { return session; }

private:
    std::unique_ptr<ByteStream> stream;
    Session session;
    bool connected = false;
};

}  // namespace obex
