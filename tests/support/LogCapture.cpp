#include "LogCapture.h"

#include "Log.h"

#include <algorithm>

namespace orv::test {

LogCapture::LogCapture() {
    setLogSink([this](const QString& line) {
        const std::lock_guard lock(mutex_);
        lines_.append(line);
    });
}

LogCapture::~LogCapture() {
    setLogSink({});
}

QStringList LogCapture::lines() const {
    const std::lock_guard lock(mutex_);
    // A list of its own: that another thread no longer shares one is told to this one without an
    // order in memory.
    QStringList lines = lines_;
    lines.detach();
    return lines;
}

bool LogCapture::contains(const QString& line) const {
    return lines().contains(line);
}

bool LogCapture::containsStart(const QString& start) const {
    const QStringList all = lines();
    return std::any_of(all.begin(), all.end(),
                       [&](const QString& line) { return line.startsWith(start); });
}

qsizetype LogCapture::count(const QString& line) const {
    return lines().count(line);
}

void LogCapture::clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
}

} // namespace orv::test
