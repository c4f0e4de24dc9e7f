#include "ScreenPlacement.h"

#include <gtest/gtest.h>

namespace orv::test {

namespace {

const QRect screen(0, 0, 1000, 800);

TEST(PlaceBeside, hangsBelowAButtonAtTheTop) {
    EXPECT_EQ(placeBeside(QRect(300, 0, 24, 24), QSize(200, 300), screen, 5), QPoint(300, 29));
}

TEST(PlaceBeside, staysWithinTheScreenAtItsRightEdge) {
    EXPECT_EQ(placeBeside(QRect(950, 0, 24, 24), QSize(200, 300), screen, 5), QPoint(800, 29));
}

TEST(PlaceBeside, standsOnAButtonAtTheBottom) {
    EXPECT_EQ(placeBeside(QRect(300, 776, 24, 24), QSize(200, 300), screen, 5), QPoint(300, 471));
}

TEST(PlaceBeside, goesToTheCornerWithoutAButton) {
    EXPECT_EQ(placeBeside(QRect(), QSize(200, 300), QRect(0, 30, 1000, 770), 5), QPoint(800, 30));
}

TEST(PlaceBeside, startsAtTheTopWhenTheScreenIsTooSmall) {
    EXPECT_EQ(placeBeside(QRect(300, 0, 24, 24), QSize(2000, 3000), screen, 5), QPoint(0, 0));
}

TEST(PlaceBeside, knowsScreensThatDoNotBeginAtZero) {
    EXPECT_EQ(placeBeside(QRect(1990, 0, 24, 24), QSize(200, 300), QRect(1000, 0, 1000, 800), 0),
              QPoint(1800, 24));
}

} // namespace

} // namespace orv::test
