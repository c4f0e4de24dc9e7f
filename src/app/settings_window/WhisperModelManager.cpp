#include "WhisperModelManager.h"

#include "Dialogs.h"
#include "FileJobs.h"
#include "Log.h"
#include "ModelArchive.h"
#include "ThreadChecks.h"
#include "WhisperModels.h"
#include "WhisperPackages.h"

#include <QDir>
#include <QFile>
#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QSet<QString> modelsIn(const QString& folder) {
    QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden);
    names.removeIf([&](const QString& name) {
        return name.endsWith(".pt"_L1) && modelArchiveIsCutShort(folder + u'/' + name);
    });
    return downloadedWhisperModels(names);
}

/// Why a model's files could not be removed; empty when none is left.
QString removeModel(const QString& folder, const QString& id) {
    for (const QString& name : whisperModelFiles(id)) {
        for (const QString& found : QStringList{name} + whisperPartFiles(name)) {
            QFile file(folder + u'/' + found);
            if (file.exists() && !file.remove()) {
                return QString(file.fileName() + u": "_s + file.errorString());
            }
        }
    }
    return {};
}

} // namespace

WhisperModelManager::WhisperModelManager(WhisperEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment)) {
    if (environment_.packages != nullptr) {
        connect(environment_.packages, &WhisperPackages::changed, this,
                &WhisperModelManager::changed);
        connect(environment_.packages, &WhisperPackages::modelDeleted, this,
                &WhisperModelManager::removed);
    }
}

WhisperModelManager::~WhisperModelManager() {
    // All at once, so that they end beside each other.
    for (const auto& [id, download] : downloads_) {
        download->giveUp();
    }
}

WhisperModelManager::State WhisperModelManager::state(const QString& id) const {
    ORV_ON_MAIN();
    if (const auto found = downloads_.find(id); found != downloads_.end()) {
        return found->second->isChecking() ? State::Checking : State::Downloading;
    }
    if (removing_.contains(id)) {
        return State::Removing;
    }
    if (failures_.contains(id)) {
        return State::Failed;
    }
    return stateOnDisk(id);
}

WhisperModelManager::State WhisperModelManager::stateOnDisk(const QString& id) const {
    // A file that no package here can load is none that people can use.
    if (servingPackage().isEmpty()) {
        return downloaded_.contains(id) ? State::Downloaded : State::Absent;
    }
    switch (copyOf(environment_.packages->inventory(), id).presence) {
    case Presence::There:
        return State::Downloaded;
    case Presence::Partial:
        return State::Partial;
    case Presence::Unusable:
        return State::Unusable;
    case Presence::Missing:
        break;
    }
    return State::Absent;
}

QString WhisperModelManager::servingPackage() const {
    return environment_.packages != nullptr ? environment_.packages->inventory().serves : QString();
}

bool WhisperModelManager::canDownload() const {
    const auto* packages = environment_.packages;
    return packages == nullptr || !packages->isKnown() || !packages->inventory().serves.isEmpty();
}

bool WhisperModelManager::isUsed(const QString& id) const {
    return environment_.packages != nullptr && uses(environment_.packages->inventory(), id);
}

StatusMessage WhisperModelManager::whyOther() const {
    return environment_.packages != nullptr ? environment_.packages->inventory().whyOther
                                            : StatusMessage();
}

std::optional<int> WhisperModelManager::percent(const QString& id) const {
    ORV_ON_MAIN();
    const auto found = downloads_.find(id);
    return found != downloads_.end() ? found->second->percent() : std::nullopt;
}

bool WhisperModelManager::isAtWork(const QString& id) const {
    return downloads_.contains(id) || removing_.contains(id);
}

void WhisperModelManager::refreshDownloadedModels() {
    ORV_ON_MAIN();
    if (environment_.packages != nullptr) {
        environment_.packages->refresh(environment_.chosenModel());
    }
    environment_.files.run(
        [folder = environment_.programs.cacheFolder] { return modelsIn(folder); },
        [self = QPointer(this)](const QSet<QString>& downloaded) {
            if (self && self->downloaded_ != downloaded) {
                self->downloaded_ = downloaded;
                Q_EMIT self->changed();
            }
        });
}

void WhisperModelManager::downloadWhisperModel(const QString& id) {
    ORV_ON_MAIN();
    if (isAtWork(id) || whisperModelFiles(id).isEmpty()) {
        return;
    }
    auto download = std::make_unique<WhisperDownload>(environment_.programs, id, this);
    if (const QString problem = download->start(); !problem.isEmpty()) {
        downloadFailed(id, problem,
                       environment_.text(u"engine.notinstalled"_s) + u"\n"_s +
                           environment_.programs.interpreter + u": "_s + problem);
        return;
    }
    logLine(u"⏳ Whisper-Modell wird geladen: "_s + id);
    connect(download.get(), &WhisperDownload::progressed, this, &WhisperModelManager::changed);
    connect(download.get(), &WhisperDownload::ended, this,
            [this, id](const QString& problem) { downloadEnded(id, problem); });
    downloads_.emplace(id, std::move(download));
    failures_.remove(id);
    Q_EMIT changed();
}

void WhisperModelManager::downloadEnded(const QString& id, const QString& problem) {
    ORV_ON_MAIN();
    // Not here and now: it is the download that tells. It is a child of the manager's until then.
    downloads_.extract(id).mapped().release()->deleteLater();
    if (problem.isEmpty()) {
        logLine(u"✓ Whisper-Modell geladen: "_s + id);
        Q_EMIT changed();
    } else {
        downloadFailed(id, problem, id + u": "_s + problem);
    }
    refreshDownloadedModels();
}

void WhisperModelManager::downloadFailed(const QString& id, const QString& reason,
                                         const QString& message) {
    logLine(u"❌ Whisper-Modell "_s + id + u": "_s + reason);
    failures_.insert(id, reason);
    Q_EMIT changed();
    showFailure(u"settings.whisper.failed"_s, message);
}

void WhisperModelManager::deleteWhisperModel(const QString& id) {
    ORV_ON_MAIN();
    if (isAtWork(id) || whisperModelFiles(id).isEmpty()) {
        return;
    }
    removing_.insert(id);
    Q_EMIT changed();
    environment_.files.run(
        [folder = environment_.programs.cacheFolder, id] { return removeModel(folder, id); },
        [self = QPointer(this), id](const QString& problem) {
            if (self) {
                self->filesRemoved(id, problem);
            }
        });
}

void WhisperModelManager::filesRemoved(const QString& id, const QString& problem) {
    // The packages' turn, where they keep models elsewhere.
    if (problem.isEmpty() && !servingPackage().isEmpty()) {
        environment_.packages->deleteModel(id);
    } else {
        removed(id, problem);
    }
}

void WhisperModelManager::removed(const QString& id, const QString& problem) {
    ORV_ON_MAIN();
    removing_.remove(id);
    if (problem.isEmpty()) {
        downloaded_.remove(id);
        failures_.remove(id);
        logLine(u"✓ Whisper-Modell gelöscht: "_s + id);
    } else {
        logLine(u"❌ Whisper-Modell nicht gelöscht: "_s + problem);
        showFailure(u"alert.failed.title"_s, problem);
    }
    Q_EMIT changed();
    refreshDownloadedModels();
}

void WhisperModelManager::showFailure(const QString& titleKey, const QString& message) {
    environment_.dialogs.showAlert({.style = AlertStyle::Warning,
                                    .title = environment_.text(titleKey),
                                    .message = message,
                                    .buttons = {environment_.text(u"alert.ok"_s)}});
}

} // namespace orv
