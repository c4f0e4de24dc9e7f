#pragma once

#include "Post.h"

#include <QObject>
#include <QString>
#include <QThread>

#include <functional>
#include <future>
#include <memory>
#include <utility>

namespace orv {

/// A thread with a Qt event loop, for sockets and timers that must not live on the main thread.
/// Destroying it quits the loop after the work posted so far and joins the thread.
class EventLoopThread {
  public:
    /// `label` names the thread; the system shows its last 15 characters.
    explicit EventLoopThread(const QString& label);
    ~EventLoopThread();

    EventLoopThread(const EventLoopThread&) = delete;
    EventLoopThread& operator=(const EventLoopThread&) = delete;

    /// Runs `work` on the thread, in the order of posting. Callable from any thread.
    template <typename Work>
    void post(Work&& work) {
        orv::post(context_.get(), std::forward<Work>(work));
    }

    /// Posts `work` and waits for it. Must not be called on the thread itself.
    void sync(std::function<void()> work);

    /// True on the thread itself.
    bool isCurrent() const { return QThread::currentThread() == &thread_; }

  private:
    QThread thread_;
    std::unique_ptr<QObject> context_;
};

} // namespace orv
