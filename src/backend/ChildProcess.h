#pragma once

#include "ChildLifeline.h"
#include "EventLoopThread.h"
#include "UniqueFd.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace orv {

/// What to run as a child.
struct ChildCommand {
    QString program; ///< Absolute path.
    QStringList arguments;
    QList<QByteArray> environment; ///< The whole of it, "NAME=value".
};

/// A program running as a child of this one, with its standard output and standard error in one
/// pipe, which a thread of its own reads. It runs in the current working directory, reads nothing
/// (standard input is empty), inherits no other descriptor and has a process group of its own.
///
/// Unlike `QProcess`, it can be given up while the child goes on running, it ends the child even if
/// this program is killed (`ChildLifeline`), and output never passes through the main thread, so a
/// child that floods it holds nothing up. Made for Linux: waits on process descriptors.
class ChildProcess {
  public:
    struct Handlers {
        /// A piece of output as it was read, never empty, not cut at line or character borders.
        /// On the reading thread.
        std::function<void(const QByteArray& bytes)> output;

        /// The child has ended, everything it printed has gone to `output`, and nothing is left of
        /// it in the process table. Called once, on the thread of `context`. The status is the exit
        /// code, or the number of the signal that ended the child.
        std::function<void(int status)> finished;
    };

    /// One of the two is set.
    struct Launch {
        std::unique_ptr<ChildProcess> process;
        QString error; ///< For people.
    };

    /// Runs `command`. `context` must outlive the process object; `pause` is the time between two
    /// signals should the child have to be ended after this program. Called on the main thread, as
    /// is everything below.
    static Launch start(const ChildCommand& command, QObject* context, Handlers handlers,
                        std::chrono::milliseconds pause);

    /// `finished` is not called any more. Nothing is left of a child that has ended; one that still
    /// runs is ended soon after by its lifeline, or goes on running if it may outlive the program.
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    qint64 processIdentifier() const { return pid_; }

    /// False from the child's end on, which may be before `finished` is called.
    bool isRunning() const;

    // Signals. None is sent to a child that has ended.
    void terminate(); ///< SIGTERM
    void interrupt(); ///< SIGINT
    void kill();      ///< SIGKILL

    /// Waits for the child's end without running the event loop. False when time is up.
    bool waitForEnd(std::chrono::milliseconds limit) const;

    /// Whether the child goes on running when this program or object ends; it does not until told.
    void setMayOutlive(bool may);

  private:
    class Watch;

    ChildProcess(pid_t pid, UniqueFd handle);
    void send(int signal);

    const pid_t pid_;
    const std::shared_ptr<bool> isWanted_ = std::make_shared<bool>(true); ///< Is being told of.
    UniqueFd handle_; ///< The process descriptor: readable once the child has ended.
    std::optional<ChildLifeline> lifeline_;
    std::unique_ptr<Watch> watch_; ///< Lives on `thread_`.
    EventLoopThread thread_;
};

} // namespace orv
