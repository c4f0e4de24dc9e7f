#include "SystemPortProbe.h"
#include "NullPortProbe.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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

class ScriptedTool : public ::testing::Test {
  protected:
    /// Writes a shell script that stands for the tool.
    QString tool(const QByteArray& script) const {
        QString path = folder.filePath(u"lsof"_s);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    const QTemporaryDir folder;
};

} // namespace

TEST(SystemPortProbe, seesAListenerAndNoticesItsEnd) {
    const auto probe = createSystemPortProbe();
    BoundSocket listener(SOCK_STREAM);
    listener.listen();
    EXPECT_TRUE(probe->isPortInUse(listener.port));
    listener.close();
    EXPECT_FALSE(probe->isPortInUse(listener.port));
}

TEST(SystemPortProbe, seesDatagramPortsToo) {
    const BoundSocket socket(SOCK_DGRAM);
    EXPECT_TRUE(createSystemPortProbe()->isPortInUse(socket.port));
}

TEST(SystemPortProbe, takesTheUsualToolWhereItIs) {
    const QString usual = u"/usr/sbin/lsof"_s;
    EXPECT_EQ(SystemPortProbe::systemTool(), QFileInfo::exists(usual) ? usual : u"lsof"_s);
}

using SystemPortProbeTool = ScriptedTool;

TEST_F(SystemPortProbeTool, isGivenExactlyTwoArguments) {
    SystemPortProbe probe(tool("[ \"$#|$1|$2\" = '2|-i|:8765' ] && echo yes"));
    EXPECT_TRUE(probe.isPortInUse(8765));
    EXPECT_FALSE(probe.isPortInUse(8766));
}

TEST_F(SystemPortProbeTool, thatPrintsOnlyWhiteSpaceMeansAFreePort) {
    EXPECT_FALSE(SystemPortProbe(tool("printf ' \\t\\n\\r\\n'")).isPortInUse(8765));
}

TEST_F(SystemPortProbeTool, countsWhateverItsExitCodeIs) {
    EXPECT_TRUE(SystemPortProbe(tool("echo busy; exit 1")).isPortInUse(8765));
    EXPECT_FALSE(SystemPortProbe(tool("exit 1")).isPortInUse(8765));
}

TEST_F(SystemPortProbeTool, mayAnswerOnStandardError) {
    EXPECT_TRUE(SystemPortProbe(tool("echo busy >&2")).isPortInUse(8765));
}

TEST_F(SystemPortProbeTool, thatCannotBeRunMeansAFreePort) {
    EXPECT_FALSE(SystemPortProbe(folder.filePath(u"missing"_s)).isPortInUse(8765));
    EXPECT_FALSE(SystemPortProbe(folder.path()).isPortInUse(8765));
}

TEST_F(SystemPortProbeTool, thatHangsIsGivenUp) {
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(SystemPortProbe(tool("exec sleep 60"), 50ms).isPortInUse(8765));
    EXPECT_LT(clock.elapsed(), 30000);
    EXPECT_TRUE(SystemPortProbe(tool("echo busy; exec sleep 60")).isPortInUse(8765))
        << "what it said until then counts";
}

TEST_F(SystemPortProbeTool, thatNeverEndsPrintingIsGivenUp) {
    // Line by line: what prints faster fills the memory until the limit.
    EXPECT_TRUE(SystemPortProbe(tool("while :; do echo busy; done")).isPortInUse(8765));
}

TEST_F(SystemPortProbeTool, thatClosesItsOutputButStaysIsNotWaitedFor) {
    QElapsedTimer clock;
    clock.start();
    EXPECT_TRUE(SystemPortProbe(tool("echo busy; exec sleep 60 >&- 2>&-")).isPortInUse(8765));
    EXPECT_LT(clock.elapsed(), 30000);
}

TEST_F(SystemPortProbeTool, thatPrintsAGreatDealDoesNotBlock) {
    EXPECT_TRUE(SystemPortProbe(tool("head -c 1000000 /dev/zero")).isPortInUse(8765));
}

TEST(NullPortProbe, findsEveryPortFree) {
    EXPECT_FALSE(NullPortProbe().isPortInUse(8765));
}

} // namespace orv
