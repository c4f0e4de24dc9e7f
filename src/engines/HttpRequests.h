#pragma once

#include <QCoroTask>

#include <QByteArray>
#include <QNetworkRequest>

#include <chrono>
#include <cstdint>
#include <memory>

namespace orv {

/// The largest answer of a service that is read, bytes.
inline constexpr std::int64_t maximumAnswerSize = 16'777'216;

/// HTTP requests to services. Lives on the main thread.
class HttpRequests {
  public:
    HttpRequests();

    /// Ends every request under way: each throws `ServiceError` inside the destructor.
    ~HttpRequests();

    HttpRequests(const HttpRequests&) = delete;
    HttpRequests& operator=(const HttpRequests&) = delete;

    /// Posts `body` and returns the body of the answer, whatever its status. Throws `ServiceError`
    /// when there is no whole answer: a connection that cannot be made, is not trusted or breaks,
    /// `timeout` without a byte in either direction, an answer beyond `maximumAnswerSize`.
    /// Redirections are not followed: they would take the key along.
    QCoro::Task<QByteArray> post(QNetworkRequest request, QByteArray body,
                                 std::chrono::milliseconds timeout);

  private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace orv
