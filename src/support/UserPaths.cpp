#include "UserPaths.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace orv {

UserPaths UserPaths::fromEnvironment() {
    UserPaths paths;
    paths.home = QDir::homePath();
    const QString configured = qEnvironmentVariable("XDG_CONFIG_HOME");
    paths.configHome =
        QDir::isAbsolutePath(configured) ? QDir::cleanPath(configured) : paths.home + u"/.config";
    return paths;
}

QString UserPaths::defaultsFile() const {
    return configHome + u"/orvane/defaults.json";
}

QString UserPaths::supportFolder() const {
    return home + u"/Library/Application Support/Orvane";
}

QString UserPaths::backendInterpreter() const {
    return supportFolder() + u"/venv/bin/python3";
}

QString UserPaths::backendScript() const {
    return supportFolder() + u"/backend/server.py";
}

QString UserPaths::outputFolder() const {
    return supportFolder() + u"/output";
}

} // namespace orv
