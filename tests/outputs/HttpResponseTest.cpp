#include "HttpResponse.h"

#include <gtest/gtest.h>

namespace orv {

TEST(HttpResponse, carriesExactlyTheseHeaders) {
    const HttpResponse response{"Not Found", "text/plain; charset=utf-8"};
    EXPECT_EQ(response.bytes(), "HTTP/1.1 200 OK\r\n"
                                "Content-Type: text/plain; charset=utf-8\r\n"
                                "Content-Length: 9\r\n"
                                "Access-Control-Allow-Origin: *\r\n"
                                "Cache-Control: no-store\r\n"
                                "Connection: close\r\n\r\n"
                                "Not Found");
}

TEST(HttpResponse, countsBytesAndNotCharacters) {
    const HttpResponse response{"\xC3\xA4\xE2\x82\xAC", "text/plain"};
    EXPECT_TRUE(response.bytes().contains("Content-Length: 5\r\n"));
}

} // namespace orv
