#include "BackendLog.h"
#include "LogCapture.h"
#include "SerialQueue.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class BackendLogTest : public ::testing::Test {
  protected:
    ~BackendLogTest() override {
        goOn();
        finish();
    }

    void open(const BackendLog::Limits& limits = {}) {
        log = std::make_unique<BackendLog>(*disk, BackendLogFile(path, path + u".1"_s), limits);
    }

    /// A disk that does nothing until `goOn`.
    void hold() {
        isHeld_ = true;
        disk->post([gate = gate_.get_future().share()] { gate.wait(); });
    }

    void goOn() {
        if (std::exchange(isHeld_, false)) {
            gate_.set_value();
        }
    }

    /// Everything that was handed over is written, or refused, when this returns.
    void finish() {
        log.reset();
        disk.reset();
    }

    QByteArray content() const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    bool waitForContent(const QByteArray& part) const {
        return waitUntil([&] { return content().contains(part); });
    }

    qsizetype refusals() const {
        return program.lines().filter(u"❌ Backend-Protokoll nicht geschrieben ("_s + path).size();
    }

    /// In the place of the file there is something that none can be made of.
    void obstruct() const { ASSERT_TRUE(QDir().mkdir(path)); }

    void clear() const { ASSERT_TRUE(QDir().rmdir(path)); }

    LogCapture program;
    QTemporaryDir folder;
    const QString path = folder.filePath(u"backend.log"_s);
    std::unique_ptr<SerialQueue> disk = std::make_unique<SerialQueue>(u"test.disk"_s);
    std::unique_ptr<BackendLog> log;

  private:
    std::promise<void> gate_;
    bool isHeld_ = false;
};

TEST_F(BackendLogTest, recordsEachStartAndWhatFollows) {
    open();
    log->begin(u"/usr/bin/one x"_s);
    log->write("said");
    log->write(" one");
    log->begin(u"/usr/bin/two"_s);
    log->write("said two\n");
    finish();
    const QString time = u"[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} UTC"_s;
    const QRegularExpression expected(u"^=== "_s + time +
                                      u" - Start: /usr/bin/one x\nsaid one\n\n=== "_s + time +
                                      u" - Start: /usr/bin/two\nsaid two\n$"_s);
    EXPECT_TRUE(expected.match(QString::fromUtf8(content())).hasMatch()) << content().constData();
    EXPECT_TRUE(program.lines().isEmpty());
}

TEST_F(BackendLogTest, aLaterProgramAddsToTheSameFile) {
    open();
    log->begin(u"first"_s);
    log->write("no line feed");
    finish();
    disk = std::make_unique<SerialQueue>(u"test.disk"_s);
    open();
    log->begin(u"second"_s);
    finish();
    EXPECT_TRUE(content().contains(" - Start: first\nno line feed\n=== ")) << content().constData();
    EXPECT_TRUE(content().endsWith(" - Start: second\n"));
}

TEST_F(BackendLogTest, nobodyWaitsForTheDiskAndWhatIsTooMuchIsCounted) {
    open({.backlog = 1000});
    hold();
    log->begin(u"flood"_s);
    for (int piece = 0; piece < 1000; ++piece) {
        log->write(QByteArray(1000, 'x'));
    }
    EXPECT_TRUE(content().isEmpty());
    goOn();
    ASSERT_TRUE(waitForContent(" Bytes ausgelassen\n"));
    const auto leftOut = QRegularExpression(u" - ([0-9]+) Bytes"_s)
                             .match(QString::fromUtf8(content()))
                             .captured(1)
                             .toInt();
    EXPECT_LT(content().count('x'), 1000);
    EXPECT_EQ(content().count('x') + leftOut, 1000000);
    log->write("later\n");
    finish();
    EXPECT_TRUE(content().endsWith(" Bytes ausgelassen\nlater\n")) << "it is taken in again";
}

TEST_F(BackendLogTest, othersGetTheirTurnBetweenThePieces) {
    open({.piece = 10});
    hold();
    log->write(QByteArray(100, 'x'));
    QByteArray meanwhile;
    disk->post([&] { meanwhile = content(); });
    goOn();
    finish();
    EXPECT_EQ(meanwhile.count('x'), 10);
    EXPECT_EQ(content().count('x'), 100);
}

TEST_F(BackendLogTest, aRefusalCostsOneLineForEachStartAndNothingIsLost) {
    obstruct();
    open({.retry = 1ms});
    log->begin(u"first"_s);
    ASSERT_TRUE(waitUntil([this] { return refusals() == 1; }));
    for (int number = 0; number < 20; ++number) {
        log->write("one\n");
        disk->sync([] {}); // Tries have their turn.
    }
    EXPECT_EQ(refusals(), 1);
    log->begin(u"second"_s);
    ASSERT_TRUE(waitUntil([this] { return refusals() == 2; }));
    log->write("two\n");
    disk->sync([] {});
    EXPECT_EQ(refusals(), 2);
    clear();
    EXPECT_TRUE(waitForContent("second\ntwo\n")) << "nobody needs to say anything more";
    EXPECT_EQ(content().count("one\n"), 20);
    finish();
    EXPECT_EQ(refusals(), 2);
}

TEST_F(BackendLogTest, aStartIsReasonToTryAgain) {
    obstruct();
    open({.retry = 1h});
    log->begin(u"first"_s);
    ASSERT_TRUE(waitUntil([this] { return refusals() == 1; }));
    clear();
    log->begin(u"second"_s);
    EXPECT_TRUE(waitForContent("second\n"));
    EXPECT_TRUE(content().contains("first\n"));
}

TEST_F(BackendLogTest, theEndIsReasonToTryAgain) {
    obstruct();
    open({.retry = 1h});
    log->write("last words\n");
    ASSERT_TRUE(waitUntil([this] { return refusals() == 1; }));
    clear();
    finish();
    EXPECT_TRUE(content().endsWith("last words\n"));
}

TEST_F(BackendLogTest, aDiskThatRefusesToTheEndHoldsNobodyUp) {
    obstruct();
    open({.backlog = 100, .retry = 1ms});
    for (int piece = 0; piece < 1000; ++piece) {
        log->write(QByteArray(100, 'x'));
    }
    finish();
    EXPECT_EQ(refusals(), 1);
}

TEST_F(BackendLogTest, aFileThatIsDeletedIsBegunAnew) {
    open();
    log->begin(u"server"_s);
    log->write("one\n");
    ASSERT_TRUE(waitForContent("one\n"));
    QFile::remove(path);
    log->write("two\n");
    finish();
    EXPECT_TRUE(content().startsWith("=== "));
    EXPECT_TRUE(content().endsWith(" - Fortsetzung\ntwo\n"));
}

} // namespace

} // namespace orv::test
