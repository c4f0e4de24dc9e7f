#pragma once

#include <QAbstractSocket>
#include <QTcpSocket>

#include <chrono>

namespace orv {

/// Has the system end a connection on which the other side does not confirm what was sent to it for
/// that long, as when a network goes without a word; by itself it goes on for a quarter of an hour.
/// Does nothing for a socket that is not connected. See TCP_USER_TIMEOUT in tcp(7).
void endConnectionWhenUnheard(const QAbstractSocket& socket, std::chrono::milliseconds patience);

/// Limits what the system takes before the other side has: what has not left is to be known, and
/// not to fill the memory. For sound: 64 KiB are two thirds of a second.
void limitSendBuffer(const QAbstractSocket& socket);

/// The bytes that the system has not taken yet, whether they are encrypted already or not.
qint64 bytesNotTaken(const QTcpSocket& socket);

} // namespace orv
