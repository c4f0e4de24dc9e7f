#pragma once

#include <QByteArrayView>

namespace orv {

/// What is done next to get output into a log file of limited size.
struct BackendLogStep {
    enum class Action {
        Head,   ///< A line goes in that says when the file was begun.
        Write,  ///< The next `count` bytes go in.
        Rotate, ///< The file has become the old one, and a new one begins.
    };

    Action action = Action::Write;
    qsizetype skipped = 0; ///< Bytes that are left away before: empty lines at a file's beginning.
    qsizetype count = 0;
};

/// The step for `bytes`, not empty, and a file of `fileSize` bytes, which must not grow beyond
/// `limit`. A file ends with a whole line; only where a line is longer than half of the limit is it
/// cut, between two characters. A line at a file's head takes less than half of the limit.
BackendLogStep nextStep(QByteArrayView bytes, qint64 fileSize, qint64 limit);

} // namespace orv
