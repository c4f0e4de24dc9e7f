#include "VRChatMessage.h"

#include "Result.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

constexpr std::int64_t sourceText = 0;
constexpr std::int64_t translationOnly = 1;
constexpr std::int64_t both = 2;

TEST(VRChatMessage, bothTextsStandOneBelowTheOther) {
    EXPECT_EQ(vrchatMessage({u"Guten Morgen"_s, u"Good morning"_s}, both),
              u"Guten Morgen\nGood morning"_s);
}

TEST(VRChatMessage, bothWithoutATranslationIsTheSourceTextOnce) {
    EXPECT_EQ(vrchatMessage({u"Hallo"_s, QString()}, both), u"Hallo"_s);
}

TEST(VRChatMessage, bothOfTheSameTextIsItOnce) {
    EXPECT_EQ(vrchatMessage({u"OK"_s, u"OK"_s}, both), u"OK"_s);
}

TEST(VRChatMessage, bothWithoutASourceTextIsTheTranslation) {
    EXPECT_EQ(vrchatMessage({QString(), u"Hello"_s}, both), u"Hello"_s);
}

TEST(VRChatMessage, sourceTextOnly) {
    EXPECT_EQ(vrchatMessage({u"Hallo"_s, u"Hello"_s}, sourceText), u"Hallo"_s);
    EXPECT_EQ(vrchatMessage({QString(), u"Hello"_s}, sourceText), QString());
}

TEST(VRChatMessage, translationOnlyFallsBackToTheSourceText) {
    EXPECT_EQ(vrchatMessage({u"Hallo"_s, u"Hello"_s}, translationOnly), u"Hello"_s);
    EXPECT_EQ(vrchatMessage({u"Hallo"_s, QString()}, translationOnly), u"Hallo"_s);
}

TEST(VRChatMessage, everyOtherModeIsBoth) {
    for (const std::int64_t mode : {std::int64_t{3}, std::int64_t{99}, std::int64_t{-1}}) {
        EXPECT_EQ(vrchatMessage({u"a"_s, u"b"_s}, mode), u"a\nb"_s) << mode;
    }
}

TEST(VRChatMessage, nothingComesOfNothing) {
    for (const std::int64_t mode : {sourceText, translationOnly, both}) {
        EXPECT_EQ(vrchatMessage({QString(), QString()}, mode), QString());
    }
}

TEST(VRChatMessage, aTextOf150CharactersIsCutTo144) {
    const QString text = u"0123456789"_s.repeated(15);
    EXPECT_EQ(vrchatMessage({text, QString()}, sourceText), text.first(144));
}

TEST(VRChatMessage, exactly144CharactersAreSentWhole) {
    const QString text = u"x"_s.repeated(144);
    EXPECT_EQ(vrchatMessage({text, QString()}, sourceText), text);
}

TEST(VRChatMessage, charactersAreCountedAsAReaderDoes) {
    const QString family = u"👨‍👩‍👧"_s;
    EXPECT_EQ(vrchatMessage({family.repeated(144), QString()}, sourceText), family.repeated(144));
    EXPECT_EQ(vrchatMessage({family.repeated(145), QString()}, sourceText), family.repeated(144));
}

TEST(VRChatMessage, theLineFeedBetweenTheTextsCounts) {
    const QString message = vrchatMessage({u"a"_s.repeated(100), u"b"_s.repeated(100)}, both);
    EXPECT_EQ(message, QString(u"a"_s.repeated(100) + u'\n' + u"b"_s.repeated(43)));
}

TEST(ChatboxPacket, isTheOscMessageByteForByte) {
    const char expected[] = "/chatbox/input\0\0"
                            ",sTF\0\0\0\0"
                            "Hallo\0\0";
    EXPECT_EQ(chatboxPacket(u"Hallo"_s, false), QByteArray(expected, sizeof expected));
}

TEST(ChatboxPacket, asksForTheSoundInItsTypeTags) {
    EXPECT_EQ(chatboxPacket(u"x"_s, true).sliced(16, 8), QByteArray(",sTT\0\0\0\0", 8));
    EXPECT_EQ(chatboxPacket(u"x"_s, false).sliced(16, 8), QByteArray(",sTF\0\0\0\0", 8));
}

TEST(ChatboxPacket, endsTheTextWithOneToFourNulAtAMultipleOfFour) {
    EXPECT_EQ(chatboxPacket(QString(), false).sliced(24), QByteArray(4, '\0'));
    EXPECT_EQ(chatboxPacket(u"a"_s, false).sliced(24), QByteArray("a\0\0\0", 4));
    EXPECT_EQ(chatboxPacket(u"abc"_s, false).sliced(24), QByteArray("abc\0", 4));
    EXPECT_EQ(chatboxPacket(u"abcd"_s, false).sliced(24), QByteArray("abcd\0\0\0\0", 8));
}

TEST(ChatboxPacket, carriesUtf8) {
    EXPECT_EQ(chatboxPacket(u"ä\n🎉"_s, false).sliced(24),
              QByteArray("\xC3\xA4\n\xF0\x9F\x8E\x89\0", 8));
}

TEST(ChatboxPacket, halfASurrogatePairBecomesTheReplacementCharacter) {
    const QString text = QString(QChar(0xD83D)) + u'a' + QChar(0xDE00);
    EXPECT_EQ(chatboxPacket(text, false).sliced(24), QByteArray("\xEF\xBF\xBD"
                                                                "a\xEF\xBF\xBD\0",
                                                                8));
}

TEST(ChatboxPacket, aNulInTheTextDoesNotEndIt) {
    const QString text = u"a"_s + QChar(QChar::Null) + u"b"_s;
    EXPECT_EQ(chatboxPacket(text, false).sliced(24), QByteArray("a\xEF\xBF\xBD"
                                                                "b\0\0\0",
                                                                8));
}

TEST(ClampedPort, keepsPortsWithinTheirRange) {
    EXPECT_EQ(clampedPort(9000), 9000);
    EXPECT_EQ(clampedPort(65535), 65535);
    EXPECT_EQ(clampedPort(70000), 65535);
    EXPECT_EQ(clampedPort(0), 0);
    EXPECT_EQ(clampedPort(-5), 0);
    EXPECT_EQ(clampedPort(std::numeric_limits<std::int64_t>::max()), 65535);
}

} // namespace

} // namespace orv::test
