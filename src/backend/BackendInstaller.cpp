#include "BackendInstaller.h"

#include "Log.h"
#include "SpawnProgram.h"
#include "ThreadChecks.h"

#include <csignal>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

BackendInstaller::BackendInstaller(QString program, std::chrono::milliseconds pause,
                                   QObject* parent)
    : QObject(parent)
    , program_(std::move(program))
    , pause_(pause) {}

BackendInstaller::~BackendInstaller() {
    if (process_ && process_->isRunning()) {
        // The whole group: the installer's own children do the work. It is the leader's number
        // that is sent to, and the leader has not been waited for yet.
        ::kill(static_cast<pid_t>(-process_->processIdentifier()), SIGTERM);
        if (!process_->waitForEnd(pause_)) {
            ::kill(static_cast<pid_t>(-process_->processIdentifier()), SIGKILL);
            process_->waitForEnd(pause_);
        }
    }
}

void BackendInstaller::install() {
    ORV_ON_MAIN();
    if (process_) {
        return;
    }
    output_ = {};
    logLine(u"⏳ Backend wird installiert: "_s + program_);
    ChildProcess::Handlers handlers;
    handlers.output = [this, target = printed_.handle()](const QByteArray& bytes) {
        target.post([this, bytes] { printed(bytes); });
    };
    handlers.finished = [this](int status) { finish(status); };
    ChildProcess::Launch launch =
        ChildProcess::start({program_, {}, ownEnvironment()}, this, std::move(handlers), pause_);
    process_ = std::move(launch.process);
    if (!process_) {
        logLine(QString(u"❌ Backend-Installation: " % launch.error));
        Q_EMIT ended(false, launch.error);
    }
}

void BackendInstaller::printed(const QByteArray& bytes) {
    ORV_ON_MAIN();
    const QString before = output_.step();
    for (const QString& line : output_.take(bytes)) {
        logLine(u"Backend-Installation: "_s + line);
    }
    if (output_.step() != before) {
        Q_EMIT stepChanged(output_.step());
    }
}

void BackendInstaller::finish(int status) {
    ORV_ON_MAIN();
    process_.reset();
    if (status == 0) {
        logLine(u"✓ Backend installiert");
    } else {
        logLine(QString(u"❌ Backend-Installation beendet mit Code: " % QString::number(status)));
    }
    Q_EMIT ended(status == 0, output_.lastLine());
}

} // namespace orv
