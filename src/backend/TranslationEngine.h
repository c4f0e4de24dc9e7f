#pragma once

#include "BackendControl.h"
#include "BackendEnvironment.h"
#include "BackendInstaller.h"
#include "BackendOutput.h"
#include "ChildProcess.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <memory>
#include <vector>

namespace orv {

/// The supervisor of the speech server: starts, watches and stops a Python program that listens on
/// a TCP port. It does not talk to the server; it knows it as a child process and as something that
/// uses the port. A server that it finds running already is adopted: reported as running, never
/// sent a signal.
///
/// Every change of the running state is told by `BackendStatusChanged`. Lives on the main thread. A
/// look at the port that brings no answer changes nothing.
///
/// Delayed steps and the end of a child concern the launch they belong to: once another child has
/// been launched they change nothing.
class TranslationEngine : public QObject, public BackendControl {
    Q_OBJECT

  public:
    explicit TranslationEngine(BackendEnvironment environment, QObject* parent = nullptr);

    /// Stops the backend and, since nothing will run afterwards, waits for it to obey: SIGTERM,
    /// SIGINT and SIGKILL with the pauses of `stopBackend`, so up to two of them. A stop that is
    /// under way is only brought to its end. After `leaveRunning` it does neither.
    ~TranslationEngine() override;

    /// True once the port has been seen open.
    bool isRunning() const override { return isRunning_; }

    /// True also while a backend starts or stops, and while one is being installed.
    bool isBusy() const;

    /// One line for people, in the interface's language.
    QString statusMessage() const;

    /// What the backend said last, when it could not be started or has ended by itself before it
    /// ran; a line for people, empty otherwise.
    QString statusDetail() const;

    /// Adopts whatever uses the port, or launches the backend and looks at the port later. When no
    /// backend is installed an alert offers to install it; once that is done it is started. One
    /// that is being stopped is started again after its end.
    void startBackend() override;

    /// Sends SIGTERM, after a pause SIGINT, after another one SIGKILL, as long as the child runs;
    /// then the state is "stopped". A backend that is being installed is not started afterwards.
    /// Returns at once.
    void stopBackend() override;

    /// As `stopBackend`; and nothing is started any more, because the program is about to end.
    void stopForGood() override;

    /// Somebody has reason to believe that the backend is gone: the port is looked at soon.
    void lookSoon();

    /// The program is about to end and the backend shall stay. A backend that is being stopped
    /// does not stay.
    void leaveRunning() override;

    /// The answer of `mayOutlive` may have changed. (It is also asked at every look at the port.)
    void refreshMayOutlive();

    /// The language of the interface has changed.
    void retranslate();

  Q_SIGNALS:
    /// The backend came up or went away. Told at the end of the step that found it out, and also
    /// where a step confirms what was so before.
    void BackendStatusChanged(bool isRunning);

    void isRunningChanged(bool isRunning);
    void statusMessageChanged(const QString& statusMessage);
    void statusDetailChanged(const QString& statusDetail);

  private:
    struct Child {
        quint64 launch = 0; ///< Number of the launch; 0 for no child.
        std::unique_ptr<ChildProcess> process;
        std::shared_ptr<const BackendOutput> output;
        bool hasRun = false;       ///< The port was seen open.
        bool interrupted = false;  ///< SIGINT has been sent.
        QDeadlineTimer nextSignal; ///< Of a stop that is under way.

        bool isRunning() const { return process && process->isRunning(); }
    };

    void launchBackend();
    void checkBackendStatus();
    void checkLater(std::chrono::milliseconds delay);
    /// Looks at the port every `timings.liveness`, counted anew from now.
    void startStatusCheckTimer();
    void stopStatusCheckTimer();
    void checkLiveness();
    void childFinished(quint64 launch, int status);
    void stopWithInterrupt();
    void stopWithKill();
    /// Goes on with a stop, unless another child has been launched or the stop is not wanted any
    /// more.
    void afterPause(void (TranslationEngine::*step)());
    void interruptIfRunning();
    void killIfRunning();
    void endChildNow();
    bool endsBeforeNextSignal() const;
    void retireChild();
    /// Whether the port is in use, as far as is known.
    bool isPortInUse() const;

    bool isBeingStopped() const { return child_.process && stoppedLaunch_ == child_.launch; }

    void setState(bool isRunning, const QString& statusKey);
    void setStatus(const QString& key);
    void setLastWords(const QString& words);
    void showBackendInstallAlert();
    void installBackend();
    void installationEnded(bool installed, const QString& reason);

    const BackendEnvironment environment_;
    BackendInstaller installer_;
    bool isRunning_ = false;
    QString statusKey_;
    QString lastWords_;         ///< Of a backend whose start has failed.
    QTimer checkTimer_;         ///< Ticks while the backend runs.
    QTimer portCheck_;          ///< The next look at the port of a backend that was launched.
    QTimer doubtCheck_;         ///< A look at the port before the next tick.
    quint64 watches_ = 0;       ///< Answers of looks that were made for an earlier one are void.
    quint64 launches_ = 0;      ///< Also the number of the latest launch.
    quint64 stoppedLaunch_ = 0; ///< The launch that was last asked to stop.
    quint64 stopNumber_ = 0;    ///< Of the latest stop that is still wanted.
    bool startsWhenStopped_ = false;
    bool startsNothing_ = false; ///< The program is about to end.
    bool leftRunning_ = false;
    bool startsWhenInstalled_ = false;
    Child child_;                ///< The latest; none once its end has been reported.
    std::vector<Child> retired_; ///< Given up, but their end has not been reported yet.
};

} // namespace orv
