#include "Theme.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orv::test {

namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

class ThemeTest : public ::testing::TestWithParam<bool> {
  protected:
    Theme theme = GetParam() ? Theme::darkened() : Theme::light();
};

INSTANTIATE_TEST_SUITE_P(LightAndDark, ThemeTest, ::testing::Bool(),
                         [](const auto& suite) { return suite.param ? "dark" : "light"; });

TEST(Contrast, isMeasuredAsTheAccessibilityGuidelinesDo) {
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21.0, 0.01);
    EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
}

TEST_P(ThemeTest, everyTextKeepsItsContrast) {
    ASSERT_GE(theme.textPairs().size(), 30);
    for (const TextPair& pair : theme.textPairs()) {
        EXPECT_GE(contrast(pair.text, pair.ground), 4.5) << pair.name;
    }
}

TEST_P(ThemeTest, marksStandOutFromTheirGround) {
    for (const QColor& ground : {theme.window, theme.card, theme.control}) {
        EXPECT_GE(contrast(theme.accentText, ground), 3.0);
        EXPECT_GE(contrast(theme.switchOff, ground), 2.6);
    }
    EXPECT_GE(contrast(theme.knob, theme.switchOff), 3.0);
    EXPECT_GE(contrast(theme.knob, theme.accent), 3.0);
}

TEST_P(ThemeTest, qtsOwnTextsKeepTheirContrastToo) {
    const QPalette palette = theme.palette();
    for (const auto& [text, ground] : {std::pair(QPalette::WindowText, QPalette::Window),
                                       {QPalette::Text, QPalette::Base},
                                       {QPalette::Text, QPalette::AlternateBase},
                                       {QPalette::ButtonText, QPalette::Button},
                                       {QPalette::HighlightedText, QPalette::Highlight},
                                       {QPalette::ToolTipText, QPalette::ToolTipBase},
                                       {QPalette::Link, QPalette::Window},
                                       {QPalette::PlaceholderText, QPalette::Base}}) {
        EXPECT_GE(contrast(palette.color(text), palette.color(ground)), 4.5) << int(text);
    }
}

TEST(Theme, hasTwoTextSizes) {
    QFont body;
    body.setPointSizeF(10);
    EXPECT_DOUBLE_EQ(titleFont(body).pointSizeF(), 13);
    EXPECT_DOUBLE_EQ(strongFont(body).pointSizeF(), 10);
    body.setPixelSize(20);
    EXPECT_EQ(titleFont(body).pixelSize(), 26);
}

} // namespace

} // namespace orv::test
