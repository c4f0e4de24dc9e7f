#pragma once

#include "Dialogs.h"
#include "LogCapture.h"
#include "PortProbe.h"
#include "TranslationEngine.h"

#include <QList>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

namespace orv::test {

/// A probe that answers what it is told to, and counts.
class ScriptedPortProbe : public PortProbe {
  public:
    std::optional<bool> isPortInUse(quint16 port) override {
        ++count;
        lastPort = port;
        return inUse;
    }

    void look(quint16 port, const std::function<void(std::optional<bool>)>& answered) override {
        if (holdsLooks) {
            heldLooks.append(answered);
        } else {
            PortProbe::look(port, answered);
        }
    }

    bool holdsLooks = false; ///< Their answers wait for the test.
    QList<std::function<void(std::optional<bool>)>> heldLooks;
    std::optional<bool> inUse = false; ///< No value: it could not find out in time.
    int count = 0;
    quint16 lastPort = 0;
};

/// Keeps the alerts it was asked to show.
class RecordedDialogs : public Dialogs {
  public:
    void showAlert(const Alert& alert, std::function<void(int)> done) override {
        alerts.append(alert);
        answers.append(std::move(done));
    }

    /// Chooses a button of the latest alert.
    void choose(int button) {
        if (answers.last()) {
            answers.last()(button);
        }
    }

    QList<Alert> alerts;
    QList<std::function<void(int)>> answers;
};

/// A supervisor with an installed backend: Python as the interpreter and a server program written
/// by the test. The port is scripted unless a test brings a probe.
class BackendFixture : public ::testing::Test {
  protected:
    BackendFixture();

    void TearDown() override;

    /// Writes the server's program. `source` is Python; `signal`, `os`, `sys`, `time` and `socket`
    /// are imported, `say` prints a line at once, and `home` is a folder of the test's.
    void installBackend(const QString& source);

    /// Offers an installer: a shell script with this text; `$home` is the test's folder.
    void offerInstaller(const QString& source);

    /// Makes the supervisor; `environment` can be changed before.
    TranslationEngine& engine();

    BackendEnvironment& environment() { return *environment_; }

    void destroyEngine() { engine_.reset(); }

    /// Notes in `posted` what a supervisor tells; done already for `engine()`.
    void note(TranslationEngine& engine);

    /// Starts, and waits until the server's program has said "ready". False if it does not.
    bool startAndWaitUntilReady();
    /// The process identifier the server's program has written down, 0 before it has.
    pid_t backendPid() const;

    QString home() const { return folder_.path(); }

    QString readHomeFile(const QString& name) const;
    void writeHomeFile(const QString& name, const QString& text) const;

    /// Everything logged, in order.
    QStringList lines() const { return log.lines(); }

    /// Log lines that hold one of `parts`, in order.
    QStringList linesWith(const QStringList& parts) const;

    /// The status text's key: the supervisor's texts are their keys here.
    QString status() { return engine().statusMessage(); }

    LogCapture log;
    ScriptedPortProbe probe;
    RecordedDialogs dialogs;
    QList<bool> posted; ///< What each `BackendStatusChanged` told.
    bool networkAccess = false;
    bool mayOutlive = false;

  private:
    QTemporaryDir folder_;
    std::optional<BackendEnvironment> environment_;
    std::unique_ptr<TranslationEngine> engine_;
};

/// Runs the event loop for a while, to show that something does not happen in it.
void letPass(std::chrono::milliseconds time);

/// Programs for `installBackend`.
namespace programs {
extern const QString waitForSignal; ///< Obeys SIGTERM, by dying of it.
extern const QString obeysOnlyInt;  ///< Ignores SIGTERM; ends with code 7 at SIGINT.
extern const QString ignoresTermAndInt;
} // namespace programs

} // namespace orv::test
