#include "OutputBacklog.h"

#include <gtest/gtest.h>

namespace orv {

namespace {

QByteArray leftOutLine(int count) {
    return "⚠️ Protokoll kam nicht nach - " + QByteArray::number(count) +
           " Bytes ausgelassen\n";
}

/// Everything that waits, taken in pieces of `most`.
QByteArray drained(OutputBacklog& backlog, qsizetype most = 7) {
    QByteArray all;
    while (!backlog.isEmpty()) {
        const QByteArray piece = backlog.front(most);
        EXPECT_LE(piece.size(), most);
        EXPECT_FALSE(piece.isEmpty());
        all += piece;
        backlog.drop(piece.size());
    }
    return all;
}

} // namespace

TEST(OutputBacklog, givesBackWhatCameInItsOrder) {
    OutputBacklog backlog(100);
    EXPECT_TRUE(backlog.isEmpty());
    backlog.add("one\ntw");
    backlog.add("o\n");
    EXPECT_EQ(drained(backlog), "one\ntwo\n");
}

TEST(OutputBacklog, whatWasNotDroppedIsGivenAgain) {
    OutputBacklog backlog(100);
    backlog.add("0123456789");
    EXPECT_EQ(backlog.front(4), "0123");
    backlog.drop(2);
    EXPECT_EQ(backlog.front(4), "2345");
}

TEST(OutputBacklog, leavesOutTheNewestAndSaysHowMuchInItsPlace) {
    OutputBacklog backlog(10);
    backlog.add("1234\n");
    backlog.add("5678\n9");
    backlog.add("0\n");
    EXPECT_EQ(backlog.front(100), "1234\n5678\n");
    EXPECT_EQ(drained(backlog, 100), "1234\n5678\n" + leftOutLine(3));
    backlog.add("later\n");
    EXPECT_EQ(drained(backlog), "later\n");
}

TEST(OutputBacklog, takesInAgainOnceHalfOfTheRoomIsFree) {
    OutputBacklog backlog(10);
    backlog.add("0123456789abc");
    backlog.drop(4);
    backlog.add("d");
    backlog.drop(1);
    EXPECT_EQ(drained(backlog), "56789\n" + leftOutLine(4));
    backlog.add("e");
    EXPECT_EQ(drained(backlog), "e");
}

TEST(OutputBacklog, linesOfOurOwnAlwaysFindRoomAndStandAlone) {
    OutputBacklog backlog(4);
    backlog.add("abcdefg");
    backlog.addLine("heading\n");
    EXPECT_EQ(drained(backlog), "abcd\n" + leftOutLine(3) + "heading\n");
}

TEST(OutputBacklog, staysBoundedHoweverMuchComes) {
    OutputBacklog backlog(1000);
    for (int piece = 0; piece < 1000; ++piece) {
        backlog.add(QByteArray(999, 'x'));
    }
    EXPECT_EQ(backlog.front(1000000).size(), 1000);
    EXPECT_EQ(drained(backlog, 1000), QByteArray(1000, 'x') + "\n" + leftOutLine(998000));
}

} // namespace orv
