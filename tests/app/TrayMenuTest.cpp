#include "TrayMenu.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class TrayMenuTest : public ::testing::Test {
  protected:
    TrayMenuTest() {
        QAction* quit = menu.addAction(u"Quit"_s);
        quit->setShortcut(QKeySequence(u"q"_s));
        QObject::connect(quit, &QAction::triggered, &menu, [this] { ++quits; });
        menu.popup(QPoint(0, 0));
    }

    void press(int key, const QString& text) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(&menu, &event);
    }

    TrayMenu menu;
    int quits = 0;
};

TEST_F(TrayMenuTest, aShortcutChoosesItsLineAndClosesTheMenu) {
    press(Qt::Key_Q, u"q"_s);
    EXPECT_EQ(quits, 1);
    EXPECT_FALSE(menu.isVisible());
}

TEST_F(TrayMenuTest, otherKeysChooseNothing) {
    press(Qt::Key_X, u"x"_s);
    EXPECT_EQ(quits, 0);
    EXPECT_TRUE(menu.isVisible());
}

TEST_F(TrayMenuTest, aLineThatCannotBeChosenIsNotChosenByItsKeyEither) {
    menu.actions().constFirst()->setEnabled(false);
    press(Qt::Key_Q, u"q"_s);
    EXPECT_EQ(quits, 0);
}

TEST_F(TrayMenuTest, escapeClosesTheMenu) {
    press(Qt::Key_Escape, {});
    EXPECT_FALSE(menu.isVisible());
    EXPECT_EQ(quits, 0);
}

} // namespace

} // namespace orv::test
