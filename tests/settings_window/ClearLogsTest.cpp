#include "BackendLog.h"
#include "DefaultsStore.h"
#include "FileJobs.h"
#include "LogCapture.h"
#include "SerialQueue.h"
#include "SettingsActions.h"
#include "SettingsFakes.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// The logs are cleared while a speech server says something.
class ClearLogs : public ::testing::Test {
  protected:
    /// Answers the question; true once both files are gone, or were for a moment.
    bool clear() {
        const qsizetype before = dialogs.alerts.size();
        actions.clearCache();
        dialogs.answer(0);
        return waitUntil([&] { return dialogs.alerts.size() == before + 2; }) &&
               dialogs.alerts.last().title == u"<alert.cache.done.title>";
    }

    /// The server says a number; on any thread.
    void say(int number) const {
        const QByteArray line = QByteArray::number(number) + '\n';
        log->write(line);
    }

    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Everything that was said is written.
    void finish() {
        log.reset();
        for (bool hasEnded = false; !hasEnded;) {
            const QByteArray before = read(path);
            disk.sync([] {});
            hasEnded = read(path) == before;
        }
    }

    /// The numbers in the lines of both files, the earlier one first.
    QList<int> numbers() const {
        QList<int> found;
        for (const QByteArray& line : QByteArray(read(earlier) + read(path)).split('\n')) {
            if (!line.isEmpty() && !line.startsWith("===")) {
                found.append(line.toInt());
            }
        }
        return found;
    }

    LogCapture program;
    QTemporaryDir home;
    const QString path = home.filePath(u"backend.log"_s);
    const QString earlier = home.filePath(u"backend.log.1"_s);
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, home.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
    AnsweredDialogs dialogs;
    FakeChooser chooser;
    FakeOpener opener;
    FileJobs files{disk};
    SettingsActions actions{ActionsEnvironment{.settings = settings,
                                               .files = files,
                                               .dialogs = dialogs,
                                               .chooser = chooser,
                                               .opener = opener,
                                               .text = bracketed,
                                               .supportFolder = home.path(),
                                               .outputFolder = home.path(),
                                               .backendLog = path,
                                               .earlierLog = earlier}};
    std::unique_ptr<BackendLog> log =
        std::make_unique<BackendLog>(disk, BackendLogFile(path, earlier, 2000));
};

TEST_F(ClearLogs, whatComesLaterBeginsANewFile) {
    for (int number = 1; number <= 1000; ++number) {
        say(number);
    }
    ASSERT_TRUE(waitUntil([this] { return numbers().value(numbers().size() - 1) == 1000; }));
    EXPECT_TRUE(QFile::exists(earlier));
    EXPECT_TRUE(clear());
    EXPECT_FALSE(QFile::exists(earlier));
    EXPECT_FALSE(QFile::exists(path));
    say(1001);
    finish();
    EXPECT_EQ(numbers(), QList<int>{1001});
}

TEST_F(ClearLogs, whatIsSaidMeanwhileIsDeletedOrKeptButInOneRow) {
    std::atomic<bool> goesOn = true;
    std::atomic<int> said = 0;
    std::thread server([&] {
        while (goesOn) {
            say(said + 1);
            if (++said % 20 == 0) {
                disk.sync([] {}); // So that all of it has room.
            }
        }
    });
    for (int round = 0; round < 20; ++round) {
        const int before = said;
        EXPECT_TRUE(waitUntil([&] { return said > before + 10; }));
        EXPECT_TRUE(clear());
    }
    goesOn = false;
    server.join();
    say(said + 1);
    finish();
    const QList<int> left = numbers();
    ASSERT_FALSE(left.isEmpty());
    EXPECT_EQ(left.last(), said + 1);
    for (qsizetype index = 1; index < left.size(); ++index) {
        ASSERT_EQ(left[index], left[index - 1] + 1);
    }
    EXPECT_TRUE(program.lines().filter(u"❌"_s).isEmpty());
}

} // namespace

} // namespace orv::test
