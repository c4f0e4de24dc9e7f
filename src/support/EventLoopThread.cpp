#include "EventLoopThread.h"

namespace orv {

EventLoopThread::EventLoopThread(const QString& label)
    : context_(std::make_unique<QObject>()) {
    thread_.setObjectName(label.right(15));
    context_->moveToThread(&thread_);
    thread_.start();
}

EventLoopThread::~EventLoopThread() {
    Q_ASSERT(!isCurrent());
    sync([this] { thread_.quit(); });
    thread_.wait();
}

void EventLoopThread::sync(std::function<void()> work) {
    Q_ASSERT(!isCurrent());
    std::promise<void> done;
    post([&] {
        work();
        done.set_value();
    });
    done.get_future().wait();
}

} // namespace orv
