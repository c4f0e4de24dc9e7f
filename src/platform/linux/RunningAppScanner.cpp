#include "RunningAppScanner.h"

#include "DesktopEntry.h"
#include "SerialQueue.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QPointer>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QSet<QString> runningBinaries(const RunningAppPlaces& places) {
    QSet<QString> binaries;
    const QDir processes(places.processes);
    for (const QString& entry : processes.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool isNumber = false;
        const qint64 process = entry.toLongLong(&isNumber);
        if (!isNumber || process == places.ownProcess) {
            continue;
        }
        const QString folder = processes.filePath(entry);
        if (QFileInfo(folder).ownerId() != ::getuid()) {
            continue;
        }
        const QString target = QFile::symLinkTarget(folder + u"/exe");
        binaries.insert(target.mid(target.lastIndexOf(u'/') + 1));
    }
    binaries.remove({});
    return binaries;
}

} // namespace

RunningAppPlaces RunningAppPlaces::ofThisMachine() {
    RunningAppPlaces places;
    places.applications = QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    places.ownProcess = QCoreApplication::applicationPid();
    return places;
}

QList<RunningApp> scanRunningApps(const RunningAppPlaces& places) {
    const QSet<QString> binaries = runningBinaries(places);
    QHash<QString, QString> names;
    for (const QString& path : places.applications) {
        const QDir folder(path);
        for (const QString& file : folder.entryList({u"*.desktop"_s}, QDir::Files, QDir::Name)) {
            QFile contents(folder.filePath(file));
            if (!contents.open(QIODevice::ReadOnly)) {
                continue;
            }
            const auto entry = parseDesktopEntry(contents.readAll());
            if (entry && binaries.contains(entry->binary) && !names.contains(entry->binary)) {
                names.insert(entry->binary, entry->name);
            }
        }
    }
    QList<RunningApp> apps;
    for (auto one = names.cbegin(); one != names.cend(); ++one) {
        apps.append({.bundleId = one.key(), .name = one.value()});
    }
    std::sort(apps.begin(), apps.end(), [](const RunningApp& a, const RunningApp& b) {
        return std::pair(a.name.toCaseFolded(), a.bundleId) <
               std::pair(b.name.toCaseFolded(), b.bundleId);
    });
    return apps;
}

RunningAppScanner::RunningAppScanner(SerialQueue& disk, RunningAppPlaces places)
    : disk_(disk)
    , places_(std::move(places)) {}

void RunningAppScanner::scan(QObject* context, std::function<void(const QList<RunningApp>&)> done) {
    disk_.post([places = places_, back = back_.handle(), receiver = QPointer(context),
                done = std::move(done)]() mutable {
        // The receiver is looked at on its own thread only.
        back.post([receiver = std::move(receiver), done = std::move(done),
                   apps = scanRunningApps(places)] {
            if (receiver) {
                done(apps);
            }
        });
    });
}

} // namespace orv
