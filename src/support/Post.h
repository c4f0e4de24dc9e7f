#pragma once

#include <QMetaObject>
#include <QObject>

#include <type_traits>
#include <utility>

#ifdef ORVANE_TSAN
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace orv {

/// Makes a hand-over between threads known to the thread sanitizer, which cannot see the futexes
/// and counters inside the system's own (uninstrumented) Qt. Its own address names the hand-over,
/// since that is all the receiver knows before anything may be read. Empty in all other builds.
class HandOver {
#ifdef ORVANE_TSAN
  public:
    HandOver() = default;

    /// The poster's last step is moving the work to where Qt keeps it.
    HandOver(HandOver&&) noexcept {
        __tsan_release(this);
    }

    HandOver& operator=(HandOver&&) = delete;

    /// Qt may destroy what is left of the work on either thread.
    ~HandOver() {
        __tsan_acquire(this);
    }

    void received() {
        __tsan_acquire(this);
    }

    void done() {
        __tsan_release(this);
    }
#else
  public:
    void received() {}

    void done() {}
#endif
};

/// Runs `work` later on the thread that `context` lives in, in the order of posting, and destroys
/// it there. Does nothing if `context` is destroyed before its turn. Callable from any thread as
/// long as `context` is alive at the call. Every hand-over between threads goes through here.
template <typename Work>
void post(QObject* context, Work&& work) {
    QMetaObject::invokeMethod(
        context,
        [work = std::decay_t<Work>(std::forward<Work>(work)), handOver = HandOver()]() mutable {
            handOver.received();
            {
                auto own = std::move(work);
                own();
            }
            handOver.done();
        },
        Qt::QueuedConnection);
}

} // namespace orv
