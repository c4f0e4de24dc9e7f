#pragma once

#include "HostLookups.h"

#include <QStringList>

#include <condition_variable>
#include <memory>
#include <mutex>

namespace orv::test {

/// Answers host names as a test wants, at first not at all. Threads that ask may outlive the test's
/// objects: they share what they use.
class NameServer {
  public:
    /// Lets whoever still waits go.
    ~NameServer() { answer({{}, QStringLiteral("gone")}); }

    LookUpHost lookUp() const {
        return [state = state_](const QString& host) {
            std::unique_lock lock(state->mutex);
            state->asked.append(host);
            state->changed.wait(lock, [&] { return state->answers; });
            return state->answer;
        };
    }

    /// Answers this to every question there is, and to all that come.
    void answer(const HostAnswer& answer) {
        const std::lock_guard lock(state_->mutex);
        state_->answers = true;
        state_->answer = answer;
        state_->changed.notify_all();
    }

    QStringList asked() const {
        const std::lock_guard lock(state_->mutex);
        return state_->asked;
    }

  private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        bool answers = false;
        HostAnswer answer;
        QStringList asked;
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace orv::test
