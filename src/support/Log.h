#pragma once

#include <QString>
#include <QStringBuilder>
#include <QStringView>

#include <functional>

namespace orv {

/// Prints one line to standard output, followed by a line feed, with one write call, so that lines
/// from several threads never mix and nothing is held back when the program dies. Line breaks
/// inside `line` are kept. Callable from any thread. A standard output that is
/// closed, or that nobody reads any more, is ignored.
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

/// "true" or "false", the way booleans stand in log lines.
QString boolText(bool value);

} // namespace orv
