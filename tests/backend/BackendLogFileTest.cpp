#include "BackendLogFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QDateTime now(QDate(2026, 3, 1), QTime(1, 2, 3), Qt::UTC);
const QByteArray head = "=== 2026-03-01 01:02:03 UTC - Fortsetzung\n";

class BackendLogFileTest : public ::testing::Test {
  protected:
    BackendLogFile::Outcome append(const QByteArray& bytes) const { return log.append(bytes, now); }

    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }

    static void write(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    static mode_t mode(const QString& path) {
        struct stat status = {};
        EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &status), 0);
        return status.st_mode & 07777;
    }

    QStringList names() const {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System);
    }

    QTemporaryDir folder;
    const QString path = folder.filePath(u"backend.log"_s);
    const QString earlier = folder.filePath(u"backend.log.1"_s);
    const BackendLogFile log{path, earlier, 200};
};

TEST_F(BackendLogFileTest, growsByWhatIsAppended) {
    EXPECT_EQ(append("=== a start\n").taken, 12);
    EXPECT_EQ(append("one\n").taken, 4);
    EXPECT_EQ(append("two").problem, QString());
    EXPECT_EQ(read(path), "=== a start\none\ntwo");
}

TEST_F(BackendLogFileTest, isNotTouchedByNothing) {
    EXPECT_EQ(append({}).problem, QString());
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(BackendLogFileTest, belongsToTheUserAlone) {
    const mode_t usual = ::umask(0);
    const QString deep = folder.filePath(u"a/b c/backend.log"_s);
    EXPECT_EQ(BackendLogFile(deep, deep + u".1"_s).append("x", now).problem, QString());
    EXPECT_EQ(mode(folder.filePath(u"a"_s)), 0700U);
    EXPECT_EQ(mode(folder.filePath(u"a/b c"_s)), 0700U);
    EXPECT_EQ(mode(deep), 0600U);
    write(path, "of an earlier time\n");
    EXPECT_EQ(mode(path), 0666U);
    append("x");
    EXPECT_EQ(mode(path), 0600U);
    ::umask(usual);
}

TEST_F(BackendLogFileTest, takesBytesAsTheyAre) {
    const QByteArray bytes("=== \0\xff\xfe\x1b[1m\r", 12);
    append(bytes);
    EXPECT_EQ(read(path), bytes);
}

TEST_F(BackendLogFileTest, doesNotFollowALink) {
    const QString target = folder.filePath(u"target"_s);
    write(target, "mine");
    ASSERT_TRUE(QFile::link(target, path));
    const BackendLogFile::Outcome outcome = append("x");
    EXPECT_EQ(outcome.problem, u"symbolic link"_s);
    EXPECT_EQ(outcome.taken, 0);
    EXPECT_EQ(read(target), "mine");
    EXPECT_EQ(names(), (QStringList{u"backend.log"_s, u"target"_s}));
}

TEST_F(BackendLogFileTest, doesNotFollowALinkThatLeadsNowhere) {
    ASSERT_TRUE(QFile::link(folder.filePath(u"target"_s), path));
    EXPECT_FALSE(append("x").problem.isEmpty());
    EXPECT_FALSE(QFile::exists(folder.filePath(u"target"_s)));
}

TEST_F(BackendLogFileTest, isNotHeldUpByWhatIsNoFile) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_FALSE(append("x").problem.isEmpty());
    QFile::remove(path);
    ASSERT_TRUE(QDir().mkdir(path));
    EXPECT_FALSE(append("x").problem.isEmpty());
}

TEST_F(BackendLogFileTest, becomesTheOldOneWhenItIsFull) {
    QByteArray all;
    for (int number = 0; number < 12; ++number) {
        const QByteArray line = "line " + QByteArray::number(100 + number) + " of several\n";
        EXPECT_EQ(append(line).taken, line.size());
        all += line;
    }
    EXPECT_LE(read(path).size(), 200);
    EXPECT_LE(read(earlier).size(), 200);
    EXPECT_TRUE(read(path).startsWith(head));
    EXPECT_EQ(read(earlier).mid(head.size()) + read(path).mid(head.size()), all)
        << "whole lines, none twice, none lost";
}

TEST_F(BackendLogFileTest, leavesOneOldOneHoweverMuchComes) {
    const QByteArray lines = QByteArray("a line of some length\n").repeated(200);
    EXPECT_EQ(append(lines).taken, lines.size());
    EXPECT_EQ(append(QByteArray(5000, 'x')).taken, 5000) << "nor a line without an end";
    EXPECT_EQ(names(), (QStringList{u"backend.log"_s, u"backend.log.1"_s}));
    EXPECT_LE(read(path).size(), 200);
    EXPECT_LE(read(earlier).size(), 200);
    EXPECT_EQ(mode(path), 0600U);
}

TEST_F(BackendLogFileTest, doesNotGrowWhenItCannotBecomeTheOldOne) {
    ASSERT_TRUE(QDir().mkpath(earlier + u"/in the way"_s));
    const BackendLogFile::Outcome outcome = append(QByteArray("line\n").repeated(100));
    EXPECT_FALSE(outcome.problem.isEmpty());
    EXPECT_EQ(outcome.taken, read(path).size() - head.size());
    EXPECT_LE(read(path).size(), 200);
}

TEST_F(BackendLogFileTest, isBegunAnewWhenItIsGone) {
    append("=== a start\none\n");
    QFile::remove(path);
    append("two\n");
    EXPECT_EQ(read(path), head + "two\n");
}

TEST_F(BackendLogFileTest, saysHowMuchAFullDiskHasTaken) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &usual), 0);
    rlimit limit = usual;
    limit.rlim_cur = 100;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    const QByteArray lines = QByteArray("line\n").repeated(30);
    const BackendLogFile::Outcome outcome = append(lines);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &usual), 0);
    EXPECT_FALSE(outcome.problem.isEmpty());
    EXPECT_EQ(outcome.taken, 100 - head.size());
    EXPECT_EQ(append(lines.mid(outcome.taken)).problem, QString());
    EXPECT_EQ(read(path), head + lines);
}

} // namespace

} // namespace orv
