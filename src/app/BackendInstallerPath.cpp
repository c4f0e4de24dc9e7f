#include "BackendInstallerPath.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orv {

QString backendInstaller() {
    const QString beside = QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                           u"/../share/orvane/scripts/install-backend"_s);
    return QFileInfo(beside).isExecutable() ? beside : QStringLiteral(ORVANE_BACKEND_INSTALLER);
}

} // namespace orv
