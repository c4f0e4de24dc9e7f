#include "Log.h"

#include <QByteArray>

#include <cerrno>
#include <mutex>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct LogState {
    std::mutex mutex;
    LogSink sink;
};

LogState& logState() {
    static LogState state;
    return state;
}

void writeAll(const QByteArray& bytes) {
    const char* position = bytes.constData();
    auto left = static_cast<std::size_t>(bytes.size());
    while (left > 0) {
        const ssize_t written = ::write(STDOUT_FILENO, position, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        position += written;
        left -= static_cast<std::size_t>(written);
    }
}

} // namespace

void logLine(QStringView line) {
    LogState& state = logState();
    LogSink sink;
    {
        const std::lock_guard lock(state.mutex);
        if (!state.sink) {
            writeAll(line.toUtf8() + '\n');
            return;
        }
        sink = state.sink;
    }
    sink(line.toString());
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
