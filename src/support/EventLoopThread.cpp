#include "EventLoopThread.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <pthread.h>

namespace orv {

EventLoopThread::EventLoopThread(const QString& label) {
    std::promise<void> ready;
    thread_ = std::thread([this, &label, &ready] { run(label, ready); });
    ready.get_future().wait();
}

EventLoopThread::~EventLoopThread() {
    Q_ASSERT(!isCurrent());
    sync([this] { loop_->quit(); });
    thread_.join();
}

void EventLoopThread::run(const QString& label, std::promise<void>& ready) {
    // 15 characters are as many as Linux keeps.
    pthread_setname_np(pthread_self(), label.right(15).toUtf8().constData());
    QEventLoop loop;
    QObject context;
    loop_ = &loop;
    context_ = &context;
    // Neither argument is there any more once the constructor was told.
    ready.set_value();
    loop.exec();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // Before the context goes: they may post to it on their way.
    qDeleteAll(QObjectList(context.children()));
}

} // namespace orv
