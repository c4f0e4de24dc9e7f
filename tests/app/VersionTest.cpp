#include "Version.h"

#include <gtest/gtest.h>

namespace orv::test {

namespace {

TEST(Version, comparesAsNumbersAndNotAsTexts) {
    EXPECT_TRUE(isNewerVersion(u"4.10", u"4.9"));
    EXPECT_FALSE(isNewerVersion(u"4.9", u"4.10"));
}

TEST(Version, countsMissingPiecesAsZero) {
    EXPECT_FALSE(isNewerVersion(u"4.2.0", u"4.2"));
    EXPECT_FALSE(isNewerVersion(u"4.2", u"4.2.0"));
    EXPECT_TRUE(isNewerVersion(u"4.2.0.1", u"4.2"));
    EXPECT_FALSE(isNewerVersion(u"4", u"4.0.0.1"));
}

TEST(Version, letsTheFirstDifferenceDecide) {
    EXPECT_TRUE(isNewerVersion(u"5.0.0", u"4.9.9"));
    EXPECT_FALSE(isNewerVersion(u"4.1.9", u"4.2.0"));
}

TEST(Version, isNotNewerThanItself) {
    EXPECT_FALSE(isNewerVersion(u"4.2.1", u"4.2.1"));
}

TEST(Version, dropsEmptyPieces) {
    EXPECT_FALSE(isNewerVersion(u"4..2", u"4.2"));
    EXPECT_FALSE(isNewerVersion(u"4.2", u".4..2."));
}

TEST(Version, dropsPiecesThatAreNoNumbersInsteadOfCountingThemAsZero) {
    // 4, 1 and not 4, 0, 1 or 4, 2, 1.
    EXPECT_TRUE(isNewerVersion(u"4.2-beta.1", u"4.0.9"));
    EXPECT_FALSE(isNewerVersion(u"4.2-beta.1", u"4.1"));
    EXPECT_FALSE(isNewerVersion(u"v5", u"4"));
    EXPECT_FALSE(isNewerVersion(u"5 ", u"4"));
    EXPECT_FALSE(isNewerVersion(u"٥", u"4"));
    EXPECT_FALSE(isNewerVersion(u"99999999999999999999", u"4"));
}

TEST(Version, takesASignAsPartOfANumber) {
    EXPECT_TRUE(isNewerVersion(u"+5", u"4"));
    EXPECT_FALSE(isNewerVersion(u"-5", u"4"));
    EXPECT_FALSE(isNewerVersion(u"+-5", u"0"));
    EXPECT_FALSE(isNewerVersion(u"+", u"0"));
}

TEST(Version, takesNothingAsNoRelease) {
    EXPECT_FALSE(isNewerVersion(u"", u""));
    EXPECT_FALSE(isNewerVersion(u"", u"1"));
    EXPECT_TRUE(isNewerVersion(u"1", u""));
}

} // namespace

} // namespace orv::test
