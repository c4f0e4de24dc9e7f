#include "SystemPortProbe.h"

#include "SocketTable.h"
#include "ThreadedPortProbe.h"

#include <QFile>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

SystemPortProbe::SystemPortProbe(QString tables, LsofPortProbe fallback)
    : tables_(std::move(tables))
    , fallback_(std::move(fallback)) {}

std::optional<bool> SystemPortProbe::isPortInUse(quint16 port) {
    // A kernel without version 6 of the protocol lacks two of them.
    bool hasRead = false;
    bool hasReadAll = true;
    for (const QString& name : {u"tcp"_s, u"tcp6"_s, u"udp"_s, u"udp6"_s}) {
        QFile table(tables_ + u'/' + name);
        if (!table.open(QIODevice::ReadOnly)) {
            hasReadAll = hasReadAll && !table.exists();
            continue;
        }
        const QByteArray lines = table.readAll();
        hasReadAll = hasReadAll && table.error() == QFile::NoError;
        hasRead = hasRead || !lines.isEmpty(); // There is a line of headings.
        if (socketTableNamesPort(lines, port)) {
            return true;
        }
    }
    return hasRead && hasReadAll ? false : fallback_.isPortInUse(port);
}

std::unique_ptr<PortProbe> createSystemPortProbe() {
    return std::make_unique<ThreadedPortProbe>(std::make_unique<SystemPortProbe>());
}

} // namespace orv
