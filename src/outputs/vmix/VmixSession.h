#pragma once

#include "EventLoopThread.h"
#include "HostLookups.h"

#include <QString>
#include <QUrl>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace orv {

class VmixRequests;

/// How much a session allows itself.
struct VmixLimits {
    /// For a whole request, from handing it over to the last byte of the answer.
    std::chrono::milliseconds request{2000};
    int connectionsPerHost = 2; ///< At a time, to one host and port.
    std::size_t waiting = 64;   ///< Requests that have no connection yet.
};

/// GET requests to vMix from a thread of its own. No call waits.
///
/// A request that gets no connection in time fails as one that gets no answer does. When more come
/// than can leave, the oldest that wait are dropped without a word, neither sent nor answered: of
/// the texts for a title only the newest matter. So besides the requests with a connection there
/// are never more than three times `waiting`: those that wait for the thread, those that it is just
/// taking over, and those that wait for a connection.
class VmixSession {
  public:
    /// Called on the session's thread with the reason of a failure; empty for an answer.
    using Done = std::function<void(const QString& error)>;

    explicit VmixSession(VmixLimits limits = {}, LookUpHost lookUp = systemLookUp);

    /// Ends what is under way, unanswered.
    ~VmixSession();

    VmixSession(const VmixSession&) = delete;
    VmixSession& operator=(const VmixSession&) = delete;

    /// Asks for `url`. `done` may be empty. Callable from any thread.
    void get(const QUrl& url, Done done);

  private:
    struct Order {
        QUrl url;
        Done done;
        std::chrono::steady_clock::time_point deadline;
    };

    void startWaiting();

    const VmixLimits limits_;
    LookUpHost lookUp_;
    std::mutex mutex_;
    std::deque<Order> orders_;               ///< Under the lock.
    std::unique_ptr<VmixRequests> requests_; ///< Of the thread.
    EventLoopThread thread_;
};

} // namespace orv
