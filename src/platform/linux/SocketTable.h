#pragma once

#include <QByteArrayView>
#include <QtGlobal>

namespace orv {

/// Whether one of the kernel's tables of sockets (`/proc/net/tcp`, `tcp6`, `udp` or `udp6`; one
/// line each, described in proc(5)) names a socket that a process holds and that has `port` at
/// either of its ends. Sockets that the kernel alone keeps, as those of closed connections, do not
/// count: their inode is 0. Lines that make no sense are passed over.
bool socketTableNamesPort(QByteArrayView table, quint16 port);

} // namespace orv
