#include "OverlayPage.h"

#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QLocale>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

class OverlayPageTest : public testing::Test {
  protected:
    QByteArray page() const { return overlayPage(OverlayAppearance::fromSettings(settings)); }

    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
};

} // namespace

TEST_F(OverlayPageTest, looksLikeTheDefaultsWithAnEmptyStore) {
    EXPECT_TRUE(page().contains("background:rgba(144,238,144,0.85);border:3px solid #2E7D32;"));
    EXPECT_EQ(page().count("color:#000000;"), 2);
    EXPECT_TRUE(page().startsWith("<!DOCTYPE html>"));
    EXPECT_TRUE(page().contains("<title>ORV Overlay</title>"));
}

TEST_F(OverlayPageTest, takesTheChosenColours) {
    settings.overlayBgColor.set(u" #1a2B3c "_s);
    settings.overlayOpacity.set(0.5);
    settings.overlayTextColor.set(u"#FFFF00"_s);
    settings.overlayBorderColor.set(u"rgb(1 2 3 / 50%)"_s);
    EXPECT_TRUE(
        page().contains("background:rgba(26,43,60,0.5);border:3px solid rgb(1 2 3 / 50%);"));
    EXPECT_EQ(page().count("color:#FFFF00;"), 2);
}

TEST_F(OverlayPageTest, fallsBackToTheDefaultBackground) {
    for (const QString& broken : {u""_s, u"#12345"_s, u"#12345G"_s, u"red"_s}) {
        settings.overlayBgColor.set(broken);
        EXPECT_TRUE(page().contains("rgba(144,238,144,0.85)")) << broken.toStdString();
    }
}

TEST_F(OverlayPageTest, usesPureGreenForAColourThatCannotBeConverted) {
    EXPECT_TRUE(overlayPage({QColor(), 1, u"#000000"_s, {}}).contains("rgba(0,255,0,1);"));
}

TEST_F(OverlayPageTest, drawsNoBorderWhenSwitchedOff) {
    settings.overlayBorderEnabled.set(false);
    EXPECT_FALSE(page().contains("border:"));
    EXPECT_TRUE(page().contains("rgba(144,238,144,0.85);\n"));
}

TEST_F(OverlayPageTest, printsOpacityAsADecimalNumberInEveryLanguage) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(cssNumber(0.85), "0.85");
    EXPECT_EQ(cssNumber(0), "0");
    EXPECT_EQ(cssNumber(1), "1");
    EXPECT_EQ(cssNumber(0.00001), "0.00001");
    EXPECT_EQ(cssNumber(1.0 / 3), "0.3333333333333333");
    QLocale::setDefault(before);
}

TEST_F(OverlayPageTest, keepsEveryWayOfWritingAColour) {
    for (const QString& color :
         {u"#abc"_s, u"#A1B2C3D4"_s, u"red"_s, u"transparent"_s, u"rgba(1, 2, 3, .5)"_s,
          u"hsl(120deg 50% 50% / 0.5)"_s, u"color-mix(in srgb, red 10%, #fff)"_s, u""_s}) {
        EXPECT_EQ(cssColorOr(color, u"fallback"_s), color);
    }
}

TEST_F(OverlayPageTest, letsNoColourLeaveItsDeclaration) {
    for (const QString& hostile :
         {u"red;}</style><script>alert(1)</script>"_s, u"red; position: fixed"_s, u"red}"_s,
          u"</style>"_s, u"rgb(1,2,3"_s, u")("_s, u"red/*"_s, u"red\n"_s, u"\"red"_s, u"'red"_s,
          u"\\3b red"_s, u"url(http://example.org)"_s, u"rot\u00A0"_s, u"@import"_s, u"red!"_s}) {
        settings.overlayTextColor.set(hostile);
        settings.overlayBorderColor.set(hostile);
        EXPECT_EQ(page().count("color:#000000;"), 2) << hostile.toStdString();
        EXPECT_TRUE(page().contains("border:3px solid #2E7D32;")) << hostile.toStdString();
        EXPECT_EQ(page().count("</style>"), 1) << hostile.toStdString();
    }
}

} // namespace orv
