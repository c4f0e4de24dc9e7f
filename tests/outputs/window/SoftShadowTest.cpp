#include "SoftShadow.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace orv::test {

namespace {

const QRect frame(40, 40, 400, 100);

QImage drawn(double strength, double pixelRatio = 1) {
    QImage image(QSize(480, 180) * pixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(Qt::transparent);
    SoftShadow shadow;
    QPainter painter(&image);
    shadow.draw(painter, frame, strength);
    return image;
}

int alphaAt(const QImage& image, int x, int y) {
    const double ratio = image.devicePixelRatio();
    return qAlpha(image.pixel(int(x * ratio), int(y * ratio)));
}

TEST(SoftShadow, fadesWithDistanceAndEndsWithinItsMargin) {
    const QImage image = drawn(1);
    const int middle = frame.center().x();
    int last = 255;
    for (int y = frame.bottom() + 2; y <= frame.bottom() + SoftShadow::margin; y += 3) {
        EXPECT_LE(alphaAt(image, middle, y), last);
        last = alphaAt(image, middle, y);
    }
    EXPECT_GT(alphaAt(image, middle, frame.bottom() + 2), 40);
    EXPECT_LE(last, 2);
    EXPECT_LE(alphaAt(image, frame.left() - SoftShadow::margin, frame.center().y()), 2);
}

TEST(SoftShadow, leavesTheFrameFree) {
    const QImage image = drawn(1);
    EXPECT_EQ(alphaAt(image, frame.center().x(), frame.center().y()), 0);
    EXPECT_EQ(alphaAt(image, frame.left() + 1, frame.center().y()), 0);
    EXPECT_EQ(alphaAt(image, frame.center().x(), frame.bottom() - 1), 0);
    EXPECT_GT(alphaAt(image, frame.left(), frame.bottom()), 0) << "outside the round corner";
}

TEST(SoftShadow, hasNoSeamsBetweenItsParts) {
    const QImage image = drawn(1);
    const int y = frame.bottom() + 6;
    for (int x = frame.left() + 40; x < frame.right() - 40; ++x) {
        EXPECT_NEAR(alphaAt(image, x, y), alphaAt(image, x + 1, y), 1) << x;
    }
}

TEST(SoftShadow, isTheSameAtTwiceTheDensity) {
    const QImage one = drawn(1);
    const QImage two = drawn(1, 2);
    for (const QPoint point : {QPoint(240, 145), QPoint(240, 155), QPoint(30, 90), QPoint(36, 142),
                               QPoint(444, 142), QPoint(240, 36)}) {
        EXPECT_NEAR(alphaAt(one, point.x(), point.y()), alphaAt(two, point.x(), point.y()), 6)
            << point.x() << ' ' << point.y();
    }
}

TEST(SoftShadow, fadesWithItsWindow) {
    const QPoint below(240, frame.bottom() + 4);
    EXPECT_NEAR(alphaAt(drawn(0.5), below.x(), below.y()),
                alphaAt(drawn(1), below.x(), below.y()) / 2, 2);
    EXPECT_EQ(alphaAt(drawn(0), below.x(), below.y()), 0);
}

} // namespace

} // namespace orv::test
