#include "BackendEnvironment.h"

#include "Log.h"
#include "SpawnProgram.h"

#include <QFile>
#include <QFileInfo>
#include <QStringBuilder>

namespace orv {

namespace {

QList<QByteArray> childEnvironment(const QString& home) {
    return home.isEmpty() ? ownEnvironment()
                          : environmentWith(ownEnvironment(), "HOME", QFile::encodeName(home));
}

} // namespace

bool BackendEnvironment::isInstalled() const {
    logLine(QString(u"🔍 Suche Python: " % interpreter));
    logLine(QString(u"🔍 Suche Server: " % script));
    const bool interpreterExists = QFileInfo::exists(interpreter);
    const bool scriptExists = QFileInfo::exists(script);
    if (!interpreterExists || !scriptExists) {
        logLine(QString(u"❌ Python existiert? " % boolText(interpreterExists)));
        logLine(QString(u"❌ Server existiert? " % boolText(scriptExists)));
    }
    return interpreterExists && scriptExists;
}

ChildCommand BackendEnvironment::serverCommand() const {
    return {interpreter,
            {script},
            environmentWith(childEnvironment(home), "ORV_BIND_HOST",
                            networkAccess() ? "0.0.0.0" : "localhost")};
}

ChildCommand BackendEnvironment::installerCommand() const {
    return {installer, {}, childEnvironment(home)};
}

} // namespace orv
