// A 1 MB file pushed over TCP loopback through the OBEX session and the TCP
// stream, the whole exchange (TCP connect, CONNECT, PUT, DISCONNECT) per
// iteration, against the same 1 MB written raw through the same stream and
// acknowledged with one byte. The peer is a responder thread that agrees to
// everything and offers the packet size given as the argument (1024 is what
// the reference server of the transfer test offers, 65535 the most); the
// session takes the smaller of that and its own limit, shown as max_packet.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "Common/Bluetooth/TcpStream.h"

namespace {

constexpr std::size_t kFile = 1000000;
constexpr std::size_t kChunk = 4096;  // as a file is read

bool ReadAll(int link, std::uint8_t* data, std::size_t size) {
    for (ssize_t got = 0; size > 0; data += got, size -= static_cast<std::size_t>(got))
        if ((got = recv(link, data, size, 0)) <= 0) return false;
    return true;
}

void Send(int link, const obex::Bytes& bytes) {
    if (send(link, bytes.data(), bytes.size(), MSG_NOSIGNAL) != ssize_t(bytes.size()))
        std::perror("responder send");
}

// Serves one connection after another until destroyed: OBEX packets, each
// answered, or a raw file answered with one byte.
class Responder {
public:
    Responder(bool obex, std::uint16_t offer, bool single = false) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
            listen(listener, 4) != 0 ||
            getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
            std::perror("responder listen");
        port = ntohs(address.sin_port);
        thread = std::thread([this, obex, offer, single] {
            for (int link; (link = accept(listener, nullptr, nullptr)) >= 0; close(link))
                obex ? AnswerObex(link, offer, single) : AnswerRaw(link);
        });
    }
    ~Responder() {
        shutdown(listener, SHUT_RDWR);  // ends the accept
        thread.join();
        close(listener);
    }
    std::uint16_t port = 0;

private:
    // Whether a request's headers ask for single-response mode.
    static bool AsksSingleResponse(const std::vector<std::uint8_t>& packet, std::size_t length) {
        for (std::size_t at = 3; at < length;) {
            const std::uint8_t id = packet[at];
            if (id == obex::kSingleResponseMode) return at + 1 < length && packet[at + 1] == 1;
            const std::size_t size =
                id >> 6 == 2 ? 2 : id >> 6 == 3 ? 5 : std::size_t(packet[at + 1] << 8 | packet[at + 2]);
            if (size < 2) return false;
            at += size;
        }
        return false;
    }
    static void AnswerObex(int link, std::uint16_t offer, bool single) {
        std::vector<std::uint8_t> packet(0x10000);
        bool quiet = false;  // in single-response mode, inside an object
        while (ReadAll(link, packet.data(), 3)) {
            const std::size_t length = packet[1] << 8 | packet[2];
            if (length < 3 || !ReadAll(link, packet.data() + 3, length - 3)) return;
            if (packet[0] == obex::kConnect)
                Send(link, {obex::kSuccess, 0, 7, obex::kVersion, 0, std::uint8_t(offer >> 8),
                            std::uint8_t(offer)});
            else if (packet[0] == obex::kPut && quiet)
                continue;
            else if (packet[0] == obex::kPut && single && AsksSingleResponse(packet, length))
                Send(link, {obex::kContinue, 0, 5, obex::kSingleResponseMode, 1}), quiet = true;
            else
                Send(link, {packet[0] == obex::kPut ? obex::kContinue : obex::kSuccess, 0, 3});
            if (packet[0] == obex::kPutFinal) quiet = false;
            if (packet[0] == obex::kDisconnect) return;
        }
    }
    static void AnswerRaw(int link) {
        std::vector<std::uint8_t> file(kFile);
        if (ReadAll(link, file.data(), file.size())) Send(link, {1});
    }

    int listener = socket(AF_INET, SOCK_STREAM, 0);
    std::thread thread;
};

std::unique_ptr<obex::TcpStream> Connect(const Responder& peer, benchmark::State& state) {
    std::string error;
    auto stream = obex::TcpStream::Connect("127.0.0.1", peer.port, 5000, error);
    if (stream == nullptr) state.SkipWithError(error.c_str());
    return stream;
}

void BM_ObexPut(benchmark::State& state) {
    const Responder peer(true, static_cast<std::uint16_t>(state.range(0)), state.range(1) != 0);
    const obex::Bytes file(kFile, 0x5A);
    for (auto _ : state) {
        auto stream = Connect(peer, state);
        if (stream == nullptr) break;
        obex::Session session(*stream);
        bool done = session.Connect() && session.BeginPut(u"bench.bin", kFile);
        for (std::size_t at = 0; done && at < kFile; at += kChunk)
            done = session.Write(&file[at], std::min(kChunk, kFile - at));
        if (!(done && session.Commit() && session.Disconnect())) {
            state.SkipWithError(session.Error().c_str());
            break;
        }
        state.counters["max_packet"] = session.MaxPacket();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kFile));
}
// Arguments: the packet size offered, and whether the peer agrees to answer
// only an object's last packet (single-response mode).
BENCHMARK(BM_ObexPut)
    ->Args({1024, 0})
    ->Args({65535, 0})
    ->Args({1024, 1})
    ->Args({65535, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_RawCopy(benchmark::State& state) {
    const Responder peer(false, 0);
    const obex::Bytes file(kFile, 0x5A);
    for (auto _ : state) {
        auto stream = Connect(peer, state);
        std::uint8_t acknowledged = 0;
        if (stream == nullptr || !stream->Write(file) || !stream->Read(&acknowledged, 1, 5000)) {
            state.SkipWithError("raw copy failed");
            break;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kFile));
}
BENCHMARK(BM_RawCopy)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
