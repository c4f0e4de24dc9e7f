#pragma once

#include "ChildProcess.h"
#include "InstallOutput.h"
#include "PostTarget.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

namespace orv {

class BackendLog;

/// Runs the program that installs the speech server for this user. It needs no terminal: what it
/// prints goes to the log, and how far it is can be asked. Lives on the main thread, which it never
/// holds up.
class BackendInstaller : public QObject {
    Q_OBJECT

  public:
    /// `command` is what is run. `pause` is the time it gets to end when it is given up. `log`, if
    /// not null, gets what it prints as well, and outlives the object.
    BackendInstaller(ChildCommand command, std::chrono::milliseconds pause,
                     BackendLog* log = nullptr, QObject* parent = nullptr);

    /// Ends an installation that is under way, with everything it has started. It can be done again
    /// at any time.
    ~BackendInstaller() override;

    /// Begins; does nothing while an installation runs.
    void install();

    bool isRunning() const { return bool(process_); }

    /// Tells what runs to end, with everything it has started, without waiting; `ended` follows.
    void giveUp();

    /// "2/3"; empty before the installer has told.
    QString step() const { return output_.step(); }

    /// How much of the current step's download is there, of 100; nothing while nobody tells.
    std::optional<int> percent() const { return output_.percent(); }

  Q_SIGNALS:
    void percentChanged();
    void stepChanged(const QString& step);
    /// `reason` is what people are told when it has not worked.
    void ended(bool installed, const QString& reason);

  private:
    void printed(const QByteArray& bytes);
    void signalAll(int signal);
    void finish(int status);

    const ChildCommand command_;
    const std::chrono::milliseconds pause_;
    BackendLog* const log_;
    InstallOutput output_;
    std::unique_ptr<ChildProcess> process_;
    PostTarget printed_; ///< Takes what the reading thread hands over.
};

} // namespace orv
