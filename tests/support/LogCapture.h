#pragma once

#include <QString>
#include <QStringList>

#include <mutex>

namespace orv::test {

/// Collects every log line while it lives, instead of printing it.
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QStringList lines() const;
    bool contains(const QString& line) const; ///< The whole line.
    bool containsStart(const QString& start) const;
    qsizetype count(const QString& line) const; ///< How often the whole line was logged.
    void clear();

  private:
    mutable std::mutex mutex_;
    QStringList lines_;
};

} // namespace orv::test
