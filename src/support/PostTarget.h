#pragma once

#include "Post.h"

#include <QObject>

#include <memory>
#include <mutex>
#include <utility>

namespace orv {

/// A place on one thread that other threads post work to, without keeping its owner alive. The
/// owner holds the target; whoever posts holds a `Handle`. Once the target is destroyed, on its own
/// thread, nothing posted through its handles runs any more, and later posts do nothing.
class PostTarget {
    struct State {
        std::mutex mutex;
        std::unique_ptr<QObject> context;
    };

  public:
    class Handle {
      public:
        Handle() = default;

        /// Callable from any thread. The work runs on the target's thread, in the order of posting.
        template <typename Work>
        void post(Work&& work) const {
            if (!state_) {
                return;
            }
            const std::lock_guard lock(state_->mutex);
            if (state_->context) {
                orv::post(state_->context.get(), std::forward<Work>(work));
            }
        }

      private:
        friend class PostTarget;

        explicit Handle(std::shared_ptr<State> state)
            : state_(std::move(state)) {}

        std::shared_ptr<State> state_;
    };

    /// A target on the current thread, which must have an event loop.
    PostTarget()
        : state_(std::make_shared<State>()) {
        state_->context = std::make_unique<QObject>();
    }

    ~PostTarget() {
        std::unique_ptr<QObject> context; // Dies after the lock is released.
        const std::lock_guard lock(state_->mutex);
        context = std::move(state_->context);
    }

    PostTarget(const PostTarget&) = delete;
    PostTarget& operator=(const PostTarget&) = delete;

    Handle handle() const { return Handle(state_); }

  private:
    std::shared_ptr<State> state_;
};

} // namespace orv
