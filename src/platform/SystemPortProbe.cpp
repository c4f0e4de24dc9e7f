#include "SystemPortProbe.h"

#include <QFileInfo>
#include <QProcess>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

SystemPortProbe::SystemPortProbe(QString tool, std::chrono::milliseconds limit)
    : tool_(std::move(tool))
    , limit_(limit) {}

QString SystemPortProbe::systemTool() {
    const QString usual = u"/usr/sbin/lsof"_s;
    return QFileInfo::exists(usual) ? usual : u"lsof"_s;
}

bool SystemPortProbe::isPortInUse(quint16 port) {
    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.setStandardInputFile(QProcess::nullDevice());
    tool.start(tool_, {u"-i"_s, u":"_s + QString::number(port)}, QIODevice::ReadOnly);
    if (!tool.waitForFinished(static_cast<int>(limit_.count()))) {
        tool.kill();
        tool.waitForFinished();
    }
    return !QString::fromUtf8(tool.readAll()).trimmed().isEmpty();
}

std::unique_ptr<PortProbe> createSystemPortProbe() {
    return std::make_unique<SystemPortProbe>(SystemPortProbe::systemTool());
}

} // namespace orv
