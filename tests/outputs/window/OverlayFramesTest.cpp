#include "OverlayFrames.h"

#include <gtest/gtest.h>

namespace orv::test {

namespace {

const QRect screen(0, 0, 1920, 1080);

TEST(OverlayFrames, areCentred80AboveTheBottom) {
    const OverlayFrames frames = overlayFrames(0, 30, screen);
    EXPECT_EQ(frames.window, QRect(560, 1080 - 80 - 60, 800, 60));
}

TEST(OverlayFrames, holdOneLineOfTheTextsHeightAnd30) {
    const OverlayFrames frames = overlayFrames(0, 31, screen);
    EXPECT_EQ(frames.window.height(), 61);
    EXPECT_EQ(frames.translation, QRect(20, 15, 760, 31));
    EXPECT_TRUE(frames.original.isEmpty());
}

TEST(OverlayFrames, putTheSourceText6AboveTheTranslation) {
    const OverlayFrames frames = overlayFrames(19, 60, screen);
    EXPECT_EQ(frames.window.height(), 19 + 6 + 60 + 30);
    EXPECT_EQ(frames.original, QRect(20, 15, 760, 19));
    EXPECT_EQ(frames.translation, QRect(20, 15 + 19 + 6, 760, 60));
    EXPECT_EQ(frames.window.height() - (frames.translation.bottom() + 1), 15);
}

TEST(OverlayFrames, growUpwards) {
    const QRect low = overlayFrames(0, 30, screen).window;
    const QRect high = overlayFrames(20, 300, screen).window;
    EXPECT_EQ(low.bottom(), high.bottom());
    EXPECT_LT(high.top(), low.top());
    EXPECT_EQ(high.bottom() + 1, 1000);
}

TEST(OverlayFrames, areOnTheirScreenWhereverThatLies) {
    const QRect left(-1280, 200, 1280, 1024);
    const QRect window = overlayFrames(0, 30, left).window;
    EXPECT_EQ(window, QRect(-1280 + 240, 200 + 1024 - 80 - 60, 800, 60));
}

TEST(OverlayFrames, roundOddWidthsToWholePixels) {
    EXPECT_EQ(overlayFrames(0, 30, QRect(0, 0, 1367, 768)).window.left(), 283);
}

TEST(OverlayFrames, areNoWiderThanANarrowScreen) {
    const OverlayFrames frames = overlayFrames(0, 30, QRect(100, 0, 640, 480));
    EXPECT_EQ(frames.window.left(), 100);
    EXPECT_EQ(frames.window.width(), 640);
    EXPECT_EQ(frames.translation.width(), 600);
}

} // namespace

} // namespace orv::test
