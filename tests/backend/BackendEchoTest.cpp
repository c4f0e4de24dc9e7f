#include "BackendEcho.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {

TEST(BackendEcho, putsBackendBeforeTheText) {
    BackendEcho echo;
    EXPECT_EQ(echo.lineFor("model loaded"), u"Backend:model loaded"_s);
}

TEST(BackendEcho, dropsOneLineFeedAtTheEnd) {
    BackendEcho echo;
    EXPECT_EQ(echo.lineFor("one\n"), u"Backend:one"_s);
    EXPECT_EQ(echo.lineFor("one\ntwo\n\n"), u"Backend:one\ntwo\n"_s);
}

TEST(BackendEcho, anEmptyReadGivesNothing) {
    BackendEcho echo;
    EXPECT_EQ(echo.lineFor(""), std::nullopt);
}

TEST(BackendEcho, keepsACharacterWholeThatIsSplitOverReads) {
    BackendEcho echo;
    const QByteArray bytes = u"läuft 🛑"_s.toUtf8();
    QString text;
    for (const char byte : bytes) {
        if (const auto line = echo.lineFor(QByteArrayView(&byte, 1))) {
            EXPECT_TRUE(line->startsWith(u"Backend:"));
            text += line->mid(8);
        }
    }
    EXPECT_EQ(text, u"läuft 🛑"_s);
}

TEST(BackendEcho, aReadWithOnlyTheStartOfACharacterGivesNothing) {
    BackendEcho echo;
    EXPECT_EQ(echo.lineFor("\xf0\x9f"), std::nullopt);
    EXPECT_EQ(echo.lineFor("\x9b\x91 ok"), u"Backend:🛑 ok"_s);
}

TEST(BackendEcho, bytesThatAreNotTextDoNotStopTheEcho) {
    BackendEcho echo;
    EXPECT_EQ(echo.lineFor("a\xff"), u"Backend:a\ufffd"_s);
    EXPECT_EQ(echo.lineFor("b"), u"Backend:b"_s);
}

} // namespace orv
