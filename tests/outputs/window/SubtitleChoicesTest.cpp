#include "SubtitleChoices.h"

#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orv::test {

namespace {

class SubtitleChoicesTest : public ::testing::Test {
  protected:
    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
};

TEST_F(SubtitleChoicesTest, areMadeOfTheSettings) {
    const SubtitleChoices before = SubtitleChoices::fromSettings(settings);
    EXPECT_TRUE(before.isShown);
    EXPECT_FALSE(before.showOriginal);
    EXPECT_FALSE(before.isSpoken);
    EXPECT_EQ(before.appearance, SubtitleAppearance::fromSettings(settings));
    settings.showOverlay.set(false);
    settings.showOriginal.set(true);
    settings.speakTranslation.set(true);
    settings.overlayBgColor.set(u"#010203"_s);
    const SubtitleChoices after = SubtitleChoices::fromSettings(settings);
    EXPECT_FALSE(after.isShown);
    EXPECT_TRUE(after.showOriginal);
    EXPECT_TRUE(after.isSpoken);
    EXPECT_EQ(after.appearance.background.red(), 1);
}

TEST_F(SubtitleChoicesTest, areHandedOutWithEachOfTheirSettingsAndNoOther) {
    int taken = 0;
    QObject context;
    watchSubtitleChoices(settings, &context, [&](const SubtitleChoices& choices) {
        EXPECT_EQ(choices.appearance, SubtitleAppearance::fromSettings(settings));
        ++taken;
    });
    EXPECT_EQ(taken, 0);
    settings.overlayBgColor.set(u"#010203"_s);
    settings.overlayTextColor.set(u"#FFFFFF"_s);
    settings.overlayBorderColor.set(u"#FF0000"_s);
    settings.overlayBorderEnabled.set(false);
    settings.overlayOpacity.set(0.5);
    settings.showOverlay.set(false);
    settings.showOriginal.set(true);
    settings.speakTranslation.set(true);
    EXPECT_EQ(taken, 8);
    settings.obsOverlayPort.set(1);
    settings.vadEnabled.set(false);
    EXPECT_EQ(taken, 8);
}

} // namespace

} // namespace orv::test
