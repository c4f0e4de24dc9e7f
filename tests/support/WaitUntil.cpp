#include "WaitUntil.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace orv::test {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const QDeadlineTimer deadline(limit);
    QEventLoop loop;
    // Conditions may depend on other threads, which do not wake this loop: look again regularly.
    QTimer again;
    again.start(2);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        loop.processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void drainEvents() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace orv::test
