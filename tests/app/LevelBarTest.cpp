#include "LevelBar.h"

#include "Look.h"
#include "NullAppearance.h"
#include "WaitUntil.h"

#include <QAccessible>
#include <QPaintEvent>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// Adds up what is painted.
class WatchedBar : public LevelBar {
  public:
    int paints = 0;
    int paintedColumns = 0;

  protected:
    void paintEvent(QPaintEvent* event) override {
        ++paints;
        for (const QRect& area : event->region()) {
            paintedColumns += area.width();
        }
        LevelBar::paintEvent(event);
    }
};

class LevelBarTest : public ::testing::Test {
  protected:
    LevelBarTest() { bar.resize(200, 8); }

    void show() {
        bar.show();
        ASSERT_TRUE(waitUntil([this] { return bar.paints > 0; }));
        reset();
    }

    void reset() {
        drainEvents();
        bar.paints = 0;
        bar.paintedColumns = 0;
    }

    NullAppearance appearance;
    Look look{appearance};
    WatchedBar bar;
};

TEST_F(LevelBarTest, paintsOnlyWhatChanged) {
    show();
    bar.setLevels(0.50F, 0.50F);
    reset();
    bar.setLevels(0.52F, 0.55F);
    drainEvents();
    EXPECT_EQ(bar.paints, 1);
    EXPECT_LE(bar.paintedColumns, 4 + 2 + 2);
    EXPECT_GE(bar.paintedColumns, 4);
}

TEST_F(LevelBarTest, doesNotPaintWhatLooksTheSame) {
    show();
    bar.setLevels(0.5F, 0.6F);
    reset();
    bar.setLevels(0.5001F, 0.6F);
    drainEvents();
    EXPECT_EQ(bar.paints, 0);
}

TEST_F(LevelBarTest, paintsNothingWhileHiddenAndTheLatestWhenShown) {
    bar.setLevels(0.5F, 0.6F);
    bar.setLevels(0.6F, 0.6F);
    drainEvents();
    EXPECT_EQ(bar.paints, 0);
    EXPECT_FLOAT_EQ(bar.level(), 0.6F);
    bar.show();
    ASSERT_TRUE(waitUntil([this] { return bar.paints > 0; }));
    const QImage shown = bar.grab().toImage();
    EXPECT_NE(shown.pixelColor(100, 4), shown.pixelColor(180, 4));
}

TEST_F(LevelBarTest, showsAHotSignalInAnotherColour) {
    bar.setLevels(0.5F, 0);
    const QColor calm = bar.grab().toImage().pixelColor(50, 4);
    bar.setLevels(0.9F, 0);
    EXPECT_NE(bar.grab().toImage().pixelColor(50, 4), calm);
}

TEST_F(LevelBarTest, keepsToItsRange) {
    bar.setLevels(-1.0F, 7.0F);
    EXPECT_FLOAT_EQ(bar.level(), 0);
    bar.setLevels(2.0F, 2.0F);
    EXPECT_FLOAT_EQ(bar.level(), 1);
}

TEST_F(LevelBarTest, tellsAssistiveProgramsTheLevelWhenTheyAsk) {
    bar.setAccessibleName(u"Level"_s);
    bar.setLevels(0.42F, 0.5F);
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&bar);
    EXPECT_EQ(interface->role(), QAccessible::ProgressBar);
    EXPECT_EQ(interface->text(QAccessible::Name), u"Level"_s);
    EXPECT_EQ(interface->text(QAccessible::Value), u"42"_s);
    ASSERT_NE(interface->valueInterface(), nullptr);
    EXPECT_EQ(interface->valueInterface()->maximumValue(), 100);
}

} // namespace

} // namespace orv::test
