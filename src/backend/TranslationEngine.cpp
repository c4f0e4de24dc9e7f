#include "TranslationEngine.h"

#include "BackendAlerts.h"
#include "Dialogs.h"
#include "Log.h"
#include "PortProbe.h"
#include "ThreadChecks.h"

#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

TranslationEngine::TranslationEngine(BackendEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment))
    , installer_(environment_.installerCommand(), environment_.timings.stopPause, environment_.log)
    , statusKey_(u"engine.stopped"_s) {
    checkTimer_.setTimerType(Qt::PreciseTimer);
    connect(&checkTimer_, &QTimer::timeout, this, &TranslationEngine::checkLiveness);
    portCheck_.setTimerType(Qt::PreciseTimer);
    portCheck_.setSingleShot(true);
    connect(&portCheck_, &QTimer::timeout, this, &TranslationEngine::checkBackendStatus);
    doubtCheck_.setSingleShot(true);
    connect(&doubtCheck_, &QTimer::timeout, this, [this] {
        if (isRunning_) {
            checkLiveness();
        }
    });
    connect(&installer_, &BackendInstaller::stepChanged, this, &TranslationEngine::retranslate);
    connect(&installer_, &BackendInstaller::ended, this, &TranslationEngine::installationEnded);
}

TranslationEngine::~TranslationEngine() {
    ORV_ON_MAIN();
    checkTimer_.stop();
    if (leftRunning_) {
        return;
    }
    TranslationEngine::stopBackend();
    endChildNow();
}

bool TranslationEngine::isBusy() const {
    ORV_ON_MAIN();
    return isRunning_ || child_.isRunning() || installer_.isRunning();
}

QString TranslationEngine::statusMessage() const {
    ORV_ON_MAIN();
    QString text = environment_.text(statusKey_);
    if (installer_.isRunning()) {
        // Only the text of an installation has a place for how far it is.
        text.replace(u"%1"_s, installer_.step().isEmpty() ? u"…"_s : installer_.step());
    }
    return text;
}

QString TranslationEngine::statusDetail() const {
    ORV_ON_MAIN();
    return lastWords_.isEmpty()
               ? QString()
               : environment_.text(u"engine.lastwords"_s).replace(u"%1"_s, lastWords_);
}

void TranslationEngine::startBackend() {
    ORV_ON_MAIN();
    if (startsNothing_) {
        return;
    }
    setLastWords({});
    startsWhenStopped_ = isBeingStopped();
    if (isPortInUse()) {
        if (!child_.process) {
            ++stopNumber_; // A stop that has nobody to send signals to would only forget it again.
        }
        logLine(QString(u"✓ Backend läuft bereits auf Port " % QString::number(environment_.port)));
        setState(true, u"engine.running"_s);
        Q_EMIT BackendStatusChanged(true);
        startStatusCheckTimer();
        return;
    }
    if (installer_.isRunning()) {
        startsWhenInstalled_ = true;
        setStatus(u"engine.installing"_s);
        return;
    }
    if (child_.isRunning()) {
        logLine(u"⚠️ Backend-Prozess läuft, warte auf Port...");
        setStatus(u"engine.starting"_s);
        if (!portCheck_.isActive()) {
            checkLater(environment_.timings.portRecheck);
        }
        return;
    }
    if (isRunning_) {
        logLine(u"Backend läuft bereits");
        return;
    }
    setStatus(u"engine.starting"_s);
    if (!environment_.isInstalled()) {
        setStatus(u"engine.notinstalled"_s);
        showBackendInstallAlert();
        return;
    }
    launchBackend();
}

void TranslationEngine::launchBackend() {
    retireChild();
    const quint64 launch = ++launches_;

    const ChildCommand command = environment_.serverCommand();
    const auto output = std::make_shared<BackendOutput>(environment_.log);
    output->begin(command);
    ChildProcess::Handlers handlers;
    handlers.output = [output](const QByteArray& bytes) { output->take(bytes); };
    handlers.finished = [this, launch](int status) { childFinished(launch, status); };

    ChildProcess::Launch launched =
        ChildProcess::start(command, this, std::move(handlers), environment_.timings.stopPause);
    if (!launched.process) {
        setStatus(u"engine.failed"_s);
        logLine(QString(u"Failed to start backend: " % launched.error));
        setLastWords(launched.error);
        return;
    }
    child_ = {.launch = launch,
              .process = std::move(launched.process),
              .output = output,
              .nextSignal = {}};
    refreshMayOutlive();
    logLine(u"✓ Backend-Prozess gestartet, warte 6 Sekunden auf Modell-Laden...");
    checkLater(environment_.timings.modelLoading);
}

void TranslationEngine::checkLater(std::chrono::milliseconds delay) {
    portCheck_.start(delay);
}

void TranslationEngine::checkBackendStatus() {
    ORV_ON_MAIN();
    refreshMayOutlive();
    if (isPortInUse()) {
        setState(true, u"engine.running"_s);
        QTimer::singleShot(0, this, [this] {
            if (isRunning_) { // Its end may have been told in between.
                Q_EMIT BackendStatusChanged(true);
            }
        });
        startStatusCheckTimer();
        logLine(QString(u"✓ Backend läuft auf Port " % QString::number(environment_.port)));
    } else if (child_.isRunning()) {
        setStatus(u"engine.starting"_s);
        logLine(u"⏳ Backend-Prozess läuft, Port noch nicht offen...");
        checkLater(environment_.timings.portRecheck);
    } else {
        setState(false, u"engine.notstarted"_s);
        logLine(u"❌ Backend-Prozess nicht gefunden");
    }
}

void TranslationEngine::startStatusCheckTimer() {
    ++watches_;
    checkTimer_.start(environment_.timings.liveness);
}

void TranslationEngine::stopStatusCheckTimer() {
    ++watches_;
    checkTimer_.stop();
}

void TranslationEngine::checkLiveness() {
    ORV_ON_MAIN();
    refreshMayOutlive();
    environment_.probe.look(environment_.port,
                            [self = QPointer(this), watch = watches_](std::optional<bool> inUse) {
                                // Who has not been able to look has seen no change.
                                if (self && self->watches_ == watch && inUse == false) {
                                    self->setState(false, u"engine.terminated"_s);
                                    self->stopStatusCheckTimer();
                                    Q_EMIT self->BackendStatusChanged(false);
                                }
                            });
}

void TranslationEngine::childFinished(quint64 launch, int status) {
    ORV_ON_MAIN();
    const bool endsByItself = child_.launch == launch && stoppedLaunch_ != launch;
    const auto failed = endsByItself && !child_.hasRun ? child_.output : nullptr;
    // The process object has nothing more to tell; from here on there is none.
    if (child_.launch == launch) {
        child_ = {};
    } else {
        std::erase_if(retired_, [&](const Child& child) { return child.launch == launch; });
    }
    const bool isLatest = launch == launches_;
    if (isLatest) {
        setState(false, u"engine.stopped"_s);
        stopStatusCheckTimer();
    }
    logLine(QString(u"Backend beendet mit Code: " % QString::number(status)));
    if (failed) {
        failed->logLastLines();
        setLastWords(failed->lastWords());
    }
    if (isLatest) {
        Q_EMIT BackendStatusChanged(false);
    }
    if (launch == launches_ && std::exchange(startsWhenStopped_, false)) {
        startBackend();
    }
}

void TranslationEngine::lookSoon() {
    ORV_ON_MAIN();
    doubtCheck_.start(environment_.timings.doubt);
}

void TranslationEngine::leaveRunning() {
    ORV_ON_MAIN();
    if (isBeingStopped()) {
        return;
    }
    leftRunning_ = true;
    if (child_.process) {
        child_.process->setMayOutlive(true);
    }
}

void TranslationEngine::refreshMayOutlive() {
    ORV_ON_MAIN();
    if (child_.process && !leftRunning_) {
        child_.process->setMayOutlive(!isBeingStopped() && environment_.mayOutlive());
    }
}

void TranslationEngine::retranslate() {
    ORV_ON_MAIN();
    Q_EMIT statusMessageChanged(statusMessage());
}

bool TranslationEngine::isPortInUse() const {
    // Who has not been able to look has seen no change.
    return environment_.probe.isPortInUse(environment_.port).value_or(isRunning_);
}

void TranslationEngine::setState(bool isRunning, const QString& statusKey) {
    if (isRunning) {
        child_.hasRun = true;
        setLastWords({});
    }
    if (std::exchange(isRunning_, isRunning) != isRunning) {
        Q_EMIT isRunningChanged(isRunning);
    }
    setStatus(statusKey);
}

void TranslationEngine::setLastWords(const QString& words) {
    if (std::exchange(lastWords_, words) != words) {
        Q_EMIT statusDetailChanged(statusDetail());
    }
}

void TranslationEngine::setStatus(const QString& key) {
    if (std::exchange(statusKey_, key) != key) {
        Q_EMIT statusMessageChanged(statusMessage());
    }
}

void TranslationEngine::showBackendInstallAlert() {
    const bool offersInstallation = !environment_.installer.isEmpty();
    environment_.dialogs.showAlert(notInstalledAlert(environment_.text, offersInstallation),
                                   [engine = QPointer(this), offersInstallation](int chosen) {
                                       if (engine && offersInstallation && chosen == 0) {
                                           engine->installBackend();
                                       }
                                   });
}

void TranslationEngine::installBackend() {
    startsWhenInstalled_ = true;
    installer_.install();
    if (installer_.isRunning()) {
        setStatus(u"engine.installing"_s);
    }
}

void TranslationEngine::installationEnded(bool installed, const QString& reason) {
    ORV_ON_MAIN();
    if (installed) {
        // What the user had asked for before the installation came up.
        if (startsWhenInstalled_) {
            startBackend();
        } else {
            setStatus(isRunning_ ? u"engine.running"_s : u"engine.stopped"_s);
        }
        return;
    }
    setStatus(isRunning_ ? u"engine.running"_s : u"engine.notinstalled"_s);
    environment_.dialogs.showAlert(installationFailedAlert(environment_.text, reason));
}

} // namespace orv
