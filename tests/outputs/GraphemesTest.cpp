#include "Graphemes.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// How many characters a reader counts.
qsizetype characters(const QString& text) {
    qsizetype count = 0;
    for (QStringView rest = text; !rest.isEmpty(); ++count) {
        rest = rest.sliced(firstCharacterLength(rest));
    }
    return count;
}

TEST(Graphemes, anEmptyTextHasNone) {
    EXPECT_EQ(firstCharacterLength({}), 0);
    EXPECT_EQ(firstCharacters({}, 5), QString());
}

TEST(Graphemes, plainLettersCountOneByOne) {
    EXPECT_EQ(characters(u"Grüße, 世界!"_s), 10);
}

TEST(Graphemes, aFlagIsOneAndFourIndicatorsAreTwoFlags) {
    EXPECT_EQ(characters(u"🇩🇪"_s), 1);
    EXPECT_EQ(characters(u"🇩🇪🇫🇷"_s), 2);
    EXPECT_EQ(characters(u"🇩🇪🇫"_s), 2);
}

TEST(Graphemes, aFamilyOfJoinedEmojiIsOne) {
    EXPECT_EQ(characters(u"👨‍👩‍👧‍👦"_s), 1);
    EXPECT_EQ(characters(u"👩🏽‍🚒🧑🏿‍🤝‍🧑🏻"_s), 2);
    EXPECT_EQ(characters(u"❤️‍🔥"_s), 1);
    EXPECT_EQ(characters(u"🏳️‍🌈"_s), 1);
}

TEST(Graphemes, aJoinerAfterALetterJoinsNothing) {
    EXPECT_EQ(characters(u"a\u200D😀"_s), 2);
}

TEST(Graphemes, skinTonesKeycapsAndTagFlagsBelongToWhatIsBefore) {
    EXPECT_EQ(characters(u"👍🏽"_s), 1);
    EXPECT_EQ(characters(u"1\uFE0F\u20E3"_s), 1);
    EXPECT_EQ(characters(u"🏴󠁧󠁢󠁥󠁮󠁧󠁿"_s), 1);
}

TEST(Graphemes, combiningMarksBelongToTheirLetter) {
    EXPECT_EQ(characters(u"e\u0301\u0323"_s), 1);
    EXPECT_EQ(characters(QString(u"z" + QString(500, QChar(0x0301)))), 1);
}

TEST(Graphemes, jamoMakeSyllables) {
    EXPECT_EQ(characters(u"\u1112\u1161\u11AB\u1100\u1173\u11AF"_s), 2);
    EXPECT_EQ(characters(u"\uAC00\u11A8"_s), 1);
    EXPECT_EQ(characters(u"\uAC01\u1161"_s), 2);
}

TEST(Graphemes, aCarriageReturnWithItsLineFeedIsOne) {
    EXPECT_EQ(characters(u"\r\n"_s), 1);
    EXPECT_EQ(characters(u"\n\r"_s), 2);
    EXPECT_EQ(characters(u"\n\u0301"_s), 2);
}

TEST(Graphemes, indicConjunctsStayTogether) {
    EXPECT_EQ(characters(u"क्षि"_s), 1);
    EXPECT_EQ(characters(u"नमस्ते"_s), 3);
}

TEST(Graphemes, thaiVowelSignsBelongToTheirConsonant) {
    EXPECT_EQ(characters(u"น้ำ"_s), 1);
    EXPECT_EQ(characters(u"ที่นี่"_s), 2);
}

TEST(Graphemes, anEmojiBeforeIndicTextIsNotTornApart) {
    EXPECT_EQ(firstCharacterLength(u"😀क"), 2);
    EXPECT_EQ(firstCharacterLength(u"🇦ग"), 2);
}

TEST(Graphemes, aPrefixBelongsToWhatFollows) {
    EXPECT_EQ(characters(u"\u0600١"_s), 1);
}

TEST(Graphemes, aHalfSurrogateStandsAlone) {
    const QString halves = QString(QChar(0xD83D)) + u'a' + QChar(0xDE00) + QChar(0x0301);
    EXPECT_EQ(characters(halves), 4);
}

TEST(Graphemes, theFirstCharactersAreWholeOnes) {
    EXPECT_EQ(firstCharacters(u"a👨‍👩‍👧b"_s, 2), u"a👨‍👩‍👧"_s);
    EXPECT_EQ(firstCharacters(u"abc"_s, 0), QString());
    EXPECT_EQ(firstCharacters(u"abc"_s, 3), u"abc"_s);
    EXPECT_EQ(firstCharacters(u"abc"_s, 4), u"abc"_s);
}

} // namespace

} // namespace orv::test
