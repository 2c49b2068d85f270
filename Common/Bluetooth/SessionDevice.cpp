#include "Common/Bluetooth/SessionDevice.h"

#include <QString>

namespace obex {
namespace {

class SessionPutStream : public PutStream {
public:
    explicit SessionPutStream(Session& session) : session(session) {}
    ~SessionPutStream() override {
        // A stream dropped before its commit leaves the peer with half an
        // object; tell it so the next PUT starts clean.
        if (!done) session.Abort();
    }

    bool Write(const std::uint8_t* data, std::size_t size) override {
        if (done) return false;
        if (size == 0) return true;
        return Check(session.Write(data, size));
    }

    bool Commit() override {
        if (done) return false;
        done = true;
        return session.Commit();
    }

private:
    bool Check(bool ok) {
        if (!ok) done = true;  // the session has already ended the object
        return ok;
    }

    Session& session;
    bool done = false;
};

// The base name only: a name must never be a path on the peer.
std::u16string BaseName(const std::wstring& name) {
    QString text = QString::fromStdWString(name);
    text = text.mid(std::max(text.lastIndexOf('/'), text.lastIndexOf('\\')) + 1);
    return text.toStdU16String();
}

}  // namespace

SessionDevice::SessionDevice(std::unique_ptr<ByteStream> stream, int timeoutMs)
    : stream(std::move(stream)), session(*this->stream, timeoutMs) {}

SessionDevice::~SessionDevice() {
    if (connected) session.Disconnect();
}

bool SessionDevice::Connect(const HeaderCollection& /*headers*/) {
    if (!connected) connected = session.Connect();
    return connected;
}

std::unique_ptr<PutStream> SessionDevice::Put(const HeaderCollection& headers) {
    if (!connected || !session.BeginPut(BaseName(headers.name), headers.length.value_or(0)))
        return nullptr;
    return std::make_unique<SessionPutStream>(session);
}

void SessionDevice::EndExchange(const HeaderCollection& /*headers*/) {
    if (connected) session.Disconnect();
    connected = false;
}

}  // namespace obex
