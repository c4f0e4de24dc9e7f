#include "DirectEngineTranscriptWriter.h"

#include "FewFiles.h"
#include "LogCapture.h"
#include "UniqueFd.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <thread>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

const QDateTime opened(QDate(2025, 3, 1), QTime(14, 30, 5));

QString contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// The local time of another place while it lives.
class TimeZone {
  public:
    explicit TimeZone(const QByteArray& name)
        : before_(qgetenv("TZ")) {
        qputenv("TZ", name);
        tzset();
    }

    ~TimeZone() {
        if (before_.isNull()) {
            qunsetenv("TZ");
        } else {
            qputenv("TZ", before_);
        }
        tzset();
    }

    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

  private:
    const QByteArray before_;
};

class TranscriptWriter : public testing::Test {
  protected:
    QString txt() const { return contentOf(folder + u"/transcript_20250301_143005.txt"_s); }

    QString srt() const { return contentOf(folder + u"/subtitles_20250301_143005.srt"_s); }

    std::shared_ptr<DirectEngineTranscriptWriter> open() {
        return DirectEngineTranscriptWriter::open(folder, u"en"_s, u"de"_s, opened);
    }

    test::LogCapture log;
    QTemporaryDir temporary;
    QString folder = temporary.filePath(u"a/b/output"_s);
};

TEST(SRTTime, truncatesToMilliseconds) {
    EXPECT_EQ(formatSRTTime(0), u"00:00:00,000"_s);
    EXPECT_EQ(formatSRTTime(0.25), u"00:00:00,250"_s);
    EXPECT_EQ(formatSRTTime(3725.5), u"01:02:05,500"_s);
    EXPECT_EQ(formatSRTTime(1.9999), u"00:00:01,999"_s);
    EXPECT_EQ(formatSRTTime(0.001), u"00:00:00,001"_s);
    EXPECT_EQ(formatSRTTime(4.035), u"00:00:04,035"_s);
}

TEST(SRTTime, countsNegativeTimesAsZeroAndHoursWithoutLimit) {
    EXPECT_EQ(formatSRTTime(-3), u"00:00:00,000"_s);
    EXPECT_EQ(formatSRTTime(360000), u"100:00:00,000"_s);
}

TEST_F(TranscriptWriter, writesBothHeadsWhenOpened) {
    const auto writer = open();
    ASSERT_TRUE(writer);
    EXPECT_EQ(txt(), u"Live Audio Translation\nSession: 2025-03-01 14:30:05\nSource: en\n"
                     u"Target: de\n"_s +
                         QString(60, u'=') + u"\n\n"_s);
    EXPECT_EQ(srt(), QString());
    EXPECT_TRUE(log.containsStart(u"💾 DirectEngineTranscriptWriter: "_s));
}

TEST_F(TranscriptWriter, stampsAnEntryAQuarterSecondAfterOpening) {
    const auto writer = open();
    const QDateTime moment = opened.addMSecs(250);
    writer->append(u"Hello"_s, u"Hallo"_s, moment);
    writer->close();
    EXPECT_TRUE(txt().endsWith(u"["_s + moment.toUTC().toString(u"yyyy-MM-ddTHH:mm:ss.zzz"_s) +
                               u"Z]\nOriginal: Hello\nTranslation: Hallo\n\n"_s));
    EXPECT_EQ(srt(), u"1\n00:00:00,250 --> 00:00:03,250\nHello\nHallo\n\n"_s);
}

TEST_F(TranscriptWriter, letsCuesOverlap) {
    const auto writer = open();
    writer->append(u"a"_s, u"b"_s, opened.addMSecs(1000));
    writer->append(u"c"_s, u"d"_s, opened.addMSecs(2000));
    writer->close();
    EXPECT_EQ(srt(), u"1\n00:00:01,000 --> 00:00:04,000\na\nb\n\n"
                     u"2\n00:00:02,000 --> 00:00:05,000\nc\nd\n\n"_s);
}

TEST_F(TranscriptWriter, writesAnEmptyTranslationAsAnEmptyLine) {
    const auto writer = open();
    writer->append(u"Hello"_s, QString(), opened);
    writer->close();
    EXPECT_TRUE(txt().endsWith(u"Original: Hello\nTranslation: \n\n"_s));
    EXPECT_TRUE(srt().endsWith(u"\nHello\n\n\n"_s));
}

TEST_F(TranscriptWriter, stampsAnEntryMoreThanAnHourAfterOpening) {
    const auto writer = open();
    writer->append(u"Hello"_s, u"Hallo"_s, opened.addMSecs(3'725'500));
    writer->close();
    EXPECT_EQ(srt(), u"1\n01:02:05,500 --> 01:02:08,500\nHello\nHallo\n\n"_s);
}

TEST_F(TranscriptWriter, aChangeOfTheTimeZoneInMidRunShiftsNothing) {
    constexpr qint64 began = 1'760'000'000'000; // Milliseconds since 1970.
    const TimeZone home("UTC0");
    const auto writer = DirectEngineTranscriptWriter::open(folder, u"en"_s, u"de"_s,
                                                           QDateTime::fromMSecsSinceEpoch(began));
    ASSERT_TRUE(writer);
    const TimeZone abroad("EAST-9");
    writer->append(u"Hello"_s, u"Hallo"_s, QDateTime::fromMSecsSinceEpoch(began + 250));
    writer->close();
    const QString file = QDir(folder).entryList({u"*.srt"_s}).value(0);
    EXPECT_EQ(contentOf(folder + u'/' + file),
              u"1\n00:00:00,250 --> 00:00:03,250\nHello\nHallo\n\n"_s);
}

// To the writer it looks as if the clock had been set forth by years since it was opened.
TEST_F(TranscriptWriter, countsTheTimesOfCuesByAClockThatNobodySets) {
    const auto writer = open();
    ASSERT_TRUE(writer);
    writer->append(u"Hello"_s, u"Hallo"_s);
    writer->close();
    EXPECT_TRUE(srt().startsWith(u"1\n00:"_s)) << srt().toStdString();
    EXPECT_FALSE(txt().contains(u"\n[2025-03-01T"_s)); // A stamp is the clock's.
}

TEST_F(TranscriptWriter, namesFilesAndSessionByLocalTimeAndStampsEntriesInUtc) {
    const TimeZone zone("EAST-9"); // Nine hours before UTC, the whole year.
    const QDateTime moment(QDate(2025, 3, 1), QTime(5, 30, 5), QTimeZone::utc());
    const auto writer = DirectEngineTranscriptWriter::open(folder, u"en"_s, u"de"_s, moment);
    writer->append(u"Hello"_s, u"Hallo"_s, moment.addMSecs(250));
    writer->close();
    EXPECT_TRUE(txt().contains(u"\nSession: 2025-03-01 14:30:05\n"_s));
    EXPECT_TRUE(txt().contains(u"[2025-03-01T05:30:05.250Z]\n"_s));
    EXPECT_EQ(srt(), u"1\n00:00:00,250 --> 00:00:03,250\nHello\nHallo\n\n"_s);
}

TEST_F(TranscriptWriter, replacesTheFilesOfASessionOpenedInTheSameSecond) {
    const auto first = open();
    first->append(u"first"_s, u"erste"_s, opened);
    first->close();
    const auto second = open();
    second->append(u"second"_s, u"zweite"_s, opened);
    second->close();
    EXPECT_FALSE(txt().contains(u"first"_s));
    EXPECT_EQ(txt().count(u"Session: "_s), 1);
    EXPECT_TRUE(txt().endsWith(u"Original: second\nTranslation: zweite\n\n"_s));
    EXPECT_EQ(srt(), u"1\n00:00:00,000 --> 00:00:03,000\nsecond\nzweite\n\n"_s);
}

TEST_F(TranscriptWriter, writesEverythingAppendedBeforeItIsClosed) {
    auto writer = open();
    for (int index = 0; index < 500; ++index) {
        writer->append(QString::number(index), u"x"_s, opened);
    }
    writer->close();
    writer.reset();
    EXPECT_EQ(txt().count(u"Original: "_s), 500);
    EXPECT_TRUE(srt().contains(u"\n500\n"_s));
}

// The subtitle file is a pipe that nobody empties for a while, so that the first entry's write is
// under way when the writer is released, and the second one waits.
TEST_F(TranscriptWriter, releasedDuringAWriteFinishesItAndWritesNothingThatWaits) {
    ASSERT_TRUE(QDir().mkpath(folder));
    const QByteArray pipe = QFile::encodeName(folder + u"/subtitles_20250301_143005.srt"_s);
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    const UniqueFd reader(::open(pipe.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    ASSERT_TRUE(reader.isOpen());
    auto writer = open();
    ASSERT_TRUE(writer);
    writer->append(u"first"_s, QString(1 << 20, u'x'), opened);
    ASSERT_TRUE(test::waitUntil([this] { return txt().contains(u"Original: first"_s); }));
    writer->append(u"second"_s, u"waits"_s, opened);
    const std::weak_ptr<DirectEngineTranscriptWriter> released = writer;
    std::thread release([last = std::move(writer)]() mutable { last.reset(); });
    EXPECT_TRUE(test::waitUntil([&released] { return released.expired(); }));
    QByteArray cues;
    std::array<char, 65536> block;
    while (!cues.endsWith("\n\n")) {
        const ssize_t taken = ::read(reader.get(), block.data(), block.size());
        if (taken == 0) {
            break;
        }
        cues.append(block.data(), std::max<ssize_t>(taken, 0));
    }
    release.join();
    EXPECT_TRUE(cues.contains("first"));
    EXPECT_FALSE(txt().contains(u"second"_s));
}

TEST_F(TranscriptWriter, ignoresEntriesAfterClosing) {
    const auto writer = open();
    writer->close();
    writer->append(u"late"_s, u"late"_s, opened);
    writer->close();
    EXPECT_FALSE(txt().contains(u"late"_s));
}

TEST_F(TranscriptWriter, saysSoWhenTheFolderCannotBeMade) {
    QFile obstacle(temporary.filePath(u"a"_s));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    EXPECT_FALSE(open());
    EXPECT_TRUE(log.containsStart(
        u"❌ DirectEngineTranscriptWriter: outputDir konnte nicht erstellt werden: "_s));
}

TEST_F(TranscriptWriter, saysSoWhenAFileCannotBeMade) {
    ASSERT_TRUE(QDir().mkpath(folder + u"/subtitles_20250301_143005.srt"_s));
    EXPECT_FALSE(open());
    EXPECT_TRUE(log.contains(u"❌ DirectEngineTranscriptWriter: Datei-Erstellung fehlgeschlagen"_s));
}

TEST_F(TranscriptWriter, saysSoWhenAFileCannotBeOpenedForWriting) {
    // The sanitizers open files of their own where they see a type for the first time.
    ASSERT_TRUE(open());
    const test::FewFiles oneIsEnoughToMakeThem(1);
    EXPECT_FALSE(open());
    EXPECT_TRUE(
        log.contains(u"❌ DirectEngineTranscriptWriter: FileHandle konnte nicht geöffnet werden"_s));
}

TEST_F(TranscriptWriter, costsOneLineWhileTheDiskIsFull) {
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QFile::link(u"/dev/full"_s, folder + u"/subtitles_20250301_143005.srt"_s));
    const auto writer = open();
    ASSERT_TRUE(writer);
    writer->append(u"one"_s, u"1"_s, opened);
    writer->append(u"two"_s, u"2"_s, opened);
    writer->close();
    EXPECT_TRUE(txt().contains(u"Original: two"_s));
    const QString start = u"❌ DirectEngineTranscriptWriter: Schreiben fehlgeschlagen"_s;
    EXPECT_EQ(log.lines().filter(start).size(), 1);
}

/// Lets no file of this process grow beyond `bytes`, as a disk that fills up does: a write takes
/// what still fits.
void limitFiles(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    limit.rlim_cur = bytes;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

TEST_F(TranscriptWriter, leavesNoPartOfAnEntryOnADiskThatFillsUp) {
    const auto writer = open();
    writer->append(u"one"_s, u"1"_s, opened);
    const QString entry = transcriptEntry(u"one"_s, u"1"_s, opened);
    const auto whole =
        static_cast<rlim_t>(transcriptHeader(u"en"_s, u"de"_s, opened).size() + entry.size());
    limitFiles(whole + 20);
    writer->append(u"two"_s, u"2"_s, opened);
    writer->append(u"three"_s, u"3"_s, opened);
    writer->close();
    limitFiles(RLIM_INFINITY);
    EXPECT_EQ(txt(), transcriptHeader(u"en"_s, u"de"_s, opened) + entry);
}

TEST_F(TranscriptWriter, numbersTheCuesThatAreInTheFile) {
    const auto writer = open();
    limitFiles(0);
    writer->append(u"one"_s, u"1"_s, opened);
    const QString start = u"❌ DirectEngineTranscriptWriter: Schreiben fehlgeschlagen"_s;
    ASSERT_TRUE(test::waitUntil([&] { return log.lines().filter(start).size() == 2; }));
    limitFiles(RLIM_INFINITY);
    writer->append(u"two"_s, u"2"_s, opened);
    writer->close();
    EXPECT_EQ(srt(), subtitleCue(1, 0, u"two"_s, u"2"_s));
}

TEST_F(TranscriptWriter, goesOnWhenTheDiskHasRoomAgain) {
    const auto writer = open();
    const rlim_t head = static_cast<rlim_t>(transcriptHeader(u"en"_s, u"de"_s, opened).size());
    limitFiles(head + 20);
    writer->append(u"one"_s, u"1"_s, opened);
    const QString start = u"❌ DirectEngineTranscriptWriter: Schreiben fehlgeschlagen"_s;
    ASSERT_TRUE(test::waitUntil([&] { return log.lines().filter(start).size() == 1; }));
    limitFiles(RLIM_INFINITY);
    writer->append(u"two"_s, u"2"_s, opened);
    writer->close();
    EXPECT_EQ(txt(), transcriptHeader(u"en"_s, u"de"_s, opened) +
                         transcriptEntry(u"two"_s, u"2"_s, opened));
    EXPECT_TRUE(srt().endsWith(subtitleCue(2, 0, u"two"_s, u"2"_s)));
}

} // namespace
} // namespace orv
