#include "OverlayDefaults.h"

#include "DefaultsStore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class OverlayDefaultsTest : public ::testing::Test {
  protected:
    QTemporaryDir folder;
    DefaultsStore store{folder.path() + u"/defaults.json"_s};
};

TEST_F(OverlayDefaultsTest, drawsTheBorderUnlessTheUserSaysOtherwise) {
    EXPECT_TRUE(OverlayDefaults::borderOn(store));
    store.setBool(u"overlayBorderEnabled"_s, false);
    EXPECT_FALSE(OverlayDefaults::borderOn(store));
}

TEST_F(OverlayDefaultsTest, is85PercentOpaqueUnlessTheUserSaysOtherwise) {
    EXPECT_EQ(OverlayDefaults::opacityValue(store), 0.85);
    store.setDouble(u"overlayOpacity"_s, 0.0);
    EXPECT_EQ(OverlayDefaults::opacityValue(store), 0.0);
    store.setDouble(u"overlayOpacity"_s, 0.4);
    EXPECT_EQ(OverlayDefaults::opacityValue(store), 0.4);
}

TEST_F(OverlayDefaultsTest, takesAnOpacityThatIsNoneAsTheNearestOne) {
    store.setDouble(u"overlayOpacity"_s, 7.0);
    EXPECT_EQ(OverlayDefaults::opacityValue(store), 1.0);
    store.setDouble(u"overlayOpacity"_s, -1.0);
    EXPECT_EQ(OverlayDefaults::opacityValue(store), 0.0);
}

TEST_F(OverlayDefaultsTest, hasTheKnownColours) {
    EXPECT_EQ(OverlayDefaults::backgroundColor(store), QColor(0x90, 0xEE, 0x90));
    EXPECT_EQ(OverlayDefaults::borderColor(store), QColor(0x2E, 0x7D, 0x32));
    EXPECT_EQ(OverlayDefaults::textColor(store), QColor(0, 0, 0));
}

TEST_F(OverlayDefaultsTest, takesTheUsersColoursAndNothingThatIsNone) {
    store.setString(u"overlayBgColor"_s, u" #102030 "_s);
    store.setString(u"overlayBorderColor"_s, u"red"_s);
    store.setString(u"overlayTextColor"_s, u"ffcc0"_s);
    EXPECT_EQ(OverlayDefaults::backgroundColor(store), QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(OverlayDefaults::borderColor(store), QColor(0x2E, 0x7D, 0x32));
    EXPECT_EQ(OverlayDefaults::textColor(store), QColor(0, 0, 0));
}

} // namespace

} // namespace orv::test
