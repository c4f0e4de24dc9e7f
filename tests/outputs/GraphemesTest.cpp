#include "Graphemes.h"

#include <QList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// How many characters a reader counts.
qsizetype characters(const QString& text) {
    qsizetype count = 0;
    Graphemes all(text);
    while (all.next() >= 0) {
        ++count;
    }
    return count;
}

/// Where the characters of `text` end.
QList<qsizetype> ends(const QString& text) {
    QList<qsizetype> all;
    Graphemes characters(text);
    for (qsizetype end = characters.next(); end >= 0; end = characters.next()) {
        all.append(end);
    }
    return all;
}

TEST(Graphemes, anEmptyTextHasNone) {
    EXPECT_EQ(Graphemes({}).next(), -1);
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

// Older versions of ICU take a conjunct for two characters, newer ones for one.
TEST(Graphemes, indicConjunctsAreSplitAfterTheirLinkerAtMost) {
    const QString conjunct = u"क्षि"_s;
    EXPECT_TRUE(ends(conjunct) == QList<qsizetype>{4} ||
                ends(conjunct) == (QList<qsizetype>{2, 4}));
    const QString greeting = u"नमस्ते"_s;
    EXPECT_TRUE(ends(greeting) == (QList<qsizetype>{1, 2, 6}) ||
                ends(greeting) == (QList<qsizetype>{1, 2, 4, 6}));
}

TEST(Graphemes, thaiVowelSignsBelongToTheirConsonant) {
    EXPECT_EQ(characters(u"น้ำ"_s), 1);
    EXPECT_EQ(characters(u"ที่นี่"_s), 2);
}

TEST(Graphemes, anEmojiBeforeIndicTextIsNotTornApart) {
    EXPECT_EQ(ends(u"😀क"_s), (QList<qsizetype>{2, 3}));
    EXPECT_EQ(ends(u"🇦ग"_s), (QList<qsizetype>{2, 3}));
    EXPECT_EQ(ends(u"ก😀ก"_s), (QList<qsizetype>{1, 3, 4}));
    EXPECT_EQ(ends(u"हि👍🏽हि"_s), (QList<qsizetype>{2, 6, 8}));
}

TEST(Graphemes, aPrefixBelongsToWhatFollows) {
    EXPECT_EQ(characters(u"\u0600١"_s), 1);
}

TEST(Graphemes, aHalfSurrogateCountsLikeALetter) {
    const QString halves = QString(QChar(0xD83D)) + u'a' + QChar(0xDE00) + QChar(0xD83D);
    EXPECT_EQ(ends(halves), (QList<qsizetype>{1, 2, 3, 4}));
}

TEST(Graphemes, theFirstCharactersAreWholeOnes) {
    EXPECT_EQ(firstCharacters(u"a👨‍👩‍👧b"_s, 2), u"a👨‍👩‍👧"_s);
    EXPECT_EQ(firstCharacters(u"abc"_s, 0), QString());
    EXPECT_EQ(firstCharacters(u"abc"_s, 3), u"abc"_s);
    EXPECT_EQ(firstCharacters(u"abc"_s, 4), u"abc"_s);
}

TEST(Graphemes, aPlaceWithinACharacterLiesBetweenItsEnds) {
    const QString text = u"a👨‍👩‍👧b"_s;
    Graphemes characters(text);
    for (const qsizetype boundary : {0, 1, 9, 10}) {
        EXPECT_EQ(characters.boundaryUpTo(boundary), boundary);
        EXPECT_EQ(characters.boundaryFrom(boundary), boundary);
    }
    for (qsizetype within = 2; within < 9; ++within) {
        EXPECT_EQ(characters.boundaryUpTo(within), 1);
        EXPECT_EQ(characters.boundaryFrom(within), 9);
    }
}

} // namespace

} // namespace orv::test
