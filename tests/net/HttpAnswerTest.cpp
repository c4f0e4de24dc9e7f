#include "HttpAnswer.h"

#include <QStringBuilder>

#include <gtest/gtest.h>

namespace orv::test {

namespace {

using State = HttpAnswer::State;

State after(const QByteArray& bytes) {
    HttpAnswer answer;
    return answer.read(bytes);
}

State afterEnd(const QByteArray& bytes) {
    HttpAnswer answer;
    answer.read(bytes);
    return answer.close();
}

TEST(HttpAnswer, isWholeOnceItsLengthHasCome) {
    EXPECT_EQ(after("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nab"), State::Reading);
    EXPECT_EQ(after("HTTP/1.1 200 OK\r\ncontent-length:3\r\n\r\nabc"), State::Whole);
    EXPECT_EQ(after("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"), State::Whole);
}

TEST(HttpAnswer, isWholeWhateverItsStatus) {
    for (const char* status : {"200", "302", "401", "404", "500", "999"}) {
        EXPECT_EQ(after(QByteArray("HTTP/1.1 ") + status + "\r\nContent-Length: 0\r\n\r\n"),
                  State::Whole)
            << status;
    }
}

TEST(HttpAnswer, withoutALengthItLastsUntilTheConnectionCloses) {
    EXPECT_EQ(after("HTTP/1.0 200 OK\r\n\r\nabc"), State::Reading);
    EXPECT_EQ(afterEnd("HTTP/1.0 200 OK\r\n\r\nabc"), State::Whole);
    EXPECT_EQ(afterEnd("HTTP/1.0 200 OK\r\n\r\n"), State::Whole);
}

TEST(HttpAnswer, needsNoContentWhereThereIsNone) {
    EXPECT_EQ(after("HTTP/1.1 204 No Content\r\n\r\n"), State::Whole);
    EXPECT_EQ(after("HTTP/1.1 304 Not Modified\r\nContent-Length: 9\r\n\r\n"), State::Whole);
}

TEST(HttpAnswer, followsChunksToTheLastOne) {
    const QByteArray chunks = "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, Chunked\r\n\r\n"
                              "A;x=y\r\n0123456789\r\n1\r\n\n\r\n0\r\nTrailer: t\r\n";
    EXPECT_EQ(after(chunks), State::Reading);
    EXPECT_EQ(after(chunks + "\r\n"), State::Whole);
    EXPECT_EQ(afterEnd(chunks), State::CutShort);
}

TEST(HttpAnswer, chunksCountMoreThanALength) {
    EXPECT_EQ(after("HTTP/1.1 200 OK\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n"
                    "2\r\nab\r\n"),
              State::Reading);
}

TEST(HttpAnswer, anyNumberOfChunksMayCome) {
    HttpAnswer answer;
    answer.read("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    for (int i = 0; i < 50000; ++i) {
        ASSERT_EQ(answer.read("1\r\nx\r\n"), State::Reading);
    }
    EXPECT_EQ(answer.read("0\r\n\r\n"), State::Whole);
}

TEST(HttpAnswer, passesOverInterimAnswers) {
    EXPECT_EQ(after("HTTP/1.1 100 Continue\r\nContent-Length: 0\r\n\r\n"), State::Reading);
    EXPECT_EQ(after("HTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\nHTTP/1.1 204 N\r\n\r\n"),
              State::Whole);
}

TEST(HttpAnswer, comesInPiecesOfAnySize) {
    const QByteArray bytes =
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n";
    HttpAnswer answer;
    for (qsizetype i = 0; i < bytes.size() - 1; ++i) {
        ASSERT_EQ(answer.read(QByteArrayView(bytes).sliced(i, 1)), State::Reading) << i;
    }
    EXPECT_EQ(answer.read(QByteArrayView(bytes).last(1)), State::Whole);
}

TEST(HttpAnswer, takesLinesThatEndInALineFeedOnly) {
    EXPECT_EQ(after("HTTP/1.1 200 OK\nContent-Length: 1\n\na"), State::Whole);
}

TEST(HttpAnswer, isCutShortByAnEarlyEnd) {
    EXPECT_EQ(afterEnd({}), State::CutShort);
    EXPECT_EQ(afterEnd("HTTP/1.1 200 OK\r\nContent-Le"), State::CutShort);
    EXPECT_EQ(afterEnd("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nab"), State::CutShort);
}

TEST(HttpAnswer, refusesWhatIsNotHttp) {
    for (const char* bytes :
         {"220 mail.example ESMTP\r\n", "\r\n", "HTTP/2.0 200 OK\r\n", "HTTP/1.1 20 OK\r\n",
          "HTTP/1.1 2000 OK\r\n", "HTTP/1.1 abc OK\r\n", "HTTP/1.1\r\n", "http/1.1 200 OK\r\n"}) {
        EXPECT_EQ(after(bytes), State::NotHttp) << bytes;
    }
}

TEST(HttpAnswer, refusesHeadsThatMakeNoSense) {
    for (const char* line :
         {"Content-Length: x", "Content-Length: -1", "Content-Length: +1",
          "Content-Length:", "Content-Length: 99999999999999999999", "no colon", ": no name"}) {
        EXPECT_EQ(after(QByteArray("HTTP/1.1 200 OK\r\n") + line + "\r\n\r\n"), State::NotHttp)
            << line;
    }
    for (const char* size : {"", "x", "-1", "ffffffffffffffffff"}) {
        EXPECT_EQ(after(QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n") + size +
                        "\r\n"),
                  State::NotHttp)
            << size;
    }
    EXPECT_EQ(after("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\nab\r\n"),
              State::NotHttp);
}

TEST(HttpAnswer, refusesAHeadThatDoesNotEnd) {
    HttpAnswer line;
    line.read("HTTP/1.1 200 OK\r\nX: ");
    EXPECT_EQ(line.read(QByteArray(HttpAnswer::maximumHead, 'x')), State::NotHttp);
    HttpAnswer lines;
    EXPECT_EQ(
        lines.read(QByteArray("HTTP/1.1 200 OK\r\n" + QByteArray("X: y\r\n").repeated(20000))),
        State::NotHttp);
    HttpAnswer interim;
    EXPECT_EQ(interim.read(QByteArray("HTTP/1.1 100 C\r\n\r\n").repeated(20000)), State::NotHttp);
}

TEST(HttpAnswer, staysWhatItIsOnceDecided) {
    HttpAnswer answer;
    answer.read("HTTP/1.1 204 N\r\n\r\nrubbish");
    EXPECT_EQ(answer.read("more"), State::Whole);
    EXPECT_EQ(answer.close(), State::Whole);
}

TEST(HttpAnswer, keepsNoContentUnlessItIsTold) {
    HttpAnswer answer;
    EXPECT_EQ(answer.read("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc"), State::Whole);
    EXPECT_EQ(answer.body(), QByteArray());
}

TEST(HttpAnswer, keepsStatusContentAndWhereItLeads) {
    HttpAnswer sized(10);
    sized.read("HTTP/1.1 302 F\r\nLOCATION:  /There \r\nContent-Length: 3\r\n\r\nab");
    EXPECT_EQ(sized.read("cde"), State::Whole);
    EXPECT_EQ(sized.status(), 302);
    EXPECT_EQ(headerIn(sized.headers(), "location"), "/There");
    EXPECT_EQ(sized.body(), "abc");
    HttpAnswer chunked(10);
    chunked.read("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1\r\nc\r\n");
    EXPECT_EQ(chunked.read("0\r\n\r\n"), State::Whole);
    EXPECT_EQ(chunked.body(), "abc");
    HttpAnswer untilClose(10);
    untilClose.read("HTTP/1.1 200 OK\r\n\r\nabc");
    EXPECT_EQ(untilClose.close(), State::Whole);
    EXPECT_EQ(untilClose.body(), "abc");
}

TEST(HttpAnswer, readsNoMoreContentThanItMay) {
    const QByteArray head = "HTTP/1.1 200 OK\r\n";
    for (const char* rest :
         {"Content-Length: 4\r\n\r\n", "Content-Length: 9223372036854775807\r\n\r\n", "\r\nabcd",
          "Transfer-Encoding: chunked\r\n\r\n2\r\nab\r\n2\r\n",
          "Transfer-Encoding: chunked\r\n\r\n2\r\nab\r\n7fffffffffffffff\r\n"}) {
        HttpAnswer answer(3);
        EXPECT_EQ(answer.read(QByteArray(head + rest)), State::TooLarge) << rest;
        EXPECT_LE(answer.body().size(), 4) << "one piece too much at most";
    }
    HttpAnswer fits(3);
    EXPECT_EQ(fits.read(QByteArray(head + "Content-Length: 3\r\n\r\nabc")), State::Whole);
}

TEST(HttpAnswer, saysWhetherTheConnectionCarriesAnother) {
    const auto leavesOpen = [](const QByteArray& bytes) {
        HttpAnswer answer;
        EXPECT_EQ(answer.read(bytes), State::Whole) << bytes.constData();
        return answer.leavesConnectionOpen();
    };
    EXPECT_TRUE(leavesOpen("HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\na"));
    EXPECT_TRUE(leavesOpen("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"));
    EXPECT_FALSE(leavesOpen("HTTP/1.0 200 OK\r\nContent-Length: 1\r\n\r\na"));
    EXPECT_FALSE(leavesOpen("HTTP/1.1 200 OK\r\nConnection: Close\r\nContent-Length: 1\r\n\r\na"));
    EXPECT_FALSE(leavesOpen("HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nabc")) << "what is that";
    HttpAnswer untilClose;
    untilClose.read("HTTP/1.1 200 OK\r\n\r\n");
    untilClose.close();
    EXPECT_FALSE(untilClose.leavesConnectionOpen());
}

} // namespace

} // namespace orv::test
