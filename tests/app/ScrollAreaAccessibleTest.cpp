#include "ScrollAreaAccessible.h"

#include "WaitUntil.h"

#include <QAccessible>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextEdit>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class ScrollAreaAccessibleTest : public ::testing::Test {
  protected:
    ScrollAreaAccessibleTest() {
        installScrollAreaAccessibility();
        area.resize(200, 100);
        area.setWidget(new QLabel(u"words"_s));
        area.show();
    }

    QAccessibleInterface& interface() { return *QAccessible::queryAccessibleInterface(&area); }

    QScrollArea area;
};

TEST_F(ScrollAreaAccessibleTest, hasNoChildBeyondItsChildren) {
    for (const int index : {-1, interface().childCount(), interface().childCount() + 1000}) {
        EXPECT_EQ(interface().child(index), nullptr) << index;
    }
}

TEST_F(ScrollAreaAccessibleTest, keepsItsChildrenWhenAScrollBarComesAndGoes) {
    const int count = interface().childCount();
    area.widget()->resize(100, 1000);
    drainEvents();
    ASSERT_TRUE(area.verticalScrollBar()->isVisible());
    EXPECT_EQ(interface().childCount(), count);
    area.widget()->resize(100, 10);
    drainEvents();
    ASSERT_FALSE(area.verticalScrollBar()->isVisible());
    EXPECT_EQ(interface().childCount(), count);
    for (int index = 0; index < count; ++index) {
        ASSERT_NE(interface().child(index), nullptr);
        EXPECT_EQ(interface().indexOfChild(interface().child(index)), index);
    }
}

TEST_F(ScrollAreaAccessibleTest, leadsToWhatItShowsAndBack) {
    QAccessibleInterface* view = QAccessible::queryAccessibleInterface(area.viewport());
    QAccessibleInterface* words = QAccessible::queryAccessibleInterface(area.widget());
    ASSERT_GE(interface().indexOfChild(view), 0);
    EXPECT_EQ(view->parent(), &interface());
    ASSERT_EQ(view->childCount(), 1);
    EXPECT_EQ(view->child(0), words);
    EXPECT_EQ(words->text(QAccessible::Name), u"words"_s);
}

TEST_F(ScrollAreaAccessibleTest, leavesTextsWhatTheyAre) {
    QTextEdit text;
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&text)->role(), QAccessible::EditableText);
}

} // namespace

} // namespace orv::test
