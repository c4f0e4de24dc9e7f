#pragma once

#include "UniqueFd.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace orv {

/// The claim that lets a user have one running program, and no more, for each set of files. The
/// first one holds a lock, and listens on a socket beside it; a later one finds the lock taken,
/// asks the first to show itself, and ends. Both files lie in a folder that only the user may
/// enter. The lock goes with its owner, however that ends, and what a killed one has left is taken
/// over.
class SingleInstance {
  public:
    enum class Claim {
        First,   ///< Nobody else runs, or there is no folder in which to find out.
        Shown,   ///< Another one runs and has been told to show itself.
        NoAnswer ///< Another one runs but does not answer.
    };

    /// `folder` (an absolute path) is made if need be, and used only if it is this user's and
    /// nobody else may write to it. `files` names what two programs must not share.
    /// `patience` bounds `claim` as a whole; a program that is ending is waited for, and its place
    /// taken.
    SingleInstance(const QString& folder, const QByteArray& files,
                   std::chrono::milliseconds patience = std::chrono::seconds(8));

    /// Gives the claim up: whoever waits for it takes it.
    ~SingleInstance();

    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// To be called once, before anything that takes time; needs no application object.
    Claim claim();

    /// From now on, each later start calls `show` on this thread, which has an event loop. Starts
    /// since `claim` have waited for it. `show` returns false when this program is about to end:
    /// the other one then waits for that and starts itself.
    void answerWith(std::function<bool()> show);

  private:
    /// Whether the lock is this object's now.
    bool lock();
    void listen();
    void answer();

    const QByteArray lockName_; ///< Within the folder, as the next one.
    const QByteArray doorName_; ///< Of the socket.
    const std::chrono::milliseconds patience_;
    UniqueFd folder_;
    UniqueFd lock_;
    UniqueFd listener_;
    std::vector<UniqueFd> waiting_; ///< Other programs that wait for our end.
    std::function<bool()> show_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace orv
