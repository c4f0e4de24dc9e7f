#include "LevelMeter.h"

#include <gtest/gtest.h>

namespace {

using orv::LevelMeter;

TEST(LevelMeter, startsEmpty) {
    const LevelMeter meter;
    EXPECT_EQ(meter.audioLevel(), 0.0F);
    EXPECT_EQ(meter.peakLevel(), 0.0F);
}

TEST(LevelMeter, movesThreeTenthsOfTheWayToEachBuffersLevel) {
    LevelMeter meter;
    meter.apply(1.0F);
    EXPECT_FLOAT_EQ(meter.audioLevel(), 0.3F);
    meter.apply(1.0F);
    EXPECT_FLOAT_EQ(meter.audioLevel(), 0.51F);
    meter.apply(0.0F);
    EXPECT_FLOAT_EQ(meter.audioLevel(), 0.357F);
}

TEST(LevelMeter, peakJumpsUpAndFallsByATwentieth) {
    LevelMeter meter;
    meter.apply(0.8F);
    EXPECT_FLOAT_EQ(meter.peakLevel(), 0.8F);
    meter.apply(0.1F);
    EXPECT_FLOAT_EQ(meter.peakLevel(), 0.76F);
    meter.apply(0.9F);
    EXPECT_FLOAT_EQ(meter.peakLevel(), 0.9F);
}

TEST(LevelMeter, aLevelEqualToThePeakLetsItFall) {
    LevelMeter meter;
    meter.apply(0.5F);
    meter.apply(0.5F);
    EXPECT_FLOAT_EQ(meter.peakLevel(), 0.475F);
}

TEST(LevelMeter, resetEmptiesBothValues) {
    LevelMeter meter;
    meter.apply(1.0F);
    meter.reset();
    EXPECT_EQ(meter.audioLevel(), 0.0F);
    EXPECT_EQ(meter.peakLevel(), 0.0F);
}

} // namespace
