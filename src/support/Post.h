#pragma once

#include <QMetaObject>
#include <QObject>

#include <memory>
#include <utility>

#ifdef ORVANE_TSAN
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace orv {

/// Runs `work` later on the thread that `context` lives in, in the order of posting. Does nothing
/// if `context` is destroyed before its turn. Callable from any thread as long as `context` is
/// alive at the call.
///
/// Every hand-over between threads goes through here: the thread sanitizer cannot see the futexes
/// inside the system's own (uninstrumented) Qt, so its builds state the ordering explicitly.
template <typename Work>
void post(QObject* context, Work&& work) {
#ifdef ORVANE_TSAN
    auto token = std::make_shared<char>();
    __tsan_release(token.get());
    QMetaObject::invokeMethod(
        context,
        [token, work = std::forward<Work>(work)]() mutable {
            __tsan_acquire(token.get());
            work();
        },
        Qt::QueuedConnection);
#else
    QMetaObject::invokeMethod(context, std::forward<Work>(work), Qt::QueuedConnection);
#endif
}

} // namespace orv
