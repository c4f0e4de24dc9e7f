#pragma once

#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace orv {

/// The outcome of something under way, which one coroutine may wait for. Copies stand for the same
/// outcome. Whoever makes one must complete it in the end, also when it is destroyed: a coroutine
/// that waits for nothing more is never freed. One thread only.
template <typename T>
class Completion {
  public:
    Completion()
        : state_(std::make_shared<State>()) {}

    /// The first outcome counts. The waiting coroutine goes on inside this call.
    void complete(T outcome) const {
        const auto state = state_; // The coroutine may destroy this object.
        if (state->outcome) {
            return;
        }
        state->outcome = std::move(outcome);
        if (state->waiting) {
            std::exchange(state->waiting, {}).resume();
        }
    }

    bool await_ready() const { return state_->outcome.has_value(); }

    void await_suspend(std::coroutine_handle<> coroutine) { state_->waiting = coroutine; }

    T await_resume() { return std::move(*state_->outcome); }

  private:
    struct State {
        std::optional<T> outcome;
        std::coroutine_handle<> waiting;
    };

    std::shared_ptr<State> state_;
};

} // namespace orv
