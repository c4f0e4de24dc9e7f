#include "OverlayDefaults.h"
#include "OverlayAppearance.h"

#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class OverlayDefaultsTest : public ::testing::Test {
  protected:
    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.path() + u"/defaults.json"_s};
    TranslationSettings settings{store};
};

TEST_F(OverlayDefaultsTest, drawsTheBorderUnlessTheUserSaysOtherwise) {
    EXPECT_TRUE(OverlayAppearance::fromSettings(settings).borderColor.has_value());
    settings.overlayBorderEnabled.set(false);
    EXPECT_FALSE(OverlayAppearance::fromSettings(settings).borderColor.has_value());
}

TEST_F(OverlayDefaultsTest, is85PercentOpaqueUnlessTheUserSaysOtherwise) {
    EXPECT_EQ(OverlayDefaults::opacityValue(settings), 0.85);
    settings.overlayOpacity.set(0.0);
    EXPECT_EQ(OverlayDefaults::opacityValue(settings), 0.0);
    settings.overlayOpacity.set(0.4);
    EXPECT_EQ(OverlayDefaults::opacityValue(settings), 0.4);
}

TEST_F(OverlayDefaultsTest, takesAnOpacityThatIsNoneAsTheNearestOne) {
    settings.overlayOpacity.set(7.0);
    EXPECT_EQ(OverlayDefaults::opacityValue(settings), 1.0);
    settings.overlayOpacity.set(-1.0);
    EXPECT_EQ(OverlayDefaults::opacityValue(settings), 0.0);
}

TEST_F(OverlayDefaultsTest, hasTheKnownColours) {
    EXPECT_EQ(OverlayDefaults::color(settings.overlayBgColor), QColor(0x90, 0xEE, 0x90));
    EXPECT_EQ(OverlayDefaults::color(settings.overlayBorderColor), QColor(0x2E, 0x7D, 0x32));
    EXPECT_EQ(OverlayDefaults::color(settings.overlayTextColor), QColor(0, 0, 0));
}

TEST_F(OverlayDefaultsTest, takesTheUsersColoursAndNothingThatIsNone) {
    settings.overlayBgColor.set(u" #102030 "_s);
    settings.overlayBorderColor.set(u"red"_s);
    settings.overlayTextColor.set(u"ffcc0"_s);
    EXPECT_EQ(OverlayDefaults::color(settings.overlayBgColor), QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(OverlayDefaults::color(settings.overlayBorderColor), QColor(0x2E, 0x7D, 0x32));
    EXPECT_EQ(OverlayDefaults::color(settings.overlayTextColor), QColor(0, 0, 0));
}

} // namespace

} // namespace orv::test
