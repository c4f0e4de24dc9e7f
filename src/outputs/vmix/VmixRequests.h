#pragma once

#include "HostLookups.h"
#include "HttpGet.h"
#include "VmixSession.h"

#include <QTimer>
#include <QUrl>

#include <chrono>
#include <list>
#include <memory>

namespace orv {

/// The requests of a `VmixSession`: those with a connection and those that wait for one. Lives on
/// the session's thread.
class VmixRequests {
  public:
    VmixRequests(const VmixLimits& limits, LookUpHost lookUp);

    /// Ends what is under way, unanswered.
    ~VmixRequests() = default;

    VmixRequests(const VmixRequests&) = delete;
    VmixRequests& operator=(const VmixRequests&) = delete;

    /// Sends the request as soon as its host has a connection to spare. `done` is told of the first
    /// that comes, the answer or the deadline, and finds the request's own connection closed.
    void add(const QUrl& url, VmixSession::Done done,
             std::chrono::steady_clock::time_point deadline);

  private:
    struct Request {
        QUrl url;
        VmixSession::Done done;
        std::chrono::steady_clock::time_point deadline;
        std::unique_ptr<HttpGet> connection = {}; ///< None while it waits.
    };

    using Requests = std::list<Request>; // Oldest first; the first one's time is up first.

    int connectionsTo(const QUrl& url) const;
    void startNext();
    void start(Requests::iterator request);
    void dropOldest();
    void end(Requests::iterator request, const QString& error);
    void watchFirst();
    void endOverdue();

    const VmixLimits limits_;
    HostLookups lookups_;
    Requests requests_;
    QTimer limit_; ///< Rings when the first request's time is up.
};

} // namespace orv
