#include "PcmToWav.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

std::uint32_t number(const QByteArray& bytes, qsizetype offset) {
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

TEST(PcmToWav, describesASecondAt48Kilohertz) {
    QByteArray pcm(96000, '\0');
    pcm[0] = 'a';
    pcm[95999] = 'z';
    const QByteArray wav = pcmToWAV(pcm, 48000);
    ASSERT_EQ(wav.size(), 96044);
    EXPECT_EQ(wav.left(4), "RIFF");
    EXPECT_EQ(number(wav, 4), 96036U);
    EXPECT_EQ(wav.mid(8, 8), "WAVEfmt ");
    EXPECT_EQ(number(wav, 16), 16U);
    EXPECT_EQ(wav.mid(20, 4), QByteArray("\1\0\1\0", 4));
    EXPECT_EQ(number(wav, 24), 48000U);
    EXPECT_EQ(number(wav, 28), 96000U);
    EXPECT_EQ(wav.mid(32, 4), QByteArray("\2\0\x10\0", 4));
    EXPECT_EQ(wav.mid(36, 4), "data");
    EXPECT_EQ(number(wav, 40), 96000U);
    EXPECT_EQ(wav.mid(44), pcm);
}

TEST(PcmToWav, fillsItsFieldsToTheLimit) {
    const auto largest = std::numeric_limits<std::uint32_t>::max();
    EXPECT_EQ(number(waveHeader(largest - 36, 48000), 4), largest);
    EXPECT_EQ(number(waveHeader(0, largest / 2), 28), largest - 1);
}

TEST(PcmToWavDeathTest, endsTheProgramBeyondTheLimit) {
    const std::int64_t largest = std::numeric_limits<std::uint32_t>::max();
    EXPECT_DEATH(waveHeader(largest - 35, 48000), "a wave file cannot hold");
    EXPECT_DEATH(waveHeader(0, largest / 2 + 1), "a wave file cannot hold");
    EXPECT_DEATH(waveHeader(0, -1), "a wave file cannot hold");
}

QString soxi(const QString& option, const QString& path) {
    QProcess process;
    process.start(u"soxi"_s, {option, path});
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

TEST(PcmToWav, isAWaveFileToAnotherProgram) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"chunk.wav"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(pcmToWAV(QByteArray(96000, 'x'), 48000));
    file.close();
    EXPECT_EQ(soxi(u"-t"_s, file.fileName()), u"wav"_s);
    EXPECT_EQ(soxi(u"-r"_s, file.fileName()), u"48000"_s);
    EXPECT_EQ(soxi(u"-c"_s, file.fileName()), u"1"_s);
    EXPECT_EQ(soxi(u"-b"_s, file.fileName()), u"16"_s);
    EXPECT_EQ(soxi(u"-s"_s, file.fileName()), u"48000"_s);
    EXPECT_EQ(soxi(u"-e"_s, file.fileName()), u"Signed Integer PCM"_s);
}

} // namespace
} // namespace orv
