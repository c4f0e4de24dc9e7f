#pragma once

#include "HostLookups.h"
#include "HttpClient.h"

#include <QString>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>

namespace orv {

/// How much a session with vMix allows itself.
struct VmixLimits {
    /// For a whole request, from handing it over to the last byte of the answer.
    std::chrono::milliseconds request{2000};
    int connectionsPerHost = 2; ///< At a time, to one host and port.
    std::size_t waiting = 64;   ///< Requests that have no connection yet.
};

/// GET requests to vMix: those with a connection and those that wait for one. Lives on the main
/// thread; no call waits.
///
/// A request that gets no connection in time fails as one that gets no answer does. When more come
/// than can leave, the oldest that wait are dropped without a word, neither sent nor answered: of
/// the texts for a title only the newest matter. So besides the requests with a connection there
/// are never more than `VmixLimits::waiting`.
class VmixRequests {
  public:
    /// Called with the reason of a failure; empty for an answer.
    using Done = std::function<void(const QString& error)>;

    explicit VmixRequests(const VmixLimits& limits = {}, LookUpHost lookUp = systemLookUp);

    /// Ends what is under way, unanswered.
    ~VmixRequests() = default;

    VmixRequests(const VmixRequests&) = delete;
    VmixRequests& operator=(const VmixRequests&) = delete;

    /// Sends the request as soon as its host has a connection to spare. `done` is told of the first
    /// that comes, the answer or the deadline, and finds the request's own connection closed.
    /// `done` may be empty.
    void add(const QUrl& url, Done done, std::chrono::steady_clock::time_point deadline);

    /// The same, with the deadline that the limits say.
    void get(const QUrl& url, Done done);

  private:
    struct Request {
        QUrl url;
        Done done;
        std::chrono::steady_clock::time_point deadline;
        std::unique_ptr<HttpExchange> connection = {}; ///< None while it waits.
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
    HttpClient http_;
    Requests requests_;
    QTimer limit_; ///< Rings when the first request's time is up.
};

} // namespace orv
