// The transports against peers we did not script packet by packet: a real
// OBEX server (obex_test of openobex-apps, which serves on port 650 and
// stores what it receives in its working directory under the name sent), a
// peer that takes the connection and never answers, and one that drops it
// mid-file.

#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <fstream>
#include <random>

#include "Common/Bluetooth/TcpStream.h"

namespace {

// A network of the test's own: port 650 is then free of other servers on
// this machine and of an earlier run's connections.
bool OwnNetwork() {
    ifreq lo{.ifr_ifrn = {.ifrn_name = "lo"}, .ifr_ifru = {}};
    const int fd = unshare(CLONE_NEWNET) == 0 ? socket(AF_INET, SOCK_DGRAM, 0) : -1;
    const bool up = fd >= 0 && ioctl(fd, SIOCGIFFLAGS, &lo) == 0 &&
                    (lo.ifr_flags |= IFF_UP, ioctl(fd, SIOCSIFFLAGS, &lo) == 0);
    return close(fd), up;
}

TEST(ObexTransfer, RealServerStoresEachFileByteForByte) {
    if (geteuid() != 0 || !OwnNetwork()) GTEST_SKIP() << "needs root: obex_test serves on port 650";
    QTemporaryDir dir;
    QProcess server;  // killed by its destructor, pass or fail
    server.setWorkingDirectory(dir.path()), server.start("obex_test", {"-i"});
    server.write("s\n");  // serve
    ASSERT_TRUE(server.waitForBytesWritten(5000)) << server.errorString().toStdString();
    std::string error;
    std::unique_ptr<obex::TcpStream> stream;
    for (QDeadlineTimer end(5000); !stream && !end.hasExpired(); QThread::msleep(20))
        stream = obex::TcpStream::Connect("127.0.0.1", 650, 5000, error);
    ASSERT_TRUE(stream) << error;
    obex::Session session(*stream, 5000);
    ASSERT_TRUE(session.Connect()) << session.Error();
    std::mt19937 random(7);
    for (const std::size_t size : {0u, 4999u, 10000u, 1000000u}) {
        const std::string name = "file" + std::to_string(size);
        obex::Bytes content(size);
        for (auto& byte : content) byte = static_cast<std::uint8_t>(random());
        ASSERT_TRUE(session.BeginPut(std::u16string(name.begin(), name.end()), size));
        ASSERT_TRUE(session.Write(content.data(), size) && session.Commit())
            << name << session.Error();
        std::ifstream file(dir.filePath(name.c_str()).toStdString(), std::ios::binary);  // or none
        const obex::Bytes stored{std::istreambuf_iterator<char>(file), {}};
        EXPECT_TRUE(stored == content) << name << ": " << stored.size() << " bytes stored";
    }
    EXPECT_TRUE(session.Disconnect()) << session.Error();
}

TEST(TcpStream, SilentOrDroppingPeerEndsTheTransfer) {
    std::string error;
    QTcpServer listener;  // the system accepts for it
    ASSERT_TRUE(listener.listen(QHostAddress::LocalHost));
    auto quiet = obex::TcpStream::Connect("127.0.0.1", listener.serverPort(), 2000, error);
    auto stream = obex::TcpStream::Connect("127.0.0.1", listener.serverPort(), 2000, error);
    ASSERT_TRUE(quiet && stream && listener.waitForNewConnection(2000)) << error;
    obex::Session unanswered(*quiet, 200);  // never read or written to
    EXPECT_TRUE(!unanswered.Connect() && unanswered.Error() == "no reply") << unanswered.Error();

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
}

}  // namespace
