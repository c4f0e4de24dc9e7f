#include "OverlayAppearance.h"

#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace orv::test {

namespace {

class OverlayAppearanceTest : public ::testing::Test {
  protected:
    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
};

TEST_F(OverlayAppearanceTest, isMadeOfTheSettings) {
    const OverlayAppearance byDefault{QColor(0x90, 0xEE, 0x90), 0.85, u"#000000"_s, u"#2E7D32"_s,
                                      false};
    EXPECT_EQ(OverlayAppearance::fromSettings(settings), byDefault);
    EXPECT_EQ(OverlayAppearance::fromSettings(SettingsList()), byDefault);
    settings.overlayBgColor.set(u"#010203"_s);
    settings.overlayOpacity.set(2.0);
    settings.overlayTextColor.set(u"white"_s);
    settings.overlayBorderEnabled.set(false);
    settings.showOriginal.set(true);
    EXPECT_EQ(OverlayAppearance::fromSettings(settings),
              (OverlayAppearance{QColor(1, 2, 3), 1.0, u"white"_s, std::nullopt, true}));
}

TEST_F(OverlayAppearanceTest, isHandedOutWithEachOfItsSettingsAndNoOther) {
    QList<OverlayAppearance> shown;
    auto context = std::make_unique<QObject>();
    watchOverlayAppearance(settings, context.get(), [&](const OverlayAppearance& appearance) {
        EXPECT_EQ(appearance, OverlayAppearance::fromSettings(settings));
        shown.append(appearance);
    });
    EXPECT_TRUE(shown.isEmpty());
    settings.overlayBgColor.set(u"#010203"_s);
    settings.overlayTextColor.set(u"#FFFFFF"_s);
    settings.overlayBorderColor.set(u"#FF0000"_s);
    settings.overlayBorderEnabled.set(false);
    settings.overlayOpacity.set(0.5);
    settings.showOriginal.set(true);
    EXPECT_EQ(shown.size(), 6);
    settings.showOverlay.set(false);
    settings.obsOverlayPort.set(1);
    settings.speakTranslation.set(true);
    EXPECT_EQ(shown.size(), 6);
    context.reset();
    settings.overlayOpacity.set(0.6);
    EXPECT_EQ(shown.size(), 6);
}

TEST_F(OverlayAppearanceTest, isSaidInTheWordsOfAStyleSheet) {
    const OverlayStyle plain =
        overlayStyle({QColor(1, 2, 3), 0.5, u"white"_s, std::nullopt, false});
    EXPECT_EQ(plain.background, "rgba(1,2,3,0.5)");
    EXPECT_EQ(plain.border, "");
    EXPECT_EQ(plain.color, "white");
    EXPECT_EQ(overlayStyle({QColor(1, 2, 3), 0.5, u"white"_s, u"#FF0000"_s, false}).border,
              "3px solid #FF0000");
}

} // namespace

} // namespace orv::test
