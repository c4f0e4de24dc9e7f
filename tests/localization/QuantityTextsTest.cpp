#include "QuantityTexts.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// What `text` gives in every language, in their order: de, en, es, fr, it.
template <typename Text>
QStringList inAll(const Text& text) {
    QStringList texts;
    for (const UILanguage language : UILanguage::allCases()) {
        texts.append(text(language));
    }
    return texts;
}

TEST(Quantities, aPercentSignStandsAsEachLanguageWritesIt) {
    EXPECT_EQ(inAll([](UILanguage language) { return percentText(language, 85); }),
              (QStringList{u"85\u00A0%"_s, u"85%"_s, u"85\u00A0%"_s, u"85\u00A0%"_s, u"85%"_s}));
}

TEST(Quantities, megabytesAreWholeOnes) {
    EXPECT_EQ(inAll([](UILanguage language) { return fileSizeText(language, 75); }),
              (QStringList{u"75\u00A0MB"_s, u"75\u00A0MB"_s, u"75\u00A0MB"_s, u"75\u00A0Mo"_s,
                           u"75\u00A0MB"_s}));
}

TEST(Quantities, gigabytesHaveTheDecimalSignOfTheLanguage) {
    EXPECT_EQ(inAll([](UILanguage language) { return fileSizeText(language, 1500); }),
              (QStringList{u"1,5\u00A0GB"_s, u"1.5\u00A0GB"_s, u"1,5\u00A0GB"_s, u"1,5\u00A0Go"_s,
                           u"1,5\u00A0GB"_s}));
}

} // namespace

} // namespace orv::test
