#pragma once

#include "BackendLogFile.h"

#include <QByteArrayView>
#include <QString>

#include <chrono>
#include <memory>

namespace orv {

class SerialQueue;

/// The speech server's log: takes what the server and its installer print and carries it to the
/// file on the queue for the disk, in pieces, between which others get their turn. Nobody who hands
/// something over waits for the disk.
///
/// Up to 1 MiB waits for a disk that is slow or refuses. What comes beyond that is left out, and a
/// line in the file says how much it was. A refusal costs one line of the program's own log for
/// each start; it is tried again at regular intervals, at each start and once more by the
/// destructor, and what has waited is written then.
///
/// Callable from any thread.
class BackendLog {
  public:
    struct Limits {
        qsizetype backlog = qsizetype{1024} * 1024;
        qsizetype piece = qsizetype{256} * 1024;                    ///< Written in one job.
        std::chrono::milliseconds retry = std::chrono::seconds(10); ///< After a refusal.
    };

    /// The queue outlives the log. What waits when the log goes is written nevertheless.
    BackendLog(SerialQueue& disk, BackendLogFile file);
    BackendLog(SerialQueue& disk, BackendLogFile file, Limits limits);
    ~BackendLog();

    BackendLog(const BackendLog&) = delete;
    BackendLog& operator=(const BackendLog&) = delete;

    /// `program` is about to be started: what is written from here on is what it says.
    void begin(const QString& program);

    /// A piece of output as it was read.
    void write(QByteArrayView bytes);

  private:
    class Writer;
    std::shared_ptr<Writer> writer_; ///< Lives on with its jobs.
};

} // namespace orv
