#pragma once

#include "Completion.h"
#include "HttpCall.h"
#include "HttpClient.h"

#include <QCoroTask>

#include <QByteArray>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>

namespace orv {

/// The largest answer of a service that is read, bytes.
inline constexpr std::int64_t maximumAnswerSize = 16'777'216;

/// A request that posts JSON.
HttpCall jsonCall(const QUrl& url, const QByteArray& json);

/// HTTP requests to services, for coroutines. Lives on the main thread.
class ServiceClient {
  public:
    ServiceClient();

    /// Ends every request under way: each throws `ServiceError` inside the destructor.
    ~ServiceClient();

    ServiceClient(const ServiceClient&) = delete;
    ServiceClient& operator=(const ServiceClient&) = delete;

    /// Sends `call` and returns the answer, whatever its status. Throws `ServiceError` when there
    /// is no whole answer: a connection that cannot be made, is not trusted or breaks, `timeout`
    /// without a byte in either direction, an answer beyond `maximumAnswerSize`. Redirections are
    /// not followed: they would take the key along.
    QCoro::Task<HttpOutcome> exchange(HttpCall call, std::chrono::milliseconds timeout);

  private:
    struct Request {
        std::unique_ptr<HttpExchange> exchange;
        Completion<HttpOutcome> outcome;
    };

    using Requests = std::list<Request>;

    Completion<HttpOutcome> start(HttpCall call, std::chrono::milliseconds timeout);
    void end(Requests::iterator request, const HttpOutcome& outcome);

    HttpClient http_;
    Requests requests_; ///< Under way.
};

} // namespace orv
