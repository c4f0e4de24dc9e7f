#include "DirectEngineTranscriptWriter.h"

#include "LogCapture.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

const QDateTime opened(QDate(2025, 3, 1), QTime(14, 30, 5), Qt::LocalTime);

QString contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

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

TEST_F(TranscriptWriter, writesEverythingAppendedBeforeItIsDestroyed) {
    auto writer = open();
    for (int index = 0; index < 500; ++index) {
        writer->append(QString::number(index), u"x"_s, opened);
    }
    writer.reset();
    EXPECT_EQ(txt().count(u"Original: "_s), 500);
    EXPECT_TRUE(srt().contains(u"\n500\n"_s));
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
