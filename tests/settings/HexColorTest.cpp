#include "HexColor.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QColor fallback(1, 2, 3, 4);

TEST(HexColor, readsSixDigitsWithOrWithoutTheHash) {
    EXPECT_EQ(colorFromHex(u"#90EE90"_s, fallback), QColor(0x90, 0xEE, 0x90));
    EXPECT_EQ(colorFromHex(u"2E7D32"_s, fallback), QColor(0x2E, 0x7D, 0x32));
}

TEST(HexColor, isOpaque) {
    EXPECT_EQ(colorFromHex(u"#000000"_s, fallback).alpha(), 255);
}

TEST(HexColor, acceptsSurroundingWhiteSpaceAndLowerCase) {
    EXPECT_EQ(colorFromHex(u"  #90ee90 \n"_s, fallback), QColor(0x90, 0xEE, 0x90));
    EXPECT_EQ(colorFromHex(u"\t\r\nabcdef"_s, fallback), QColor(0xAB, 0xCD, 0xEF));
}

TEST(HexColor, yieldsTheFallbackForAnythingElse) {
    for (const QString& text :
         {u""_s, u"#"_s, u"#12345"_s, u"#1234567"_s, u"12345G"_s, u"##12345"_s, u"##123456"_s,
          u"# 12345"_s, u"+12345"_s, u"-12345"_s, u"0x1234"_s, u"12 456"_s, u"１２３４５６"_s,
          u"#90EE90FF"_s, u"green"_s}) {
        EXPECT_EQ(colorFromHex(text, fallback), fallback) << text.toStdString();
    }
}

TEST(HexColor, writesUpperCaseWithTheHashAndLeadingZeros) {
    EXPECT_EQ(toHexString(QColor(0x90, 0xEE, 0x0A)), u"#90EE0A"_s);
    EXPECT_EQ(toHexString(QColor(0, 0, 1)), u"#000001"_s);
    EXPECT_EQ(toHexString(QColor(0, 0, 0)), u"#000000"_s);
    EXPECT_EQ(toHexString(QColor(255, 255, 255)), u"#FFFFFF"_s);
}

TEST(HexColor, leavesAlphaOut) {
    EXPECT_EQ(toHexString(QColor(1, 2, 3, 0)), u"#010203"_s);
}

TEST(HexColor, roundsEachComponent) {
    EXPECT_EQ(toHexString(QColor::fromRgbF(0.5F, 0.499F, 0.001F)), u"#807F00"_s);
}

TEST(HexColor, convertsOtherColourModelsFirst) {
    EXPECT_EQ(toHexString(QColor::fromHsv(0, 255, 255)), u"#FF0000"_s);
    EXPECT_EQ(toHexString(QColor::fromCmyk(255, 0, 255, 0)), u"#00FF00"_s);
}

TEST(HexColor, keepsComponentsBeyondTheGamutInRange) {
    EXPECT_EQ(toHexString(QColor::fromRgbF(2.0F, -1.0F, 1.0F)), u"#FF00FF"_s);
}

TEST(HexColor, comesBackForEveryValueOfAComponent) {
    for (int value = 0; value <= 255; ++value) {
        const QColor color(value, 255 - value, value / 2);
        EXPECT_EQ(colorFromHex(toHexString(color), fallback), color);
    }
}

} // namespace

} // namespace orv
