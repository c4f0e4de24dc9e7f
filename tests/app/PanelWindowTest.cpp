#include "PanelWindow.h"

#include "WaitUntil.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class PanelWindowTest : public ::testing::Test {
  protected:
    PanelWindowTest() {
        content->setMinimumSize(300, 400);
        QObject::connect(&window, &PanelWindow::endWanted, &window, [this] { ++ends; });
    }

    /// Closing by the window manager, or by the window's own button.
    bool closeFromOutside() { return static_cast<QWidget&>(window).close(); }

    QLabel* content = new QLabel(u"content"_s);
    CloseAction closing = CloseAction::Hide;
    int ends = 0;
    /// A click counts as the one that closed it however long it takes to come.
    PanelWindow window{content, [this] { return closing; }, 1h};
};

TEST_F(PanelWindowTest, isHiddenUntilItIsAskedFor) {
    EXPECT_FALSE(window.isShown());
}

TEST_F(PanelWindowTest, standsBesideTheButtonWithoutAFrame) {
    window.showBeside(QRect(100, 0, 24, 24));
    EXPECT_TRUE(window.isShown());
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(window.pos().x(), 100);
    EXPECT_GE(window.pos().y(), 24);
    EXPECT_TRUE(window.screen()->availableGeometry().contains(window.geometry()));
}

TEST_F(PanelWindowTest, growsForWhatComesUpWhileItIsOpen) {
    window.showBeside(QRect(100, 0, 24, 24));
    const int before = window.height();
    content->setMinimumHeight(500);
    EXPECT_TRUE(waitUntil([&] { return window.height() >= before + 100; }));
}

TEST_F(PanelWindowTest, growsUpwardsWhereTheScreenEnds) {
    const QRect available = window.screen()->availableGeometry();
    window.showBeside(QRect(100, available.bottom() - 24, 24, 24));
    content->setMinimumHeight(500);
    ASSERT_TRUE(waitUntil([&] { return window.height() >= 500; }));
    EXPECT_TRUE(available.contains(window.geometry()));
}

TEST_F(PanelWindowTest, closesWhenItIsToggledAway) {
    window.showBeside(QRect(100, 0, 24, 24));
    window.close();
    EXPECT_FALSE(window.isShown());
}

TEST_F(PanelWindowTest, thePopoverClosesWithEscapeButAWindowDoesNot) {
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    window.showAsWindow();
    QApplication::sendEvent(&window, &escape);
    EXPECT_TRUE(window.isShown());
    window.showBeside(QRect(100, 0, 24, 24));
    QApplication::sendEvent(&window, &escape);
    EXPECT_FALSE(window.isShown());
}

TEST_F(PanelWindowTest, thePopoverClosesWhenAnotherWindowIsUsed) {
    window.showBeside(QRect(100, 0, 24, 24));
    ASSERT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
    QWidget other;
    other.show();
    other.activateWindow();
    EXPECT_TRUE(waitUntil([this] { return !window.isShown(); }));
}

TEST_F(PanelWindowTest, theClickThatClosedItDoesNotOpenItAgain) {
    window.showBeside(QRect(100, 0, 24, 24));
    ASSERT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(waitUntil([this] { return !window.isShown(); }));
    window.showBeside(QRect(100, 0, 24, 24));
    EXPECT_FALSE(window.isShown());
    window.showBeside(QRect(100, 0, 24, 24));
    EXPECT_TRUE(window.isShown()) << "the next click opens it";
}

TEST_F(PanelWindowTest, opensAtOnceAfterItWasToggledAway) {
    window.showBeside(QRect(100, 0, 24, 24));
    ASSERT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
    window.close();
    window.showBeside(QRect(100, 0, 24, 24));
    EXPECT_TRUE(window.isShown());
}

TEST_F(PanelWindowTest, whatIsPendingWhenItClosesDoesNotCloseItTheNextTime) {
    const auto looksPending = [this] {
        return std::ranges::count_if(window.findChildren<QTimer*>(), &QTimer::isActive);
    };
    window.showBeside(QRect(100, 0, 24, 24));
    // The event loop brings the activation, and it would also let the pending look run.
    ASSERT_FALSE(window.isActiveWindow());
    QEvent lost(QEvent::ActivationChange);
    QApplication::sendEvent(&window, &lost);
    ASSERT_EQ(looksPending(), 1);
    window.close();
    EXPECT_EQ(looksPending(), 0);
}

TEST_F(PanelWindowTest, aListOrAlertThatClosesHasTimeToGiveTheActivationBack) {
    const auto untilTheLook = [this] {
        std::chrono::milliseconds longest{0};
        for (const QTimer* timer : window.findChildren<QTimer*>()) {
            longest = std::max(longest, timer->isActive() ? timer->intervalAsDuration() : 0ms);
        }
        return longest;
    };
    QEvent lost(QEvent::ActivationChange);
    window.showBeside(QRect(100, 0, 24, 24));
    // The event loop brings the activation.
    ASSERT_FALSE(window.isActiveWindow());
    Q_EMIT qGuiApp->focusWindowChanged(window.windowHandle());
    QApplication::sendEvent(&window, &lost);
    EXPECT_LE(untilTheLook(), 100ms) << "the panel itself had the focus, so somebody left it";
    QWindow list;
    Q_EMIT qGuiApp->focusWindowChanged(&list);
    Q_EMIT qGuiApp->focusWindowChanged(nullptr);
    QApplication::sendEvent(&window, &lost);
    EXPECT_GE(untilTheLook(), 500ms);
    Q_EMIT qGuiApp->focusWindowChanged(&list);
    EXPECT_LE(untilTheLook(), 100ms) << "another window of the program was chosen";
}

TEST_F(PanelWindowTest, hearingOfTheLostActivationWhileItIsClosedStartsNothing) {
    window.showBeside(QRect(100, 0, 24, 24));
    window.close();
    QEvent lost(QEvent::ActivationChange);
    QApplication::sendEvent(&window, &lost);
    for (const QTimer* timer : window.findChildren<QTimer*>()) {
        EXPECT_FALSE(timer->isActive());
    }
}

TEST_F(PanelWindowTest, aWindowStaysWhenAnotherOneIsUsed) {
    window.showAsWindow();
    ASSERT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return other.isActiveWindow(); }));
    EXPECT_TRUE(window.isShown());
}

TEST_F(PanelWindowTest, closingHidesAWindowThatATrayBringsBack) {
    window.showAsWindow();
    EXPECT_FALSE(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(closeFromOutside());
    EXPECT_FALSE(window.isShown());
    EXPECT_EQ(ends, 0);
}

TEST_F(PanelWindowTest, closingMakesAWindowSmallThatMustStayInReach) {
    closing = CloseAction::Minimise;
    window.showAsWindow();
    EXPECT_FALSE(closeFromOutside());
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.isMinimized());
    EXPECT_EQ(ends, 0);
}

TEST_F(PanelWindowTest, closingTheOnlyWayInEndsTheProgram) {
    closing = CloseAction::EndProgram;
    window.showAsWindow();
    EXPECT_TRUE(closeFromOutside());
    EXPECT_EQ(ends, 1);
}

} // namespace

} // namespace orv::test
