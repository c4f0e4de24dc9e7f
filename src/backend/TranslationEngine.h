#pragma once

#include "BackendControl.h"
#include "BackendInstaller.h"
#include "ChildProcess.h"
#include "TextLookup.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace orv {

class Dialogs;
class PortProbe;

/// The supervisor's fixed times.
struct BackendTimings {
    std::chrono::milliseconds modelLoading{
        6000};                                   ///< From the launch to the first look at the port.
    std::chrono::milliseconds portRecheck{2000}; ///< Between looks while the port is closed.
    std::chrono::milliseconds liveness{10000};   ///< Between looks at a running backend's port.
    std::chrono::milliseconds stopPause{1000};   ///< Between the steps of stopping.
};

/// What the supervisor is given. The references must outlive it; the functions are called on the
/// main thread.
struct BackendEnvironment {
    QString interpreter; ///< Absolute path of the Python interpreter.
    QString script;      ///< Absolute path of the server's program.
    PortProbe& probe;
    Dialogs& dialogs;
    TextLookup text;
    std::function<bool()> networkAccess; ///< Whether others may reach the backend.

    /// Whether the backend may go on running should the program be killed. A program that ends in
    /// order says so with `leaveRunning` instead.
    std::function<bool()> mayOutlive = [] { return false; };

    /// Absolute path of the program that installs the backend; empty when there is none to offer.
    QString installer = {};

    BackendTimings timings = {};
    quint16 port = 8765;
};

/// The supervisor of the speech server: starts, watches and stops a Python program that listens on
/// a TCP port. It does not talk to the server; it knows it as a child process and as something that
/// uses the port. A server that it finds running already is adopted: reported as running, never
/// sent a signal.
///
/// Every change of the running state is told by `BackendStatusChanged`. Lives on the main thread,
/// which it blocks while the port is probed.
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

    /// Adopts whatever uses the port, or launches the backend and looks at the port later. When no
    /// backend is installed an alert offers to install it; once that is done it is started.
    void startBackend() override;

    /// Sends SIGTERM, after a pause SIGINT, after another one SIGKILL, as long as the child runs;
    /// then the state is "stopped". A backend that is being installed is not started afterwards.
    /// Returns at once.
    void stopBackend() override;

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

  private:
    struct Child {
        quint64 launch = 0; ///< Number of the launch; 0 for no child.
        std::unique_ptr<ChildProcess> process;
        bool interrupted = false;  ///< SIGINT has been sent.
        QDeadlineTimer nextSignal; ///< Of a stop that is under way.

        bool isRunning() const { return process && process->isRunning(); }
    };

    void launchBackend();
    void checkBackendStatus();
    void checkLater(std::chrono::milliseconds delay);
    /// Looks at the port every `timings.liveness`, counted anew from now.
    void startStatusCheckTimer();
    void checkLiveness();
    void childFinished(quint64 launch, int status);
    void stopWithInterrupt();
    void stopWithKill();
    void afterPause(void (TranslationEngine::*step)());
    void interruptIfRunning();
    void killIfRunning();
    void endChildNow();
    bool endsBeforeNextSignal() const;
    void retireChild();
    bool isPortInUse() const;

    bool isBeingStopped() const { return child_.process && stoppedLaunch_ == child_.launch; }

    void setState(bool isRunning, const QString& statusKey);
    void setStatus(const QString& key);
    void showBackendInstallAlert();
    void installBackend();
    void installationEnded(bool installed, const QString& reason);

    const BackendEnvironment environment_;
    BackendInstaller installer_;
    bool isRunning_ = false;
    QString statusKey_;
    QTimer checkTimer_;         ///< Ticks while the backend runs.
    quint64 launches_ = 0;      ///< Also the number of the latest launch.
    quint64 stoppedLaunch_ = 0; ///< The launch that was last asked to stop.
    bool leftRunning_ = false;
    bool startsWhenInstalled_ = false;
    Child child_;                ///< The latest; none once its end has been reported.
    std::vector<Child> retired_; ///< Given up, but their end has not been reported yet.
};

} // namespace orv
