#include "SubtitleLines.h"

#include "Result.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(SubtitleLines, showTheTranslationAlone) {
    EXPECT_EQ(subtitleLines({u"hello"_s, u"hola"_s}, false),
              (SubtitleLines{.original = {}, .translation = u"hola"_s, .spoken = u"hola"_s}));
}

TEST(SubtitleLines, showTheSourceTextAboveTheTranslationWhenTheUserWantsIt) {
    EXPECT_EQ(
        subtitleLines({u"hello"_s, u"hola"_s}, true),
        (SubtitleLines{.original = u"hello"_s, .translation = u"hola"_s, .spoken = u"hola"_s}));
}

TEST(SubtitleLines, showOneLargeLineWhenBothSayTheSame) {
    EXPECT_EQ(subtitleLines({u"okay"_s, u"okay"_s}, true),
              (SubtitleLines{.original = {}, .translation = u"okay"_s, .spoken = u"okay"_s}));
}

TEST(SubtitleLines, fallBackToTheSourceTextWithoutATranslation) {
    EXPECT_EQ(subtitleLines({u"hello"_s, QString()}, true),
              (SubtitleLines{.original = {}, .translation = u"hello"_s, .spoken = u"hello"_s}));
}

TEST(SubtitleLines, showTheSourceTextOfAFailureAndAreSilent) {
    for (const QString& failure : {u"[Translation Error]"_s, u"[Translation Error] hello"_s,
                                   u"Translation Error: 503"_s, u"so: Translation Error"_s}) {
        EXPECT_EQ(subtitleLines({u"hello"_s, failure}, true),
                  (SubtitleLines{.original = {}, .translation = u"hello"_s, .spoken = {}}))
            << qPrintable(failure);
    }
}

TEST(SubtitleLines, areSilentAboutAnyError) {
    const SubtitleLines lines = subtitleLines({u"hello"_s, u"Error 404"_s}, false);
    EXPECT_EQ(lines.translation, u"Error 404"_s);
    EXPECT_EQ(lines.spoken, std::nullopt);
    EXPECT_EQ(subtitleLines({u"An Error occurred"_s, QString()}, false).spoken, std::nullopt);
}

TEST(SubtitleLines, tellErrorsByTheirCapitalLetter) {
    EXPECT_EQ(subtitleLines({u"ein Irrtum"_s, u"an error"_s}, false).spoken, u"an error"_s);
    EXPECT_EQ(subtitleLines({u"x"_s, u"translation error"_s}, false).translation,
              u"translation error"_s);
}

TEST(SubtitleLines, fallBackToTheSourceTextWithoutAnythingToReadInTheTranslation) {
    for (const QString& blank : {u" "_s, u"\n\t"_s, u"\u0001\u0007"_s, u"\u001b \u2028"_s}) {
        EXPECT_EQ(subtitleLines({u"hello"_s, blank}, true),
                  (SubtitleLines{.original = {}, .translation = u"hello"_s, .spoken = u"hello"_s}))
            << qPrintable(blank);
    }
}

TEST(SubtitleLines, speakNothingWhenThereIsNothingToSay) {
    EXPECT_EQ(subtitleLines({QString(), QString()}, true).spoken, std::nullopt);
    EXPECT_EQ(subtitleLines({u"\n"_s, u"  "_s}, true).spoken, std::nullopt);
    EXPECT_EQ(subtitleLines({u"\u0001"_s, u"\u0007"_s}, true).spoken, std::nullopt);
}

} // namespace

} // namespace orv::test
