#include "SessionEnd.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QWidget>

#include <gtest/gtest.h>

namespace orv::test {

namespace {

class StubbornWindow : public QWidget {
  public:
    bool wasAsked = false;

  protected:
    void closeEvent(QCloseEvent* event) override {
        wasAsked = true;
        event->ignore();
    }
};

TEST(SessionEnd, isASignalAndAsksNoWindow) {
    StubbornWindow window;
    window.show();
    int requests = 0;
    const SessionEnd sessionEnd;
    QObject::connect(&sessionEnd, &SessionEnd::requested, &window, [&] { ++requests; });
    // The session's manager sends the application this event.
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(QCoreApplication::instance(), &quit);
    EXPECT_EQ(requests, 1);
    EXPECT_FALSE(window.wasAsked);
}

} // namespace

} // namespace orv::test
