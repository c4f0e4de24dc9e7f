#pragma once

#include <QString>
#include <QStringBuilder>
#include <QStringView>

#include <functional>

namespace orv {

class LogQueue;

/// Prints one line to standard output, followed by a line feed, with one write call, so that lines
/// from several threads never mix. Line breaks inside `line` are kept. Callable from any thread. A
/// standard output that is closed, or that nobody reads any more, is ignored.
///
/// While there is a LogWriter, nobody waits here for the output. Before and after, the line is
/// written at once; a reader who takes none is waited for once, for two seconds.
void logLine(QStringView line);

/// The same for a line that was put together with "+".
template <typename A, typename B>
void logLine(const QStringBuilder<A, B>& line) {
    logLine(QString(line));
}

/// Receives each line in place of standard output, on the thread that logs it.
using LogSink = std::function<void(const QString& line)>;

/// Replaces the destination of `logLine`; an empty sink restores standard output. Returns the sink
/// that was in place. Used by tests to read what the program says.
LogSink setLogSink(LogSink sink);

/// For LogWriter: sends lines into `queue` instead of writing them.
void openLogQueue(LogQueue& queue);

/// Ends that if the queue is empty, or in any case when it is `late`; says whether it has. For the
/// thread that writes the queue's lines.
bool closeLogQueue(LogQueue& queue, bool late);

/// "true" or "false", the way booleans stand in log lines.
QString boolText(bool value);

} // namespace orv
