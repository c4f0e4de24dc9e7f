#include "TemplateIcon.h"

#include "SystemTray.h"

#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

const QStringList symbols = {u"idle"_s, u"running"_s, u"translating"_s};

class TemplateIconTest : public ::testing::Test {
  protected:
    static QImage on(const QColor& ground, const QString& symbol, const QColor& ink) {
        QImage image(22, 22, QImage::Format_RGB32);
        image.fill(ground);
        QPainter painter(&image);
        painter.drawPixmap(0, 0,
                           templateIcon(u":/orvane/tray/%1.svg"_s.arg(symbol), ink).pixmap(22, 22));
        return image;
    }

    /// Pixels that differ from `ground` by at least a fifth of the whole range.
    static int visiblePixels(const QImage& image, const QColor& ground) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                count += std::abs(qGray(image.pixel(x, y)) - qGray(ground.rgb())) >= 51;
            }
        }
        return count;
    }

    const SystemTray tray; ///< Brings the symbols with it.
    const QColor white{Qt::white};
    const QColor black{Qt::black};
};

TEST_F(TemplateIconTest, takesDarkInkOnLightGroundsAndLightInkOnDarkOnes) {
    EXPECT_LT(inkOn(white).lightness(), 60);
    EXPECT_GT(inkOn(black).lightness(), 200);
    EXPECT_LT(inkOn(QColor(0xf6, 0xf8, 0xfa)).lightness(), 60);
    EXPECT_GT(inkOn(QColor(0x20, 0x24, 0x2a)).lightness(), 200);
}

TEST_F(TemplateIconTest, theThreeSymbolsDiffer) {
    const QImage idle = on(white, u"idle"_s, inkOn(white));
    const QImage running = on(white, u"running"_s, inkOn(white));
    const QImage translating = on(white, u"translating"_s, inkOn(white));
    EXPECT_NE(idle, running);
    EXPECT_NE(idle, translating);
    EXPECT_NE(running, translating);
}

TEST_F(TemplateIconTest, isSeenOnTheGroundItIsMadeForAndMadeOutOnTheOther) {
    for (const QString& symbol : symbols) {
        for (const QColor& ground : {white, black}) {
            const QColor& other = ground == white ? black : white;
            EXPECT_GE(visiblePixels(on(ground, symbol, inkOn(ground)), ground), 60)
                << qPrintable(symbol);
            EXPECT_GE(visiblePixels(on(ground, symbol, inkOn(other)), ground), 30)
                << qPrintable(symbol);
        }
    }
}

TEST_F(TemplateIconTest, comesInTheSizesOfSharpScreens) {
    const QIcon icon = templateIcon(u":/orvane/tray/idle.svg"_s, black);
    EXPECT_TRUE(icon.availableSizes().contains(QSize(22, 22)));
    EXPECT_TRUE(icon.availableSizes().contains(QSize(44, 44)));
}

} // namespace

} // namespace orv::test
