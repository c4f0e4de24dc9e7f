#include "RunningAppScanner.h"

#include "DesktopEntries.h"
#include "SerialQueue.h"
#include "ThreadChecks.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
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

QList<RunningApp> scanRunningApps(const RunningAppPlaces& places, DesktopEntries& entries) {
    const QSet<QString> binaries = runningBinaries(places);
    QHash<QString, QString> names;
    for (const DesktopEntry& entry : entries.list()) {
        if (binaries.contains(entry.binary) && !names.contains(entry.binary)) {
            names.insert(entry.binary, entry.name);
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
    , places_(std::move(places))
    , entries_(std::make_shared<DesktopEntries>(places_.applications)) {}

void RunningAppScanner::scan(QObject* context, std::function<void(const QList<RunningApp>&)> done) {
    ORV_ON_MAIN();
    waiting_.push_back({context, std::move(done)});
    if (!std::exchange(isScanning_, true)) {
        // Whoever asks within the same turn of the event loop shares the look.
        back_.handle().post([this] { begin(); });
    }
}

void RunningAppScanner::begin() {
    ++looks_;
    disk_.post([places = places_, entries = entries_, back = back_.handle(), this,
                asking = std::exchange(waiting_, {})]() mutable {
        // Those who ask are looked at on their own thread only.
        back.post([this, asking = std::move(asking), apps = scanRunningApps(places, *entries)] {
            isScanning_ = !waiting_.empty();
            if (isScanning_) {
                begin();
            }
            for (const Question& question : asking) {
                if (question.context) {
                    question.done(apps); // May destroy the scanner.
                }
            }
        });
    });
}

} // namespace orv
