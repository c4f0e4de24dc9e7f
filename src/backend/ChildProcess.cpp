#include "ChildProcess.h"

#include "Log.h"
#include "SpawnProgram.h"
#include "ThreadChecks.h"

#include <QDeadlineTimer>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <system_error>
#include <utility>

// Debian 12's copy of this header does not say that its functions are C functions.
extern "C" {
#include <sys/pidfd.h>
}

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr qsizetype pieceSize = 65536;
// Descendants of an ended child may hold its output open and go on writing for ever.
constexpr int piecesAfterTheEnd = 16;

/// True when reading or waiting would not block.
bool isReady(int descriptor, std::chrono::milliseconds limit = {}) {
    const QDeadlineTimer deadline(limit);
    for (;;) {
        pollfd entry = {descriptor, POLLIN, 0};
        const int ready = ::poll(&entry, 1, static_cast<int>(deadline.remainingTime()));
        if (ready >= 0 || errno != EINTR) {
            return ready > 0;
        }
    }
}

int waitForStatus(pid_t pid) {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace

/// Reads the output and collects the end, on the reading thread.
class ChildProcess::Watch : public QObject {
  public:
    Watch(const ChildProcess& process, ChildLifeline& lifeline, UniqueFd output, QObject* context,
          Handlers handlers)
        : pid_(process.pid_)
        , thread_(process.thread_)
        , lifeline_(lifeline)
        , output_(std::move(output))
        , context_(context)
        , handlers_(std::move(handlers))
        , isWanted_(process.isWanted_)
        , outputReady_(output_.get(), QSocketNotifier::Read)
        , ended_(process.handle_.get(), QSocketNotifier::Read) {
        connect(&outputReady_, &QSocketNotifier::activated, this, [this] { readPiece(); });
        connect(&ended_, &QSocketNotifier::activated, this, [this] { collect(); });
    }

    /// Takes in what is left to read and waits for the ended child and its watcher. Once.
    void collect() {
        ORV_ON(thread_);
        if (!std::exchange(isCollected_, true)) {
            ended_.setEnabled(false);
            readRest();
            lifeline_.release();
            const int status = waitForStatus(pid_);
            post(context_, [isWanted = isWanted_, finished = handlers_.finished, status] {
                if (*isWanted) {
                    finished(status);
                }
            });
        }
    }

  private:
    /// False at the end of the output.
    bool readPiece() {
        ORV_ON(thread_);
        QByteArray bytes(pieceSize, Qt::Uninitialized);
        const ssize_t count =
            ::read(output_.get(), bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count < 0 && errno == EINTR) {
            return true;
        }
        if (count <= 0) {
            outputReady_.setEnabled(false);
            return false;
        }
        bytes.truncate(static_cast<qsizetype>(count));
        handlers_.output(bytes);
        return true;
    }

    void readRest() {
        int left = piecesAfterTheEnd;
        while (left > 0 && isReady(output_.get()) && readPiece()) {
            --left;
        }
        outputReady_.setEnabled(false);
        output_.reset();
    }

    const pid_t pid_;
    const EventLoopThread& thread_;
    ChildLifeline& lifeline_;
    UniqueFd output_;
    QObject* const context_;
    const Handlers handlers_;
    const std::shared_ptr<const bool> isWanted_; ///< Read by `context_`'s thread only.
    bool isCollected_ = false;
    QSocketNotifier outputReady_;
    QSocketNotifier ended_;
};

ChildProcess::ChildProcess(pid_t pid, UniqueFd handle)
    : pid_(pid)
    , handle_(std::move(handle))
    , thread_(u"backend-output"_s) {}

ChildProcess::Launch ChildProcess::start(const ChildCommand& command, QObject* context,
                                         Handlers handlers, std::chrono::milliseconds pause) {
    ORV_ON_MAIN();
    const auto systemError = [] {
        return QString::fromStdString(std::system_category().message(errno));
    };
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return {nullptr, systemError()};
    }
    UniqueFd readEnd(ends[0]);
    UniqueFd writeEnd(ends[1]);
    const UniqueFd nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const SpawnedProgram spawned = spawnProgram({command.program,
                                                 command.arguments,
                                                 command.environment,
                                                 0,
                                                 {nothing.get(), writeEnd.get(), writeEnd.get()}});
    if (!spawned.error.isEmpty()) {
        return {nullptr, spawned.error};
    }
    UniqueFd handle(::pidfd_open(spawned.pid, 0));
    if (!handle.isOpen()) {
        const QString error = systemError();
        ::kill(spawned.pid, SIGKILL);
        waitForStatus(spawned.pid);
        return {nullptr, error};
    }
    writeEnd.reset();
    std::unique_ptr<ChildProcess> process(new ChildProcess(spawned.pid, std::move(handle)));
    ChildLifeline& lifeline = process->lifeline_.emplace(spawned.pid, readEnd.get(), pause);
    if (!lifeline.error().isEmpty()) {
        logLine(QString(u"⚠️ Backend wird nicht überwacht: " % lifeline.error()));
    }
    process->thread_.sync([&] {
        process->watch_ = std::make_unique<Watch>(*process, lifeline, std::move(readEnd), context,
                                                  std::move(handlers));
    });
    return {std::move(process), {}};
}

ChildProcess::~ChildProcess() {
    ORV_ON_MAIN();
    *isWanted_ = false;
    thread_.sync([this] {
        if (!isRunning()) {
            watch_->collect();
        }
        watch_.reset();
    });
}

bool ChildProcess::isRunning() const {
    return !isReady(handle_.get());
}

void ChildProcess::terminate() {
    ORV_ON_MAIN();
    send(SIGTERM);
}

void ChildProcess::interrupt() {
    ORV_ON_MAIN();
    send(SIGINT);
}

void ChildProcess::kill() {
    ORV_ON_MAIN();
    send(SIGKILL);
}

bool ChildProcess::waitForEnd(std::chrono::milliseconds limit) const {
    ORV_ON_MAIN();
    return isReady(handle_.get(), limit);
}

void ChildProcess::setMayOutlive(bool may) {
    ORV_ON_MAIN();
    if (lifeline_) {
        lifeline_->setMayOutlive(may);
    }
}

// Through the descriptor, which never means another process, even after the child has been waited
// for.
void ChildProcess::send(int signal) {
    ::pidfd_send_signal(handle_.get(), signal, nullptr, 0);
}

} // namespace orv
