#include "SocketTable.h"

#include <QByteArray>
#include <QList>

namespace orv {

namespace {

// What stands where in a line.
constexpr qsizetype localAddress = 1;
constexpr qsizetype remoteAddress = 2;
constexpr qsizetype inode = 9;

/// "0100007F:223D" is port 0x223D.
bool hasPort(const QByteArray& address, quint16 port) {
    bool isNumber = false;
    const quint16 found = address.mid(address.lastIndexOf(':') + 1).toUShort(&isNumber, 16);
    return isNumber && found == port;
}

bool lineNamesPort(const QByteArray& line, quint16 port) {
    const QList<QByteArray> fields = line.simplified().split(' ');
    return fields.size() > inode && fields[inode].toULongLong() != 0 &&
           (hasPort(fields[localAddress], port) || hasPort(fields[remoteAddress], port));
}

} // namespace

bool socketTableNamesPort(QByteArrayView table, quint16 port) {
    const QList<QByteArray> lines = table.toByteArray().split('\n');
    for (const QByteArray& line : lines) {
        if (lineNamesPort(line, port)) {
            return true;
        }
    }
    return false;
}

} // namespace orv
