#include "Log.h"

#include <QByteArray>

#include <cerrno>
#include <csignal>
#include <mutex>
#include <poll.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct LogState {
    std::mutex mutex; ///< Guards `sink`.
    LogSink sink;
    std::mutex outputMutex; ///< Keeps lines whole that take more than one call.
};

LogState& logState() {
    static LogState state;
    return state;
}

/// Keeps this thread from being hit by SIGPIPE while it lives, and swallows one that came up in
/// between, without touching what the program itself wants done with the signal.
class NoBrokenPipeSignal {
  public:
    NoBrokenPipeSignal() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        wasPending_ = isPending();
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }

    ~NoBrokenPipeSignal() {
        if (!wasPending_ && isPending()) {
            int number = 0;
            sigwait(&pipe_, &number);
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

    NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
    NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;

  private:
    static bool isPending() {
        sigset_t pending = {};
        sigpending(&pending);
        return sigismember(&pending, SIGPIPE) == 1;
    }

    sigset_t pipe_ = {};
    sigset_t before_ = {};
    bool wasPending_ = false;
};

void writeAll(const QByteArray& bytes) {
    const NoBrokenPipeSignal guard;
    const char* position = bytes.constData();
    auto left = static_cast<std::size_t>(bytes.size());
    while (left > 0) {
        const ssize_t written = ::write(STDOUT_FILENO, position, left);
        if (written >= 0) {
            position += written;
            left -= static_cast<std::size_t>(written);
        } else if (errno == EAGAIN) {
            // Whoever shares the output may have made it non-blocking.
            pollfd entry = {STDOUT_FILENO, POLLOUT, 0};
            ::poll(&entry, 1, -1);
        } else if (errno != EINTR) {
            return;
        }
    }
}

} // namespace

void logLine(QStringView line) {
    LogState& state = logState();
    LogSink sink;
    {
        const std::lock_guard lock(state.mutex);
        sink = state.sink;
    }
    if (sink) {
        sink(line.toString());
        return;
    }
    const QByteArray bytes = line.toUtf8() + '\n';
    const std::lock_guard lock(state.outputMutex);
    writeAll(bytes);
}

LogSink setLogSink(LogSink sink) {
    LogState& state = logState();
    const std::lock_guard lock(state.mutex);
    return std::exchange(state.sink, std::move(sink));
}

QString boolText(bool value) {
    return value ? u"true"_s : u"false"_s;
}

} // namespace orv
