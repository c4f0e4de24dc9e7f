#include "LogQueue.h"
#include "StandardOutput.h"

#include <QString>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

using namespace Qt::StringLiterals;

namespace orv {

using test::Pipe;
using State = LogOutput::State;

namespace {

QByteArray leftOut(const char* what) {
    return "⚠️ Ausgabe wurde nicht gelesen - " + QByteArray(what) + " ausgelassen\n";
}

/// A line of which a pipe takes only the first part.
const QString longLine(300000, u'x');

class LogQueueTest : public testing::Test {
  protected:
    explicit LogQueueTest(std::size_t room = 10 * lineCost())
        : queue(room) {}

    static std::size_t lineCost() { return LogLine::make(u"line 0")->cost(); }

    void push(int number) { queue.push(LogLine::make(u"line %1"_s.arg(number))); }

    /// Everything that is waiting, once the queue was written out with the reader reading.
    QByteArray drained() {
        QByteArray all;
        ::fcntl(pipe.reader(), F_SETFL, O_NONBLOCK);
        while (queue.writeTo(output) == State::Full) {
            all += pipe.read();
        }
        return all + pipe.read();
    }

    static QByteArray lines(int from, int to) {
        QByteArray all;
        for (int number = from; number < to; ++number) {
            all += "line " + QByteArray::number(number) + '\n';
        }
        return all;
    }

    Pipe pipe;
    LogOutput output{pipe.writer()};
    LogQueue queue;
};

} // namespace

TEST_F(LogQueueTest, linesComeOutInTheirOrder) {
    for (int number = 0; number < 8; ++number) {
        push(number);
    }
    EXPECT_FALSE(queue.isEmpty());
    EXPECT_EQ(drained(), lines(0, 8));
    EXPECT_TRUE(queue.isEmpty());
}

TEST_F(LogQueueTest, theNewestLinesAreLeftOutAndCounted) {
    for (int number = 0; number < 15; ++number) {
        push(number % 10);
    }
    EXPECT_EQ(drained(), lines(0, 10).append(leftOut("5 Zeilen")));
}

TEST_F(LogQueueTest, oneLineIsOneLine) {
    for (int number = 0; number < 11; ++number) {
        push(number % 10);
    }
    EXPECT_EQ(drained(), lines(0, 10).append(leftOut("1 Zeile")));
}

TEST_F(LogQueueTest, theCountStandsWhereTheLinesAreMissing) {
    for (int number = 0; number < 12; ++number) {
        push(number % 10);
    }
    drained();
    push(1);
    EXPECT_EQ(drained(), lines(1, 2));
}

TEST_F(LogQueueTest, aLineLongerThanTheRoomIsTakenWhileItIsEmpty) {
    queue.push(LogLine::make(longLine)); // Longer than the room, and taken all the same.
    push(1);
    push(2);
    EXPECT_EQ(queue.writeTo(output), State::Full);
    EXPECT_TRUE(queue.isWithinLine());
    push(3);
    EXPECT_EQ(drained(), longLine.toUtf8().append('\n').append(leftOut("3 Zeilen")));
    EXPECT_FALSE(queue.isWithinLine());
    push(4);
    EXPECT_EQ(drained(), lines(4, 5));
}

TEST_F(LogQueueTest, aBrokenOutputTakesEverything) {
    pipe.closeReader();
    const auto handler = ::signal(SIGPIPE, SIG_IGN);
    for (int number = 0; number < 5; ++number) {
        push(number);
    }
    EXPECT_NE(queue.writeTo(output), State::Full);
    EXPECT_TRUE(queue.isEmpty());
    ::signal(SIGPIPE, handler);
}

TEST_F(LogQueueTest, wakesItsWriterForTheFirstLine) {
    queue.waitForWake(std::chrono::milliseconds(0));
    push(1);
    queue.waitForWake(std::chrono::milliseconds(-1));
    queue.noteWoken();
    push(2);
    queue.wakeWriter();
    queue.waitForWake(std::chrono::milliseconds(-1));
}

} // namespace orv
