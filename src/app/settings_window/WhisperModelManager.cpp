#include "WhisperModelManager.h"

#include "Dialogs.h"
#include "FileJobs.h"
#include "Log.h"
#include "SpawnProgram.h"
#include "ThreadChecks.h"
#include "WhisperModels.h"

#include <QDir>
#include <QFile>
#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

// The end of what a download prints is all that is looked at.
constexpr qsizetype keptOutput = 4096;

QStringList filesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden);
}

/// Why a model's files could not be removed; empty when none is left.
QString removeModel(const QString& folder, const QString& id) {
    for (const QString& name : whisperModelFiles(id)) {
        QFile file(folder + u'/' + name);
        if (file.exists() && !file.remove()) {
            return QString(file.fileName() + u": "_s + file.errorString());
        }
    }
    return {};
}

} // namespace

WhisperModelManager::WhisperModelManager(WhisperEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment)) {}

WhisperModelManager::~WhisperModelManager() {
    // In order: no end of a download is told once the processes go.
    downloads_.clear();
}

WhisperModelManager::State WhisperModelManager::state(const QString& id) const {
    ORV_ON_MAIN();
    if (downloads_.contains(id)) {
        return State::Downloading;
    }
    if (removing_.contains(id)) {
        return State::Removing;
    }
    return downloaded_.contains(id) ? State::Downloaded : State::Absent;
}

void WhisperModelManager::refreshDownloadedModels() {
    ORV_ON_MAIN();
    environment_.files.run(
        [folder = environment_.cacheFolder] { return downloadedWhisperModels(filesIn(folder)); },
        [self = QPointer(this)](const QSet<QString>& downloaded) {
            if (self && self->downloaded_ != downloaded) {
                self->downloaded_ = downloaded;
                Q_EMIT self->changed();
            }
        });
}

void WhisperModelManager::downloadWhisperModel(const QString& id) {
    ORV_ON_MAIN();
    const State now = state(id);
    if (now == State::Downloading || now == State::Removing || whisperModelFiles(id).isEmpty()) {
        return;
    }
    // Written by the reading thread, read here once that has said that the program is over.
    const auto output = std::make_shared<QByteArray>();
    ChildProcess::Launch launch = ChildProcess::start(
        {.program = environment_.interpreter,
         .arguments = {u"-c"_s, whisperDownloadScript(id)},
         .environment = ownEnvironment()},
        context_.get(),
        {.output =
             [output](const QByteArray& bytes) {
                 output->append(bytes);
                 *output = output->right(keptOutput);
             },
         .finished = [this, id, output](int status) { downloadFinished(id, status, *output); }},
        environment_.pause);
    if (!launch.process) {
        logLine(u"❌ Whisper-Modell "_s + id + u": "_s + launch.error);
        showFailure(u"settings.whisper.failed"_s, environment_.text(u"engine.notinstalled"_s) +
                                                      u"\n"_s + environment_.interpreter + u": "_s +
                                                      launch.error);
        return;
    }
    logLine(u"⏳ Whisper-Modell wird geladen: "_s + id);
    downloads_.emplace(id, std::move(launch.process));
    Q_EMIT changed();
}

void WhisperModelManager::downloadFinished(const QString& id, int status,
                                           const QByteArray& output) {
    ORV_ON_MAIN();
    downloads_.erase(id);
    if (status == 0) {
        logLine(u"✓ Whisper-Modell geladen: "_s + id);
    } else {
        const QString said = lastLine(output);
        const QString reason =
            said.isEmpty() ? QString(environment_.interpreter + u" → "_s + QString::number(status))
                           : said;
        logLine(u"❌ Whisper-Modell "_s + id + u": "_s + reason);
        showFailure(u"settings.whisper.failed"_s, id + u": "_s + reason);
    }
    Q_EMIT changed();
    refreshDownloadedModels();
}

void WhisperModelManager::deleteWhisperModel(const QString& id) {
    ORV_ON_MAIN();
    const State now = state(id);
    if (now == State::Downloading || now == State::Removing || whisperModelFiles(id).isEmpty()) {
        return;
    }
    removing_.insert(id);
    Q_EMIT changed();
    environment_.files.run(
        [folder = environment_.cacheFolder, id] { return removeModel(folder, id); },
        [self = QPointer(this), id](const QString& problem) {
            if (self) {
                self->removed(id, problem);
            }
        });
}

void WhisperModelManager::removed(const QString& id, const QString& problem) {
    ORV_ON_MAIN();
    removing_.remove(id);
    if (problem.isEmpty()) {
        downloaded_.remove(id);
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
