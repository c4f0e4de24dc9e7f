#include "LanguageFilter.h"

#include "LanguageManager.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// The codes of all languages that match.
QStringList found(const QString& typed) {
    QStringList codes;
    for (const Language& language : LanguageManager::allLanguages()) {
        if (languageMatches(language, typed)) {
            codes.append(language.code);
        }
    }
    return codes;
}

TEST(LanguageFilter, nothingTypedMeansAll) {
    EXPECT_EQ(found(u""_s).size(), 101);
    EXPECT_EQ(found(u"  "_s).size(), 101);
}

TEST(LanguageFilter, findsByTheLanguagesOwnName) {
    EXPECT_EQ(found(u"Deutsch"_s), QStringList(u"de"_s));
    EXPECT_EQ(found(u"日本"_s), QStringList(u"ja"_s));
    EXPECT_EQ(found(u"עברית"_s), QStringList(u"he"_s));
}

TEST(LanguageFilter, ignoresCaseBlanksAndMarks) {
    EXPECT_EQ(found(u" espanol "_s), QStringList(u"es"_s));
    EXPECT_EQ(found(u"УКРАЇНСЬКА"_s), QStringList(u"uk"_s));
}

TEST(LanguageFilter, findsByTheEnglishNameAndByTheCode) {
    EXPECT_EQ(found(u"japanese"_s), QStringList(u"ja"_s));
    EXPECT_TRUE(found(u"haw"_s).contains(u"haw"_s));
    EXPECT_TRUE(found(u"JA"_s).contains(u"ja"_s));
}

TEST(LanguageFilter, whatIsNoLanguageFindsNone) {
    EXPECT_TRUE(found(u"qqq"_s).isEmpty());
}

} // namespace

} // namespace orv::test
