#pragma once

#include "HttpHeaders.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <optional>

namespace orv {

/// One HTTP request.
struct HttpCall {
    QUrl url; ///< With the scheme "http" or "https", and a host. Credentials in it are not sent.
    /// Beside `Host` and `Content-Length`. Without control characters.
    HttpHeaders headers = {};
    std::optional<QByteArray> body = {}; ///< With one it is a POST request, else GET.
};

/// How much of an answer is waited for and kept. Whoever has had enough otherwise destroys the
/// exchange.
struct HttpLimits {
    std::optional<std::chrono::milliseconds> whole = {}; ///< From the call to the last byte.
    /// Without a byte in either direction, from the call on.
    std::optional<std::chrono::milliseconds> idle = {};
    /// Bytes of the answer's content; more is a failure. Without one the content is thrown away as
    /// it comes, whatever its size.
    std::optional<std::int64_t> largestBody = {};
};

/// How an exchange has ended. Any whole answer is an outcome without an error, whatever its status.
struct HttpOutcome {
    QString error = {};    ///< Why there is no whole answer; empty for one.
    bool timedOut = false; ///< The error is that a limit of time was reached.
    int status = 0;
    HttpHeaders headers = {}; ///< Names in lower case.
    QByteArray body = {};
};

/// Whether the connection is to carry further requests.
enum class AfterAnswer { Close, Keep };

/// The bytes of the HTTP/1.1 request.
QByteArray requestBytes(const HttpCall& call, AfterAnswer afterAnswer);

} // namespace orv
