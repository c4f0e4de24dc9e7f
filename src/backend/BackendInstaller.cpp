#include "BackendInstaller.h"

#include "BackendLog.h"
#include "Log.h"
#include "ThreadChecks.h"

#include <csignal>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

BackendInstaller::BackendInstaller(ChildCommand command, std::chrono::milliseconds pause,
                                   BackendLog* log, QObject* parent)
    : QObject(parent)
    , command_(std::move(command))
    , pause_(pause)
    , log_(log) {}

BackendInstaller::~BackendInstaller() {
    giveUp();
    if (process_ && !process_->waitForEnd(pause_)) {
        signalAll(SIGKILL);
        process_->waitForEnd(pause_);
    }
}

void BackendInstaller::giveUp() {
    ORV_ON_MAIN();
    signalAll(SIGTERM);
}

void BackendInstaller::signalAll(int signal) {
    // The whole group: the installer's own children do the work. It is the leader's number that is
    // sent to, and the leader has not been waited for yet.
    if (process_ && process_->isRunning()) {
        ::kill(static_cast<pid_t>(-process_->processIdentifier()), signal);
    }
}

void BackendInstaller::install() {
    ORV_ON_MAIN();
    if (process_) {
        return;
    }
    output_ = {};
    logLine(u"⏳ Backend wird installiert: "_s + command_.program);
    if (log_ != nullptr) {
        log_->begin(command_.program);
    }
    ChildProcess::Handlers handlers;
    handlers.output = [this, log = log_, target = printed_.handle()](const QByteArray& bytes) {
        if (log != nullptr) {
            log->write(bytes);
        }
        target.post([this, bytes] { printed(bytes); });
    };
    handlers.finished = [this](int status) { finish(status); };
    ChildProcess::Launch launch = ChildProcess::start(command_, this, std::move(handlers), pause_);
    process_ = std::move(launch.process);
    if (!process_) {
        logLine(QString(u"❌ Backend-Installation: " % launch.error));
        Q_EMIT ended(false, launch.error);
    }
}

void BackendInstaller::printed(const QByteArray& bytes) {
    ORV_ON_MAIN();
    const QString before = output_.step();
    const std::optional<int> percentBefore = output_.percent();
    for (const QString& line : output_.take(bytes)) {
        logLine(u"Backend-Installation: "_s + line);
    }
    if (output_.step() != before) {
        Q_EMIT stepChanged(output_.step());
    }
    if (output_.percent() != percentBefore) {
        Q_EMIT percentChanged();
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
    // One that ends without a word has a reason, too.
    const QString said = output_.lastLine();
    Q_EMIT ended(status == 0, said.isEmpty()
                                  ? QString(command_.program % u" → " % QString::number(status))
                                  : said);
}

} // namespace orv
