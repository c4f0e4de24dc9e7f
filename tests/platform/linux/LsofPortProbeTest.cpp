#include "LsofPortProbe.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

namespace {

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

TEST(LsofPortProbe, takesTheUsualToolWhereItIs) {
    const QString usual = u"/usr/sbin/lsof"_s;
    EXPECT_EQ(LsofPortProbe::systemTool(), QFileInfo::exists(usual) ? usual : u"lsof"_s);
}

using LsofPortProbeTool = ScriptedTool;

TEST_F(LsofPortProbeTool, isGivenExactlyTwoArguments) {
    LsofPortProbe probe(tool("[ \"$#|$1|$2\" = '2|-i|:8765' ] && echo yes"), 1min);
    EXPECT_EQ(probe.isPortInUse(8765), true);
    EXPECT_EQ(probe.isPortInUse(8766), false);
}

TEST_F(LsofPortProbeTool, thatPrintsOnlyWhiteSpaceMeansAFreePort) {
    EXPECT_EQ(LsofPortProbe(tool("printf ' \\t\\n\\r\\n'"), 1min).isPortInUse(8765), false);
}

TEST_F(LsofPortProbeTool, countsWhateverItsExitCodeIs) {
    EXPECT_EQ(LsofPortProbe(tool("echo busy; exit 1")).isPortInUse(8765), true);
    EXPECT_EQ(LsofPortProbe(tool("exit 1"), 1min).isPortInUse(8765), false);
}

TEST_F(LsofPortProbeTool, mayAnswerOnStandardError) {
    EXPECT_EQ(LsofPortProbe(tool("echo busy >&2")).isPortInUse(8765), true);
}

TEST_F(LsofPortProbeTool, thatCannotBeRunMeansAFreePort) {
    EXPECT_EQ(LsofPortProbe(folder.filePath(u"missing"_s)).isPortInUse(8765), false);
    EXPECT_EQ(LsofPortProbe(folder.path()).isPortInUse(8765), false);
}

TEST_F(LsofPortProbeTool, thatHangsIsGivenUp) {
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(LsofPortProbe(tool("exec sleep 60"), 50ms).isPortInUse(8765), std::nullopt);
    EXPECT_LT(clock.elapsed(), 30000);
    EXPECT_EQ(LsofPortProbe(tool("echo busy; exec sleep 60")).isPortInUse(8765), true)
        << "what it said until then counts";
}

TEST_F(LsofPortProbeTool, thatNeverEndsPrintingIsGivenUp) {
    // Line by line: what prints faster fills the memory until the limit.
    EXPECT_EQ(LsofPortProbe(tool("while :; do echo busy; done")).isPortInUse(8765), true);
}

TEST_F(LsofPortProbeTool, thatClosesItsOutputButStaysIsNotWaitedFor) {
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(LsofPortProbe(tool("echo busy; exec sleep 60 >&- 2>&-")).isPortInUse(8765), true);
    EXPECT_LT(clock.elapsed(), 30000);
}

TEST_F(LsofPortProbeTool, thatPrintsAGreatDealDoesNotBlock) {
    EXPECT_EQ(LsofPortProbe(tool("head -c 1000000 /dev/zero")).isPortInUse(8765), true);
}

} // namespace orv
