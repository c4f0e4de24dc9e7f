#include "DownloadOutput.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(DownloadOutput, percentagesAreNoWordsForPeople) {
    DownloadOutput output;
    EXPECT_EQ(output.percent(), std::nullopt);
    output.take("out of luck\nprogress 0\nprogress 37\n");
    EXPECT_EQ(output.percent(), 37);
    EXPECT_EQ(output.lastLine(), u"out of luck"_s);
    output.take("progress 12\n");
    EXPECT_EQ(output.percent(), 12);
}

TEST(DownloadOutput, whatIsNoPercentageIsALine) {
    for (const char* line : {"progress 101", "progress -1", "progress x", "progress "}) {
        DownloadOutput output;
        output.take(QByteArray(line) + '\n');
        EXPECT_EQ(output.percent(), std::nullopt);
        EXPECT_EQ(output.lastLine(), QString::fromLatin1(line).trimmed());
    }
}

TEST(DownloadOutput, notesAreGivenBackOnce) {
    DownloadOutput output;
    EXPECT_EQ(output.take("note one\nwhat\nnote t"), QStringList(u"one"_s));
    EXPECT_EQ(output.take("wo\nnote \xc3\xbc"), QStringList(u"two"_s));
    EXPECT_EQ(output.take("ber\n"), QStringList(u"über"_s));
    EXPECT_EQ(output.lastLine(), u"what"_s);
}

TEST(DownloadOutput, piecesMayEndAnywhere) {
    const QByteArray all = "progress 5\nnote here\nfailed\r\nprogress 61\n";
    for (qsizetype cut = 0; cut <= all.size(); ++cut) {
        DownloadOutput output;
        QStringList notes = output.take(all.left(cut));
        notes += output.take(all.mid(cut));
        EXPECT_EQ(notes, QStringList(u"here"_s));
        EXPECT_EQ(output.percent(), 61);
        EXPECT_EQ(output.lastLine(), u"failed"_s);
    }
}

TEST(DownloadOutput, theLastLineNeedsNoEnd) {
    DownloadOutput output;
    output.take("one\n 10%|#   |\r 50%|##  |\r");
    EXPECT_EQ(output.lastLine(), u"50%|## |"_s);
    output.take("\n \nkilled");
    EXPECT_EQ(output.lastLine(), u"killed"_s);
}

TEST(DownloadOutput, aLineWithoutEndTakesNoMemory) {
    DownloadOutput output;
    for (int piece = 0; piece < 100; ++piece) {
        output.take(QByteArray(100000, 'a'));
    }
    EXPECT_EQ(output.lastLine().size(), 300);
    output.take("\nprogress 3\n");
    EXPECT_EQ(output.percent(), 3);
}

} // namespace

} // namespace orv::test
