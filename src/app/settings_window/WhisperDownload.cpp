#include "WhisperDownload.h"

#include "ChildProcess.h"
#include "Log.h"
#include "SpawnProgram.h"
#include "ThreadChecks.h"
#include "WhisperModels.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

WhisperDownload::WhisperDownload(DownloadPrograms programs, QString id, QObject* parent)
    : QObject(parent)
    , programs_(std::move(programs))
    , id_(std::move(id)) {}

WhisperDownload::~WhisperDownload() {
    giveUp();
    if (process_) {
        process_->waitForEnd(programs_.pause);
    }
}

QString WhisperDownload::start() {
    ORV_ON_MAIN();
    return QFileInfo::exists(programs_.script) ? fetch() : load(whisperDownloadScript(id_));
}

void WhisperDownload::giveUp() {
    ORV_ON_MAIN();
    if (process_) {
        process_->terminate();
    }
}

QString WhisperDownload::fetch() {
    return run({programs_.script, id_}, &WhisperDownload::fetched);
}

QString WhisperDownload::load(const QString& script) {
    return run({u"-c"_s, script}, &WhisperDownload::loaded);
}

QString WhisperDownload::run(const QStringList& arguments,
                             void (WhisperDownload::*finished)(int status)) {
    output_ = {};
    // Script and library take the cache from the environment, so both use the one that is shown.
    const QByteArray cache = QFile::encodeName(QFileInfo(programs_.cacheFolder).path());
    ChildProcess::Handlers handlers;
    handlers.output = [this, target = printed_.handle()](const QByteArray& bytes) {
        target.post([this, bytes] { printed(bytes); });
    };
    handlers.finished = [this, finished](int status) { (this->*finished)(status); };
    ChildProcess::Launch launch = ChildProcess::start(
        {.program = programs_.interpreter,
         .arguments = arguments,
         .environment = environmentWith(ownEnvironment(), "XDG_CACHE_HOME", cache)},
        this, std::move(handlers), programs_.pause);
    process_ = std::move(launch.process);
    return launch.error;
}

void WhisperDownload::printed(const QByteArray& bytes) {
    ORV_ON_MAIN();
    const std::optional<int> before = percent();
    for (const QString& note : output_.take(bytes)) {
        logLine(QString(u"Whisper-Modell " % id_ % u": " % note));
    }
    if (percent() != before) {
        Q_EMIT progressed();
    }
}

void WhisperDownload::fetched(int status) {
    ORV_ON_MAIN();
    process_.reset();
    if (status != 0) {
        Q_EMIT ended(reason(status));
        return;
    }
    isFetched_ = true;
    if (const QString problem = load(whisperProofScript(id_)); !problem.isEmpty()) {
        Q_EMIT ended(problem);
        return;
    }
    Q_EMIT progressed();
}

void WhisperDownload::loaded(int status) {
    ORV_ON_MAIN();
    process_.reset();
    Q_EMIT ended(status == 0 ? QString() : reason(status));
}

QString WhisperDownload::reason(int status) const {
    const QString said = output_.lastLine();
    return said.isEmpty() ? QString(programs_.interpreter % u" → " % QString::number(status))
                          : said;
}

} // namespace orv
