// The transports against peers we did not script packet by packet: a real
// OBEX server (obex_test of openobex-apps, which serves on port 650 and
// stores what it receives in its working directory under the name sent), a
// peer that takes the connection and never answers, one that drops it
// mid-file; and the RFCOMM stream's refusals where there is no Bluetooth.

#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "Common/Bluetooth/ObexService.h"
#include "Common/Bluetooth/RfcommStream.h"
#include "Common/Bluetooth/TcpStream.h"

namespace {

using obex::Bytes;

bool Within(int ms, const std::function<bool()>& done) {
    for (int waited = 0; !done(); waited += 20)
        if (waited >= ms) return false;
        else QThread::msleep(20);
    return true;
}

// Whether a TCP socket of this machine is bound to `port`: listening, or
// in any state (a closed connection holds the port for a minute).
bool PortHeld(int port, bool listening) {
    char local[8];
    std::snprintf(local, sizeof local, ":%04X", port);
    for (const char* table : {"/proc/net/tcp", "/proc/net/tcp6"}) {
        std::ifstream in(table);
        for (std::string line, slot, address, remote, state; std::getline(in, line);) {
            std::istringstream(line) >> slot >> address >> remote >> state;
            if (address.ends_with(local) && (!listening || state == "0A")) return true;
        }
    }
    return false;
}

// A network of the test's own where it may make one: port 650 is then free
// of other servers on this machine and of an earlier run's connections.
bool OwnNetwork() {
    if (unshare(CLONE_NEWNET) != 0) return false;
    ifreq lo{};
    std::strcpy(lo.ifr_name, "lo");
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    bool up = ioctl(fd, SIOCGIFFLAGS, &lo) == 0;
    lo.ifr_flags |= IFF_UP;
    up = up && ioctl(fd, SIOCSIFFLAGS, &lo) == 0;
    close(fd);
    return up;
}

TEST(ObexTransfer, RealServerStoresEachFileByteForByte) {
    if (geteuid() != 0) GTEST_SKIP() << "obex_test serves on port 650, which needs root";
    if (!OwnNetwork()) {
        ASSERT_TRUE(Within(70000, [] { return !PortHeld(obex::kObexTcpPort, false); }))
            << "port 650 stays in use";
    }
    QTemporaryDir dir;
    QProcess server;
    server.setWorkingDirectory(dir.path());
    server.setProcessChannelMode(QProcess::MergedChannels);
    server.start("obex_test", {"-i"});
    ASSERT_TRUE(server.waitForStarted(5000)) << "obex_test: " << server.errorString().toStdString();
    struct Stop {
        QProcess& server;
        ~Stop() { server.kill(), server.waitForFinished(5000); }
    } stop{server};
    server.write("s\n");  // serve
    ASSERT_TRUE(server.waitForBytesWritten(5000));
    const auto output = [&] {
        server.waitForReadyRead(200);
        return "obex_test said:\n" + server.readAll().toStdString();
    };
    ASSERT_TRUE(Within(5000, [] { return PortHeld(obex::kObexTcpPort, true); })) << output();

    std::string error;
    auto stream = obex::TcpStream::Connect("127.0.0.1", obex::kObexTcpPort, 5000, error);
    ASSERT_NE(stream, nullptr) << error;
    obex::Session session(*stream, 5000);
    ASSERT_TRUE(session.Connect()) << session.Error();
    std::mt19937 random(7);
    std::vector<std::pair<std::string, Bytes>> sent;
    for (const std::size_t size : {0u, 4999u, 10000u, 1000000u}) {
        Bytes& content = sent.emplace_back("file" + std::to_string(size), Bytes(size)).second;
        for (std::uint8_t& byte : content) byte = static_cast<std::uint8_t>(random());
        const std::string& name = sent.back().first;
        ASSERT_TRUE(session.BeginPut(std::u16string(name.begin(), name.end()), size));
        for (std::size_t at = 0; at < size; at += 4096)
            ASSERT_TRUE(session.Write(&content[at], std::min<std::size_t>(4096, size - at)))
                << name << ": " << session.Error() << output();
        ASSERT_TRUE(session.Commit()) << name << ": " << session.Error() << output();
    }
    EXPECT_TRUE(session.Disconnect()) << session.Error();
    for (const auto& [name, content] : sent) {
        QFile file(dir.filePath(QString::fromStdString(name)));
        // obex_test stores no file for an object without body bytes.
        if (content.empty() && !file.exists()) continue;
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name << " not stored; " << output();
        const QByteArray received = file.readAll();
        EXPECT_TRUE(received == QByteArray(reinterpret_cast<const char*>(content.data()),
                                           static_cast<qsizetype>(content.size())))
            << name << ": " << received.size() << " bytes stored of " << content.size();
    }
}

TEST(TcpStream, SilentOrDroppingPeerEndsTheTransfer) {
    std::string error;
    QTcpServer refusing;  // a port just closed again: nobody listens there
    ASSERT_TRUE(refusing.listen(QHostAddress::LocalHost));
    const quint16 closedPort = refusing.serverPort();
    refusing.close();
    EXPECT_EQ(obex::TcpStream::Connect("127.0.0.1", closedPort, 2000, error), nullptr);
    EXPECT_EQ(error, "127.0.0.1:" + std::to_string(closedPort) + ": Connection refused");

    QTcpServer silent;  // the system accepts for it; it never reads or writes
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    auto quiet = obex::TcpStream::Connect("127.0.0.1", silent.serverPort(), 2000, error);
    ASSERT_NE(quiet, nullptr) << error;
    obex::Session unanswered(*quiet, 200);
    EXPECT_FALSE(unanswered.Connect());
    EXPECT_EQ(unanswered.Error(), "no reply");

    // Agrees to connect, then closes as the file's first packet comes in.
    std::atomic<quint16> port = 0;
    std::thread peer([&port] {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        port = server.serverPort();
        if (!server.waitForNewConnection(5000)) return;
        QTcpSocket* link = server.nextPendingConnection();
        while (link->bytesAvailable() < 7 && link->waitForReadyRead(5000)) {}
        link->read(7);
        link->write(QByteArray::fromHex("a0000710002000"));
        link->waitForReadyRead(5000);
        link->abort();
    });
    ASSERT_TRUE(Within(5000, [&] { return port != 0; }));
    auto stream = obex::TcpStream::Connect("127.0.0.1", port, 2000, error);
    ASSERT_NE(stream, nullptr) << error;
    obex::Session session(*stream, 5000);
    ASSERT_TRUE(session.Connect()) << session.Error();
    ASSERT_TRUE(session.BeginPut(u"dropped.txt", 1000000));
    const Bytes file(1000000, 0x5A);
    EXPECT_FALSE(session.Write(file.data(), file.size()) && session.Commit());
    EXPECT_TRUE(session.Broken()) << session.Error();
    EXPECT_FALSE(stream->Write(Bytes{0x81, 0x00, 0x03}));
    peer.join();
}

TEST(RfcommStream, RefusesWhatItCannotReach) {
    std::string error;
    const std::string peer = "00:11:22:33:44:55";  // no such device, and here no adapter
    EXPECT_EQ(obex::RfcommStream::ConnectChannel("phone", 1, 3000, error), nullptr);
    EXPECT_EQ(error, "\"phone\" is not a Bluetooth address");
    EXPECT_EQ(obex::RfcommStream::ConnectService(peer, L"push", 3000, error), nullptr);
    EXPECT_EQ(error, "not a service UUID");
    error.clear();
    EXPECT_EQ(obex::RfcommStream::ConnectChannel(peer, 1, 3000, error), nullptr);
    EXPECT_EQ(error.rfind(peer + ": ", 0), 0u) << error;
}

}  // namespace
