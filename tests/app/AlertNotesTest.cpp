#include "AlertNotes.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(AlertNotes, leaveShortNotesAlone) {
    EXPECT_EQ(alertNotes(u"One.\nTwo."_s), u"One.\nTwo."_s);
    EXPECT_EQ(alertNotes(u"  One.\n"_s), u"One."_s);
    const QString twenty = u"line\n"_s.repeated(20).trimmed();
    EXPECT_EQ(alertNotes(twenty), twenty);
}

TEST(AlertNotes, cutTheTwentyFirstLine) {
    EXPECT_EQ(alertNotes(u"line\n"_s.repeated(21)),
              QString(u"line\n"_s.repeated(20).trimmed() + u" …"));
}

TEST(AlertNotes, cutLongLines) {
    const QString shown = alertNotes(QString(100'000, u'x'));
    EXPECT_EQ(shown.size(), 1202);
    EXPECT_TRUE(shown.endsWith(u"x …"));
}

TEST(AlertNotes, doNotCutWithinACharacter) {
    // One before the limit, a character of eight units begins.
    const QString family = u"👨‍👩‍👧"_s;
    ASSERT_EQ(family.size(), 8);
    EXPECT_EQ(alertNotes(QString(1199, u'x') + family), QString(QString(1199, u'x') + u" …"));
}

} // namespace

} // namespace orv::test
