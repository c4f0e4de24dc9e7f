#pragma once

#include "HttpCall.h"

#include <QByteArray>
#include <QUrl>

namespace orv {

/// The answer's status where a WebSocket was opened.
inline constexpr int switchingProtocols = 101;

/// The request that opens the WebSocket `url`, for reading the answer as one of HTTP.
HttpCall upgradeCall(QUrl url, const QByteArray& authorization);

/// `url` of a WebSocket, for requests to the same host. What is invalid stays so.
QUrl httpUrl(QUrl url);

} // namespace orv
