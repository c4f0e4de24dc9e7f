#pragma once

#include <QByteArrayView>
#include <QDateTime>
#include <QString>

namespace orv {

/// The speech server's log on the disk: a file that only grows, up to a limit, and an old one that
/// was full. Both belong to the user alone (mode 0600; folders that are missing are made with mode
/// 0700). A file that somebody deletes is begun anew at the next writing. A symbolic link, and
/// whatever else is no ordinary file, is neither followed nor written to.
///
/// It is opened for each writing, so that what others do to it in between does no harm. Callable
/// from any thread, from one at a time.
class BackendLogFile {
  public:
    static constexpr qint64 mostBytes = qint64{4} * 1024 * 1024;

    /// Absolute paths in one folder; the file at `path` replaces the one at `earlier` when it has
    /// grown to `limit`.
    BackendLogFile(QString path, QString earlier, qint64 limit = mostBytes);

    struct Outcome {
        qsizetype taken = 0;  ///< Of the bytes, from the beginning, that need not be given again.
        QString problem = {}; ///< Why the rest could not be written, for people; empty if all was.
    };

    Outcome append(QByteArrayView bytes, const QDateTime& now) const;

    QString path() const { return path_; }

  private:
    QString path_;
    QString earlier_;
    qint64 limit_;
};

} // namespace orv
