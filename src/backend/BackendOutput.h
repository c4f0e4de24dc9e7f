#pragma once

#include "BackendEcho.h"
#include "ChildProcess.h"
#include "LastLines.h"

#include <QByteArray>
#include <QString>

namespace orv {

class BackendLog;

/// Takes what one launch of the backend prints: into the program's own log, into the backend's, and
/// the end of it is kept.
class BackendOutput {
  public:
    /// `log` may be null, and outlives the last call of `take`.
    explicit BackendOutput(BackendLog* log)
        : log_(log) {}

    /// `command` is about to be run.
    void begin(const ChildCommand& command);

    /// On the thread that reads the output.
    void take(const QByteArray& bytes);

    // For others once the end of the child has been told.

    /// Says in the program's own log how the output ended, unless there was none.
    void logLastLines() const;

    QString lastWords() const { return lastLines_.lastWords(); }

  private:
    BackendLog* const log_;
    BackendEcho echo_;
    LastLines lastLines_;
};

} // namespace orv
