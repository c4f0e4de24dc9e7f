#include "SystemPortProbe.h"
#include "NullPortProbe.h"
#include "SocketTable.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <chrono>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// A socket bound to a free port of the loopback interface.
class BoundSocket {
  public:
    explicit BoundSocket(int type)
        : socket_(::socket(AF_INET, type | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(socket_, generic, length), 0);
        EXPECT_EQ(::getsockname(socket_, generic, &length), 0);
        port = ntohs(address.sin_port);
    }

    ~BoundSocket() { close(); }

    BoundSocket(const BoundSocket&) = delete;
    BoundSocket& operator=(const BoundSocket&) = delete;

    void listen() const { EXPECT_EQ(::listen(socket_, 1), 0); }

    void close() {
        if (socket_ >= 0) {
            ::close(std::exchange(socket_, -1));
        }
    }

    quint16 port = 0;

  private:
    int socket_ = -1;
};

constexpr auto headings =
    "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt "
    "  uid  timeout inode\n";

QByteArray line(const char* local, const char* remote, const char* inode) {
    return QByteArray("   0: ") + local + ' ' + remote +
           " 0A 00000000:00000000 00:00000000 00000000  1000        0 " + inode +
           " 1 0000000000000000 100 0 0 10 0\n";
}

} // namespace

TEST(SocketTable, namesAPortAtEitherEnd) {
    const QByteArray listening = headings + line("0100007F:223D", "00000000:0000", "4242");
    EXPECT_TRUE(socketTableNamesPort(listening, 8765));
    EXPECT_FALSE(socketTableNamesPort(listening, 8766));
    EXPECT_TRUE(socketTableNamesPort(line("0100007F:A3F2", "0100007F:223D", "7"), 8765));
    EXPECT_TRUE(socketTableNamesPort(
        line("00000000000000000000000001000000:223D", "00000000000000000000000000000000:0000", "7"),
        8765));
}

TEST(SocketTable, leavesOutWhatTheKernelAloneKeeps) {
    EXPECT_FALSE(socketTableNamesPort(line("0100007F:223D", "0100007F:A3F2", "0"), 8765));
}

TEST(SocketTable, takesNothingElseForAPort) {
    EXPECT_FALSE(socketTableNamesPort(headings, 8765));
    EXPECT_FALSE(socketTableNamesPort("", 8765));
    EXPECT_FALSE(socketTableNamesPort(line("223D:0050", "0000223D:0051", "8765"), 8765));
    EXPECT_FALSE(socketTableNamesPort(line("223D", "", "1").chopped(60), 8765));
    EXPECT_FALSE(socketTableNamesPort("\n\n 0: 0100007F:\xff\n", 8765));
}

TEST(SystemPortProbe, seesAListenerAndNoticesItsEnd) {
    const auto probe = createSystemPortProbe();
    BoundSocket listener(SOCK_STREAM);
    listener.listen();
    EXPECT_EQ(probe->isPortInUse(listener.port), true);
    listener.close();
    EXPECT_EQ(probe->isPortInUse(listener.port), false);
}

TEST(SystemPortProbe, seesDatagramPortsToo) {
    const BoundSocket socket(SOCK_DGRAM);
    EXPECT_EQ(createSystemPortProbe()->isPortInUse(socket.port), true);
}

class SystemPortProbeTables : public ::testing::Test {
  protected:
    QString tool(const QByteArray& script) const {
        QString path = folder.filePath(u"lsof"_s);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    void write(const QString& name, const QByteArray& table) const {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(table);
    }

    const QTemporaryDir folder;
};

TEST_F(SystemPortProbeTables, thatAreThereSpareTheTool) {
    write(u"tcp"_s, headings + line("0100007F:223D", "00000000:0000", "4242"));
    SystemPortProbe probe(folder.path(), LsofPortProbe(tool("touch \"$0.asked\"; echo busy")));
    EXPECT_EQ(probe.isPortInUse(8765), true);
    EXPECT_EQ(probe.isPortInUse(8766), false);
    EXPECT_FALSE(QFile::exists(folder.filePath(u"lsof.asked"_s)));
}

TEST_F(SystemPortProbeTables, thatCannotBeReadLeaveItToTheTool) {
    SystemPortProbe busy(folder.filePath(u"nowhere"_s), LsofPortProbe(tool("echo busy")));
    EXPECT_EQ(busy.isPortInUse(8765), true);
    write(u"tcp"_s, {}); // As where the kernel hides what it has.
    SystemPortProbe silent(folder.path(), LsofPortProbe(tool("exit 1"), std::chrono::minutes(1)));
    EXPECT_EQ(silent.isPortInUse(8765), false);
}

TEST_F(SystemPortProbeTables, oneThatCannotBeReadLeavesItToTheTool) {
    ASSERT_TRUE(QDir(folder.path()).mkdir(u"tcp"_s)); // There, but nothing can be read.
    write(u"tcp6"_s, headings);
    SystemPortProbe probe(folder.path(), LsofPortProbe(tool("echo busy")));
    EXPECT_EQ(probe.isPortInUse(8765), true);
}

TEST(NullPortProbe, findsEveryPortFree) {
    EXPECT_EQ(NullPortProbe().isPortInUse(8765), false);
}

} // namespace orv
