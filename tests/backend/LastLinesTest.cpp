#include "LastLines.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QStringList linesOf(const QByteArray& output) {
    LastLines lines;
    lines.take(output);
    return lines.lines();
}

} // namespace

TEST(LastLines, areNoneOfNothing) {
    EXPECT_TRUE(linesOf("").isEmpty());
    EXPECT_TRUE(linesOf("\n \r\n\t\n").isEmpty());
    EXPECT_EQ(LastLines().lastWords(), QString());
}

TEST(LastLines, areTheLatestTen) {
    QByteArray output;
    QStringList expected;
    for (int number = 1; number <= 25; ++number) {
        output += "line " + QByteArray::number(number) + "\n\n";
        if (number > 15) {
            expected.append(u"line %1"_s.arg(number));
        }
    }
    EXPECT_EQ(linesOf(output), expected);
    EXPECT_EQ(linesOf(output + "no line feed").last(), u"no line feed"_s);
}

TEST(LastLines, doNotDependOnThePiecesInWhichTheyCome) {
    LastLines lines;
    for (const char byte : u"läuft 🛑\nein  Wort\n"_s.toUtf8()) {
        lines.take(QByteArrayView(&byte, 1));
    }
    EXPECT_EQ(lines.lines(), (QStringList{u"läuft 🛑"_s, u"ein  Wort"_s}));
}

TEST(LastLines, holdWhatATerminalWouldShowInTheEnd) {
    EXPECT_EQ(linesOf("one\r\ntwo\r\n"), (QStringList{u"one"_s, u"two"_s}));
    EXPECT_EQ(linesOf(" 10 %\r 90 %\r100 %\r"), QStringList{u"100 %"_s});
    EXPECT_EQ(linesOf("\x1b[1;31mred\x1b[0m\tand\x07 loud\n"), QStringList{u"red and  loud"_s});
}

TEST(LastLines, keepTheBeginningOfALongLine) {
    const QStringList lines = linesOf("Error: " + QByteArray(5000, 'x') + "\n");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0].size(), LastLines::longestLine + 1);
    EXPECT_TRUE(lines[0].startsWith(u"Error: x"));
    EXPECT_TRUE(lines[0].endsWith(u"x…"));
}

TEST(LastLines, doNotTearACharacterOutsideTheBasicPlane) {
    const QString text = QString(LastLines::longestLine - 1, u'x') + u"🛑🛑"_s;
    EXPECT_EQ(linesOf(text.toUtf8()).value(0),
              QString(QString(LastLines::longestLine - 1, u'x') + u'…'));
}

TEST(LastLines, aLineWithoutAnEndIsKnownToLackItsBeginning) {
    LastLines lines;
    for (int piece = 0; piece < 1000; ++piece) {
        lines.take(QByteArray(65536, 'x'));
    }
    ASSERT_EQ(lines.lines().size(), 1);
    EXPECT_TRUE(lines.lines().front().startsWith(u"…x"));
    lines.take("\nthe end\n");
    EXPECT_EQ(lines.lines().size(), 2);
    EXPECT_EQ(lines.lastWords(), u"the end"_s);
}

TEST(LastLines, holdLittleInWhateverPiecesMuchComes) {
    for (const qsizetype piece : {qsizetype(100), LastLines::kept, 5 * LastLines::kept}) {
        LastLines lines;
        for (int count = 0; count < 1000; ++count) {
            lines.take(QByteArray(piece, 'x'));
            ASSERT_LE(lines.size(), 2 * LastLines::kept);
        }
        EXPECT_GE(lines.size(), LastLines::kept);
    }
}

TEST(LastLines, aCutWithinACharacterLeavesNoPartOfIt) {
    LastLines lines;
    // Three bytes each, so that the cut falls within one.
    lines.take(u"…"_s.repeated(LastLines::kept).toUtf8());
    EXPECT_FALSE(lines.lines().value(0).contains(u'\ufffd'));
    EXPECT_TRUE(lines.lines().value(0).startsWith(u"……"));
}

TEST(LastLines, bytesThatAreNoTextAreReplaced) {
    EXPECT_EQ(linesOf(QByteArray("a\xff\xfe b\0c\n", 8)), QStringList{u"a\ufffd\ufffd b c"_s});
}

TEST(LastLines, theLastWordsAreWordsWithoutMargins) {
    LastLines lines;
    lines.take("Traceback\n    import x\n    ModuleNotFoundError: x  \n    ^^^^^^^^\n-----\n");
    EXPECT_EQ(lines.lastWords(), u"ModuleNotFoundError: x"_s);
    EXPECT_EQ(lines.lines().last(), u"-----"_s);
}

} // namespace orv
