#include "ApplicationIdentity.h"
#include "DesktopEntries.h"
#include "DesktopEntry.h"
#include "RunningAppScanner.h"
#include "SerialQueue.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>

namespace {

using namespace Qt::StringLiterals;
using orv::applicationOf;
using orv::belongsTo;
using orv::DesktopEntries;
using orv::DesktopEntry;
using orv::parseDesktopEntry;
using orv::PulsePlayback;
using orv::RunningApp;
using testing::ElementsAre;

constexpr qint64 self = 77;

PulsePlayback playback(const QString& id, const QString& name, const QString& binary,
                       qint64 process = 1) {
    PulsePlayback result;
    result.applicationId = id;
    result.applicationName = name;
    result.binary = binary;
    result.processId = process;
    return result;
}

TEST(ApplicationIdentity, isTheApplicationIdentifierElseTheProgram) {
    EXPECT_EQ(applicationOf(playback(u"org.player"_s, u"Player"_s, u"player-bin"_s), self),
              (RunningApp{u"org.player"_s, u"Player"_s}));
    EXPECT_EQ(applicationOf(playback({}, u"Player"_s, u"player-bin"_s), self),
              (RunningApp{u"player-bin"_s, u"Player"_s}));
    EXPECT_EQ(applicationOf(playback({}, {}, u"player-bin"_s), self),
              (RunningApp{u"player-bin"_s, u"player-bin"_s}));
}

TEST(ApplicationIdentity, aStreamWithoutEitherIsNoApplication) {
    EXPECT_FALSE(applicationOf(playback({}, u"Nameless"_s, {}), self));
    EXPECT_FALSE(belongsTo(playback({}, u"Nameless"_s, {}), {}, self));
}

TEST(ApplicationIdentity, thisProgramIsNeverListedNorCaptured) {
    const PulsePlayback own = playback(u"orvane"_s, u"Orvane"_s, u"orvane"_s, self);
    EXPECT_FALSE(applicationOf(own, self));
    EXPECT_FALSE(belongsTo(own, u"orvane"_s, self));
}

TEST(ApplicationIdentity, aStreamIsFoundByEitherName) {
    const PulsePlayback stream = playback(u"org.player"_s, u"Player"_s, u"player-bin"_s);
    EXPECT_TRUE(belongsTo(stream, u"org.player"_s, self));
    EXPECT_TRUE(belongsTo(stream, u"player-bin"_s, self));
    EXPECT_FALSE(belongsTo(stream, u"Player"_s, self));
    EXPECT_FALSE(belongsTo(stream, u"other"_s, self));
}

TEST(DesktopEntryFile, tellsNameAndProgramOfTheMainGroup) {
    EXPECT_EQ(parseDesktopEntry("# a comment\n[Desktop Entry]\nType=Application\nName=Web\n"
                                "Name[de]=Netz\nExec=/usr/bin/web --new %u\n"
                                "[Desktop Action x]\nName=Other\nExec=other\n"),
              (DesktopEntry{u"Web"_s, u"web"_s}));
}

TEST(DesktopEntryFile, passesOverEnvironmentAndQuotes) {
    EXPECT_EQ(parseDesktopEntry("[Desktop Entry]\nType=Application\nName=A\n"
                                "Exec=env LANG=C \"/opt/my apps/player\" %f\n"),
              (DesktopEntry{u"A"_s, u"player"_s}));
}

TEST(DesktopEntryFile, whatIsHiddenOrIncompleteOrNoApplicationIsNotOne) {
    const QByteArray whole = "[Desktop Entry]\nType=Application\nName=A\nExec=a\n";
    EXPECT_TRUE(parseDesktopEntry(whole));
    EXPECT_FALSE(parseDesktopEntry(whole + "NoDisplay=true\n"));
    EXPECT_FALSE(parseDesktopEntry(whole + "Hidden=true\n"));
    EXPECT_FALSE(parseDesktopEntry(whole + "Terminal=true\n"));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Link\nName=A\nExec=a\n"));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Application\nName=A\n"));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Application\nExec=a\n"));
    EXPECT_FALSE(parseDesktopEntry("Type=Application\nName=A\nExec=a\n"));
    EXPECT_FALSE(parseDesktopEntry(QByteArray("\xff\x00[=]\n[", 6)));
}

/// A machine's folders, made up.
class RunningAppsTest : public testing::Test {
  protected:
    void run(int process, const QString& program) {
        const QString path = folder.filePath(u"proc/"_s + QString::number(process));
        ASSERT_TRUE(QDir().mkpath(path));
        ASSERT_TRUE(QFile::link(program, path + u"/exe"));
    }

    void install(const QString& where, const QString& file, const QByteArray& name,
                 const QByteArray& exec) {
        ASSERT_TRUE(QDir().mkpath(folder.filePath(where)));
        QFile entry(folder.filePath(where + u'/' + file));
        ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
        entry.write("[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n");
    }

    orv::RunningAppPlaces places() const {
        orv::RunningAppPlaces result;
        result.processes = folder.filePath(u"proc"_s);
        result.applications = {folder.filePath(u"mine"_s), folder.filePath(u"everyones"_s)};
        result.ownProcess = 3;
        return result;
    }

    QTemporaryDir folder;
    DesktopEntries entries{places().applications};
};

TEST_F(RunningAppsTest, areTheRunningProgramsWithADesktopEntrySortedAndOnce) {
    run(1, u"/usr/bin/web"_s);
    run(2, u"/usr/bin/web"_s);
    run(3, u"/usr/bin/orvane"_s);
    run(4, u"/usr/bin/shell"_s);
    run(5, u"/opt/alpha/alpha"_s);
    install(u"everyones"_s, u"web.desktop"_s, "Web", "web %u");
    install(u"everyones"_s, u"orvane.desktop"_s, "Orvane", "orvane");
    install(u"everyones"_s, u"alpha.desktop"_s, "alpha", "/opt/alpha/alpha");
    install(u"everyones"_s, u"asleep.desktop"_s, "Asleep", "asleep");
    install(u"mine"_s, u"web.desktop"_s, "My Web", "web %u");
    EXPECT_THAT(orv::scanRunningApps(places(), entries),
                ElementsAre(RunningApp{u"alpha"_s, u"alpha"_s}, RunningApp{u"web"_s, u"My Web"_s}));
}

TEST_F(RunningAppsTest, missingFoldersAreEmptyLists) {
    EXPECT_THAT(orv::scanRunningApps(places(), entries), testing::IsEmpty());
}

TEST_F(RunningAppsTest, theScanAnswersLaterAndNotToWhoIsGone) {
    run(1, u"/usr/bin/web"_s);
    install(u"mine"_s, u"web.desktop"_s, "Web", "web");
    orv::SerialQueue disk(u"test.disk"_s);
    orv::RunningAppScanner scanner(disk, places());
    auto gone = std::make_unique<QObject>();
    QObject here;
    bool goneCalled = false;
    QList<RunningApp> found;
    scanner.scan(gone.get(), [&](const auto&) { goneCalled = true; });
    scanner.scan(&here, [&](const QList<RunningApp>& apps) { found = apps; });
    EXPECT_TRUE(found.isEmpty());
    gone.reset();
    ASSERT_TRUE(orv::test::waitUntil([&] { return !found.isEmpty(); }));
    EXPECT_EQ(found.first().name, u"Web"_s);
    EXPECT_FALSE(goneCalled);
}

TEST_F(RunningAppsTest, whoAsksMeanwhileSharesALook) {
    run(1, u"/usr/bin/web"_s);
    install(u"mine"_s, u"web.desktop"_s, "Web", "web");
    orv::SerialQueue disk(u"test.disk"_s);
    orv::RunningAppScanner scanner(disk, places());
    std::promise<void> disksTurn;
    disk.post([&] { disksTurn.get_future().wait(); });
    QObject here;
    int answers = 0;
    for (int turn = 0; turn < 10; ++turn) {
        for (int question = 0; question < 3; ++question) {
            scanner.scan(&here, [&](const QList<RunningApp>& apps) {
                answers += static_cast<int>(apps.size());
            });
        }
        orv::test::drainEvents();
    }
    EXPECT_EQ(scanner.looks(), 1);
    EXPECT_EQ(answers, 0);
    disksTurn.set_value();
    ASSERT_TRUE(orv::test::waitUntil([&] { return answers == 30; }));
    EXPECT_EQ(scanner.looks(), 2) << "one for the first turn, one for all others";
}

TEST_F(RunningAppsTest, desktopEntriesAreReadAgainOnlyWhenTheyHaveChanged) {
    run(1, u"/usr/bin/web"_s);
    run(2, u"/usr/bin/player"_s);
    install(u"mine"_s, u"web.desktop"_s, "Web", "web");
    install(u"mine"_s, u"player.desktop"_s, "Player", "player");
    orv::scanRunningApps(places(), entries);
    EXPECT_EQ(entries.filesRead(), 2);
    orv::scanRunningApps(places(), entries);
    EXPECT_EQ(entries.filesRead(), 2);
    install(u"mine"_s, u"web.desktop"_s, "The Web", "web");
    EXPECT_THAT(
        orv::scanRunningApps(places(), entries),
        ElementsAre(RunningApp{u"player"_s, u"Player"_s}, RunningApp{u"web"_s, u"The Web"_s}));
    EXPECT_EQ(entries.filesRead(), 3);
    ASSERT_TRUE(QFile::remove(folder.filePath(u"mine/player.desktop"_s)));
    EXPECT_THAT(orv::scanRunningApps(places(), entries),
                ElementsAre(RunningApp{u"web"_s, u"The Web"_s}));
}

TEST_F(RunningAppsTest, aScannerThatIsGoneAnswersNobody) {
    orv::SerialQueue disk(u"test.disk"_s);
    QObject here;
    bool isCalled = false;
    {
        orv::RunningAppScanner scanner(disk, places());
        scanner.scan(&here, [&](const auto&) { isCalled = true; });
    }
    disk.sync([] {});
    orv::test::drainEvents();
    EXPECT_FALSE(isCalled);
}

} // namespace
