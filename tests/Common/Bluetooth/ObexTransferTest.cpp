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

#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <fstream>
#include <random>

#include "Common/Bluetooth/RfcommStream.h"
#include "Common/Bluetooth/TcpStream.h"

namespace {

bool Within(int ms, const std::function<bool()>& done) {
    for (int waited = 0; !done(); waited += 20, QThread::msleep(20))
        if (waited >= ms) return false;
    return true;
}

// A network of the test's own where it may make one: port 650 is then free
// of other servers on this machine and of an earlier run's connections.
bool OwnNetwork() {
    ifreq lo{.ifr_ifrn = {.ifrn_name = "lo"}, .ifr_ifru = {}};
    const int fd = unshare(CLONE_NEWNET) == 0 ? socket(AF_INET, SOCK_DGRAM, 0) : -1;
    const bool up = fd >= 0 && ioctl(fd, SIOCGIFFLAGS, &lo) == 0 &&
                    (lo.ifr_flags |= IFF_UP, ioctl(fd, SIOCSIFFLAGS, &lo) == 0);
    return close(fd), up;
}

// Whether a socket still holds TCP port 650 (a server, or for a minute a
// connection it closed).
bool Port650Held() {
    for (std::string text : {"/proc/net/tcp", "/proc/net/tcp6"})
        if (std::getline(std::ifstream(text), text, '\0'), text.find(":028A ") != text.npos)
            return true;
    return false;
}

TEST(ObexTransfer, RealServerStoresEachFileByteForByte) {
    if (geteuid() != 0) GTEST_SKIP() << "obex_test serves on port 650, which needs root";
    ASSERT_TRUE(OwnNetwork() || Within(70000, [] { return !Port650Held(); })) << "650 in use";
    QTemporaryDir dir;
    QProcess server;  // killed by its destructor, pass or fail
    server.setWorkingDirectory(dir.path());
    server.start("obex_test", {"-i"});
    server.write("s\n");  // serve
    ASSERT_TRUE(server.waitForBytesWritten(5000)) << server.errorString().toStdString();
    const auto said = [&] { return server.waitForReadyRead(200), server.readAll().toStdString(); };
    std::string error;
    const auto connect = [&] { return obex::TcpStream::Connect("127.0.0.1", 650, 5000, error); };
    std::unique_ptr<obex::TcpStream> stream;
    ASSERT_TRUE(Within(5000, [&] { return (stream = connect()) != nullptr; })) << error << said();
    obex::Session session(*stream, 5000);
    ASSERT_TRUE(session.Connect()) << session.Error();
    std::mt19937 random(7);
    for (const std::size_t size : {0u, 4999u, 10000u, 1000000u}) {
        const std::string name = "file" + std::to_string(size);
        std::string content(size, '\0');
        for (char& byte : content) byte = static_cast<char>(random());
        ASSERT_TRUE(session.BeginPut(std::u16string(name.begin(), name.end()), size));
        ASSERT_TRUE(session.Write(reinterpret_cast<std::uint8_t*>(content.data()), size) &&
                    session.Commit())
            << name << ": " << session.Error() << said();
        std::ifstream file(dir.filePath(name.c_str()).toStdString(), std::ios::binary);  // or none
        const std::string stored{std::istreambuf_iterator<char>(file), {}};
        EXPECT_TRUE(stored == content) << name << ": " << stored.size() << " bytes stored";
    }
    EXPECT_TRUE(session.Disconnect()) << session.Error();
}

TEST(TcpStream, SilentOrDroppingPeerEndsTheTransfer) {
    std::string error;
    QTcpServer listener;  // the system accepts for it
    ASSERT_TRUE(listener.listen(QHostAddress::LocalHost));
    const quint16 port = listener.serverPort();
    auto quiet = obex::TcpStream::Connect("127.0.0.1", port, 2000, error);
    auto stream = obex::TcpStream::Connect("127.0.0.1", port, 2000, error);
    ASSERT_TRUE(quiet && stream && listener.waitForNewConnection(2000)) << error;
    obex::Session unanswered(*quiet, 200);  // never read or written to
    EXPECT_FALSE(unanswered.Connect());
    EXPECT_EQ(unanswered.Error(), "no reply");

    // Agrees to connect and to the file's first packet, then closes.
    QTcpSocket* peer = (listener.nextPendingConnection(), listener.nextPendingConnection());
    ASSERT_NE(peer, nullptr);
    peer->write(QByteArray::fromHex("a0000710002000900003"));  // CONNECT agreed, Continue
    peer->waitForBytesWritten(2000), peer->close();
    obex::Session session(*stream, 5000);
    ASSERT_TRUE(session.Connect() && session.BeginPut(u"dropped", 1000000)) << session.Error();
    EXPECT_FALSE(session.Write(obex::Bytes(1000000, 0x5A).data(), 1000000) && session.Commit());
    EXPECT_TRUE(session.Broken()) << session.Error();
    EXPECT_FALSE(stream->Write(obex::Bytes{0x81, 0x00, 0x03}));

    listener.close();  // nobody listens there now
    EXPECT_EQ(obex::TcpStream::Connect("127.0.0.1", port, 2000, error), nullptr);
    EXPECT_EQ(error, "127.0.0.1:" + std::to_string(port) + ": Connection refused");
}

TEST(RfcommStream, RefusesWhatItCannotReach) {
    std::string error;
    EXPECT_EQ(obex::RfcommStream::ConnectChannel("phone", 1, 3000, error), nullptr);
    EXPECT_EQ(error, "\"phone\" is not a Bluetooth address");
    // No such device, and here no adapter.
    EXPECT_EQ(obex::RfcommStream::ConnectChannel("00:11:22:33:44:55", 1, 3000, error), nullptr);
    EXPECT_EQ(error.rfind("00:11:22:33:44:55: ", 0), 0u) << error;
}

}  // namespace
