#include "UserPaths.h"

#include <QDir>
#include <QFile>

#include <array>
#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// The account's home directory; the root directory if the system knows none.
QString accountHome() {
    std::array<char, 16384> buffer = {};
    passwd entry = {};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    const QString home = found != nullptr ? QFile::decodeName(found->pw_dir) : QString();
    return QDir::isAbsolutePath(home) ? home : QDir::rootPath();
}

} // namespace

UserPaths UserPaths::fromEnvironment() {
    UserPaths paths;
    const QString home = QFile::decodeName(qgetenv("HOME"));
    paths.home = QDir::cleanPath(QDir::isAbsolutePath(home) ? home : accountHome());
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

QString UserPaths::backendLog() const {
    return supportFolder() + u"/backend.log";
}

QString UserPaths::outputFolder() const {
    return supportFolder() + u"/output";
}

QString UserPaths::whisperCache() const {
    return home + u"/.cache/whisper";
}

} // namespace orv
