#include "BackendLog.h"

#include "BackendLogHeading.h"
#include "Log.h"
#include "OutputBacklog.h"
#include "SerialQueue.h"
#include "ThreadChecks.h"

#include <QDateTime>

#include <mutex>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

class BackendLog::Writer : public std::enable_shared_from_this<Writer> {
  public:
    Writer(SerialQueue& disk, BackendLogFile file, Limits limits)
        : disk_(disk)
        , file_(std::move(file))
        , limits_(limits)
        , backlog_(limits.backlog) {}

    void begin(const QString& program) {
        const QByteArray heading = startHeading(QDateTime::currentDateTimeUtc(), program);
        const std::lock_guard lock(mutex_);
        backlog_.addLine(heading);
        isRefusalTold_ = false;
        if (next_ != Next::Attempt) {
            postAttempt();
        }
    }

    void write(QByteArrayView bytes) {
        const std::lock_guard lock(mutex_);
        backlog_.add(bytes);
        if (next_ == Next::Nothing) {
            postAttempt();
        }
    }

    void close() {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        if (next_ == Next::Retry) {
            postAttempt();
        }
    }

  private:
    /// What is going to happen to what waits.
    enum class Next { Nothing, Attempt, Retry };

    /// With the lock.
    void postAttempt() {
        next_ = Next::Attempt;
        disk_.post([self = shared_from_this()] { self->attempt(); });
    }

    void attempt() {
        ORV_ON(disk_);
        std::unique_lock lock(mutex_);
        const QByteArray bytes = backlog_.front(limits_.piece);
        lock.unlock();
        const BackendLogFile::Outcome outcome =
            file_.append(bytes, QDateTime::currentDateTimeUtc());
        lock.lock();
        backlog_.drop(outcome.taken);
        if (!outcome.problem.isEmpty()) {
            const bool isNews = !std::exchange(isRefusalTold_, true);
            retryLater();
            lock.unlock();
            if (isNews) {
                logLine(
                    u"❌ Backend-Protokoll nicht geschrieben (%1): %2 – alles andere geht weiter"_s
                        .arg(file_.path(), outcome.problem));
            }
        } else if (backlog_.isEmpty()) {
            next_ = Next::Nothing;
        } else {
            postAttempt();
        }
    }

    /// With the lock.
    void retryLater() {
        next_ = isClosed_ ? Next::Nothing : Next::Retry;
        if (isClosed_ || std::exchange(isRetryPosted_, true)) {
            return;
        }
        disk_.postAfter(limits_.retry, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->retry();
            }
        });
    }

    void retry() {
        const std::lock_guard lock(mutex_);
        isRetryPosted_ = false;
        if (next_ == Next::Retry) {
            postAttempt();
        }
    }

    SerialQueue& disk_;
    const BackendLogFile file_;
    const Limits limits_;
    std::mutex mutex_; ///< Guards the rest. Never held while the disk is at work.
    OutputBacklog backlog_;
    Next next_ = Next::Nothing;
    bool isRetryPosted_ = false;
    bool isRefusalTold_ = false; ///< Since the latest start.
    bool isClosed_ = false;
};

BackendLog::BackendLog(SerialQueue& disk, BackendLogFile file)
    : BackendLog(disk, std::move(file), Limits{}) {}

BackendLog::BackendLog(SerialQueue& disk, BackendLogFile file, Limits limits)
    : writer_(std::make_shared<Writer>(disk, std::move(file), limits)) {}

BackendLog::~BackendLog() {
    writer_->close();
}

void BackendLog::begin(const QString& program) {
    writer_->begin(program);
}

void BackendLog::write(QByteArrayView bytes) {
    writer_->write(bytes);
}

} // namespace orv
