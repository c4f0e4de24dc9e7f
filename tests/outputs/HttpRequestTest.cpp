#include "HttpRequest.h"

#include <QStringBuilder>

#include <gtest/gtest.h>

namespace orv {

TEST(HttpRequest, takesTheSecondWordOfTheFirstLine) {
    EXPECT_EQ(requestPath("GET /text HTTP/1.1\r\nHost: /other /path\r\n\r\n"), "/text");
}

TEST(HttpRequest, keepsTheQuery) {
    EXPECT_EQ(requestPath("GET /text?x=1 HTTP/1.1\r\n\r\n"), "/text?x=1");
}

TEST(HttpRequest, doesNotLookAtTheMethod) {
    EXPECT_EQ(requestPath("DELETE /text HTTP/1.1\r\n\r\n"), "/text");
    EXPECT_EQ(requestPath("\xC3\xA4 /text"), "/text");
}

TEST(HttpRequest, asksForThePageWithFewerThanTwoWords) {
    EXPECT_EQ(requestPath("GET\r\n\r\n"), "/");
    EXPECT_EQ(requestPath("GET \r\nHost: x\r\n\r\n"), "/");
    EXPECT_EQ(requestPath("\r\nGET /text HTTP/1.1\r\n\r\n"), "/");
}

TEST(HttpRequest, asksForThePageWithoutBytes) {
    EXPECT_EQ(requestPath(""), "/");
}

TEST(HttpRequest, asksForThePageWhenBytesAreNotUtf8) {
    EXPECT_EQ(requestPath("GET /text HTTP/1.1\r\nX: \xFF\r\n\r\n"), "/");
    EXPECT_EQ(requestPath("GET /text HTTP/1.1\r\nX: \xE2\x82"), "/") << "cut inside a character";
}

TEST(HttpRequest, takesTheWholeReadAsTheLineWhenItDoesNotEnd) {
    EXPECT_EQ(requestPath("GET /text"), "/text");
    EXPECT_EQ(requestPath("GET /te"), "/te");
    EXPECT_EQ(requestPath("GET /text\nHost: x"), "/text\nHost:") << "only CR LF ends the line";
}

TEST(HttpRequest, countsNoEmptyWords) {
    EXPECT_EQ(requestPath("  GET   /text   HTTP/1.1\r\n"), "/text");
}

TEST(HttpRequest, isWholeWhenTheHeadEndsAndAnnouncesNoBody) {
    EXPECT_TRUE(isWholeRequest("GET / HTTP/1.1\r\nHost: x\r\n\r\n"));
}

TEST(HttpRequest, isNotWholeWhileMoreMayCome) {
    EXPECT_FALSE(isWholeRequest("G"));
    EXPECT_FALSE(isWholeRequest("GET / HTTP/1.1\r\nHost: x\r\n"));
    EXPECT_FALSE(isWholeRequest("POST / HTTP/1.1\r\ncontent-LENGTH: 5\r\n\r\n"));
    EXPECT_FALSE(isWholeRequest("POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"));

    QByteArray full = "GET / HTTP/1.1\r\nX: ";
    full += QByteArray(httpFirstReadBytes - full.size() - 4, 'x') + "\r\n\r\n";
    ASSERT_EQ(full.size(), httpFirstReadBytes);
    EXPECT_FALSE(isWholeRequest(full)) << "a read that is full may have left bytes behind";
}

} // namespace orv
