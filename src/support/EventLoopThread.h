#pragma once

#include "Post.h"

#include <QObject>
#include <QString>

#include <future>
#include <thread>
#include <utility>

class QEventLoop;

namespace orv {

/// A thread with a Qt event loop, for sockets and timers that must not live on the main thread.
/// Destroying it quits the loop after the work posted so far and joins the thread: afterwards
/// nothing of it runs any more, not even what libraries clean up at a thread's end. (QThread::wait
/// returns before that clean-up, which then happens beside the end of the program.)
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
        orv::post(context_, std::forward<Work>(work));
    }

    /// Posts `work` and waits for it. Must not be called on the thread itself.
    template <typename Work>
    void sync(Work&& work) {
        Q_ASSERT(!isCurrent());
        std::promise<void> done;
        post([&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }

    /// True on the thread itself.
    bool isCurrent() const { return std::this_thread::get_id() == thread_.get_id(); }

    /// For work on the thread itself: what becomes a child of it is destroyed there, at the latest
    /// when the thread ends.
    QObject* context() { return context_; }

  private:
    /// The thread's function; tells `ready` once work can be posted.
    void run(const QString& label, std::promise<void>& ready);

    // Both live on the thread's own stack.
    QObject* context_ = nullptr;
    QEventLoop* loop_ = nullptr;
    std::thread thread_;
};

} // namespace orv
