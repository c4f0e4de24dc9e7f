#include "UserPaths.h"

#include <QDir>
#include <QFile>

#include <array>
#include <pwd.h>
#include <sys/stat.h>
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

bool isOwnFolder(const QString& path) {
    struct stat found = {};
    return QDir::isAbsolutePath(path) && ::stat(QFile::encodeName(path).constData(), &found) == 0 &&
           S_ISDIR(found.st_mode) && found.st_uid == ::getuid();
}

/// Empty when there is none.
QString runtimeFolder() {
    for (const QString& path : {qEnvironmentVariable("XDG_RUNTIME_DIR"),
                                QString(u"/run/user/"_s + QString::number(::getuid()))}) {
        if (isOwnFolder(path)) {
            return QDir::cleanPath(path);
        }
    }
    return {};
}

} // namespace

UserPaths UserPaths::fromEnvironment() {
    UserPaths paths;
    const QByteArray named = qgetenv("HOME");
    const QString home = QFile::decodeName(named);
    paths.homeHasName = QFile::encodeName(home) == named;
    paths.home = QDir::cleanPath(QDir::isAbsolutePath(home) ? home : accountHome());
    const QString configured = qEnvironmentVariable("XDG_CONFIG_HOME");
    paths.configHome =
        QDir::isAbsolutePath(configured) ? QDir::cleanPath(configured) : paths.home + u"/.config";
    const QString cached = qEnvironmentVariable("XDG_CACHE_HOME");
    if (QDir::isAbsolutePath(cached)) {
        paths.cacheHome = QDir::cleanPath(cached);
    }
    const QString runtime = runtimeFolder();
    paths.runtime = runtime.isEmpty() ? paths.settingsFolder() : runtime;
    return paths;
}

QString UserPaths::settingsFolder() const {
    return configHome + u"/orvane";
}

QString UserPaths::defaultsFile() const {
    return settingsFolder() + u"/defaults.json";
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

QString UserPaths::modelScript() const {
    return supportFolder() + u"/backend/fetch_model.py";
}

QString UserPaths::backendLog() const {
    return supportFolder() + u"/backend.log";
}

QString UserPaths::earlierBackendLog() const {
    return backendLog() + u".1";
}

QString UserPaths::outputFolder() const {
    return supportFolder() + u"/output";
}

QString UserPaths::whisperCache() const {
    return (cacheHome.isEmpty() ? QString(home + u"/.cache") : cacheHome) + u"/whisper";
}

} // namespace orv
