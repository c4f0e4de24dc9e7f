#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace orv {

/// As much of a request as is ever looked at: its first read, at most this many bytes.
inline constexpr qsizetype httpFirstReadBytes = 8192;

/// The path a request asks for, with its query: the second of the words, separated by spaces, on
/// the first line of `firstRead`. "/" when there are fewer than two words, no bytes, or bytes that
/// are not valid UTF-8. The method is not looked at.
QByteArray requestPath(QByteArrayView firstRead);

/// True when `firstRead` is surely all that the client sends before it reads the answer: a head
/// that ends in an empty line, announces no body and did not fill the read.
bool isWholeRequest(QByteArrayView firstRead);

} // namespace orv
