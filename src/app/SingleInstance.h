#pragma once

#include "UniqueFd.h"

#include <QByteArray>
#include <QSocketNotifier>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace orv {

/// The claim that lets a user have one running program, and no more, for each set of files. The
/// first one listens on a local socket whose name stands for user and files; a later one finds the
/// name taken, asks the first to show itself, and ends. The name lives in memory and goes with its
/// owner, however that ends, so nothing stale can be left behind. (One name for each network
/// namespace: programs in different containers do not see each other.)
class SingleInstance {
  public:
    enum class Claim {
        First,   ///< Nobody else runs, or nobody who could be asked.
        Shown,   ///< Another one runs and has been told to show itself.
        NoAnswer ///< Another one runs but does not answer.
    };

    /// `files` names what two programs must not share. `patience` bounds the waiting for another
    /// program's answer; one that is ending is waited for, and its place taken.
    explicit SingleInstance(const QByteArray& files,
                            std::chrono::milliseconds patience = std::chrono::seconds(8));

    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// To be called once, before anything that takes time; needs no application object.
    Claim claim();

    /// From now on, each later start calls `show` on this thread, which has an event loop. Starts
    /// since `claim` have waited for it. `show` returns false when this program is about to end:
    /// the other one then waits for that and starts itself.
    void answerWith(std::function<bool()> show);

  private:
    void answer();

    const QByteArray name_; ///< Of the socket.
    const std::chrono::milliseconds patience_;
    UniqueFd listener_;
    std::vector<UniqueFd> waiting_; ///< Other programs that wait for our end.
    std::function<bool()> show_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace orv
