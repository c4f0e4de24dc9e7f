#include "DefaultsStore.h"

#include "DefaultsFile.h"
#include "JsonConversion.h"
#include "Log.h"
#include "SerialQueue.h"
#include "ThreadChecks.h"

#include <QJsonObject>
#include <QSet>

#include <cmath>
#include <condition_variable>
#include <future>
#include <mutex>

using namespace Qt::StringLiterals;

namespace orv {

class DefaultsStore::Private : public std::enable_shared_from_this<Private> {
  public:
    Private(SerialQueue& disk, const QString& filePath, Timings timings)
        : disk_(disk)
        , timings_(timings)
        , file_(filePath)
        , values_(file_.load())
        , mayLack_(file_.isUnread()) {}

    /// Waits for the last attempt. Afterwards the disk is left alone.
    void close() {
        Q_ASSERT(!disk_.isCurrent());
        std::promise<void> done;
        disk_.postUrgent([this, &done] {
            attempt();
            isClosed_ = true;
            done.set_value();
        });
        done.get_future().wait();
    }

    void registerDefaults(const QList<std::pair<QString, QJsonValue>>& values) {
        const std::lock_guard lock(mutex_);
        for (const auto& [key, value] : values) {
            registered_.insert(key, value);
        }
    }

    QJsonValue object(const QString& key) const {
        const std::lock_guard lock(mutex_);
        const QJsonValue own = values_.value(key);
        return own.isUndefined() ? registered_.value(key) : own;
    }

    template <typename Value>
    std::optional<Value> read(const QString& key, const QString& wanted,
                              std::optional<Value> (*convert)(const QJsonValue&)) {
        std::unique_lock lock(mutex_);
        const QJsonValue own = values_.value(key);
        const QJsonValue registered = registered_.value(key);
        const std::optional<Value> value = convert(own);
        const bool complain = !own.isUndefined() && !value && !complained_.contains(key);
        if (complain) {
            complained_.insert(key);
        }
        lock.unlock();
        if (complain) {
            logLine(
                u"⚠️ Einstellung \"%1\" hat den falschen Typ (%2 statt %3), Standardwert gilt"_s
                    .arg(key, json::typeName(own), wanted));
        }
        return value ? value : convert(registered);
    }

    void write(const QString& key, const QJsonValue& value) {
        {
            const std::lock_guard lock(mutex_);
            if (values_.value(key) == value) {
                return;
            }
            values_.insert(key, value);
            removed_.remove(key);
            ++generation_;
            if (std::exchange(attemptWanted_, true)) {
                return;
            }
        }
        postAttempt();
    }

    void remove(const QString& key) {
        {
            const std::lock_guard lock(mutex_);
            if (!values_.contains(key) && !mayLack_) {
                return;
            }
            values_.remove(key);
            removed_.insert(key);
            ++generation_;
            if (std::exchange(attemptWanted_, true)) {
                return;
            }
        }
        postAttempt();
    }

    bool waitUntilWritten(std::chrono::milliseconds limit) {
        std::unique_lock lock(mutex_);
        const std::uint64_t wanted = generation_;
        if (written_ >= wanted) {
            return true;
        }
        // An attempt that is under way may have begun before the last change: the next one counts.
        const std::uint64_t deciding = attempts_ + (isAttempting_ ? 2 : 1);
        if (!std::exchange(attemptWanted_, true)) {
            lock.unlock();
            postAttempt();
            lock.lock();
        }
        attempted_.wait_for(lock, limit,
                            [&] { return written_ >= wanted || attempts_ >= deciding; });
        return written_ >= wanted;
    }

    std::uint64_t generation() const {
        const std::lock_guard lock(mutex_);
        return generation_;
    }

    void setWrittenObserver(WrittenObserver observer) {
        const std::lock_guard lock(mutex_);
        observer_ = std::move(observer);
    }

  private:
    /// Callable from any thread, by whoever has set `attemptWanted_`: changes that come before the
    /// disk takes notice share one attempt.
    void postAttempt() {
        disk_.postUrgent([self = weak_from_this()] {
            if (const auto store = self.lock()) {
                store->attempt();
            }
        });
    }

    /// Carries the values to the disk, unless it has them already.
    void attempt() {
        ORV_ON(disk_);
        std::unique_lock lock(mutex_);
        attemptWanted_ = false;
        if (isClosed_ || written_ == generation_) {
            return;
        }
        const std::uint64_t generation = generation_;
        isAttempting_ = true;
        lock.unlock();
        const FileProblem problem = replace();
        file_.report(problem);
        lock.lock();
        isAttempting_ = false;
        ++attempts_;
        if (!problem) {
            written_ = generation;
        }
        const WrittenObserver observer = observer_;
        lock.unlock();
        attempted_.notify_all();
        if (problem) {
            retryLater();
        } else if (observer) {
            observer(generation);
        }
    }

    void retryLater() {
        if (std::exchange(isRetryPosted_, true)) {
            return;
        }
        disk_.postAfter(timings_.retry, [self = weak_from_this()] {
            if (const auto store = self.lock()) {
                store->isRetryPosted_ = false;
                store->attempt();
            }
        });
    }

    /// Replaces the file by the values as they are now, which may be newer than the attempt.
    FileProblem replace() {
        if (FileProblem problem = file_.prepare([this](const QJsonObject& found) { add(found); })) {
            return problem;
        }
        std::unique_lock lock(mutex_);
        const QJsonObject values = values_;
        lock.unlock();
        return file_.replace(values);
    }

    /// Values of a file that could not be read before; what was set or removed since holds.
    void add(const QJsonObject& found) {
        const std::lock_guard lock(mutex_);
        mayLack_ = false;
        for (auto value = found.constBegin(); value != found.constEnd(); ++value) {
            if (!values_.contains(value.key()) && !removed_.contains(value.key())) {
                values_.insert(value.key(), value.value());
            }
        }
    }

    SerialQueue& disk_;
    const Timings timings_;
    DefaultsFile file_; ///< The constructor's, then the queue's own.

    mutable std::mutex mutex_;          ///< Guards everything down to `observer_`.
    std::condition_variable attempted_; ///< For those who wait: an attempt has ended.
    QJsonObject values_;
    QJsonObject registered_;
    QSet<QString> removed_;    ///< Keys that were removed since the start.
    bool mayLack_;             ///< The file, not read as yet, may hold values that are not here.
    QSet<QString> complained_; ///< Keys whose wrong type has been told.
    std::uint64_t generation_ = 0;
    std::uint64_t written_ = 0; ///< The generation that is on the disk.
    std::uint64_t attempts_ = 0;
    bool isAttempting_ = false;
    bool attemptWanted_ = false; ///< An attempt is on its way to the queue.
    WrittenObserver observer_;

    // The queue's own.
    bool isRetryPosted_ = false;
    bool isClosed_ = false;
};

DefaultsStore::DefaultsStore(SerialQueue& disk, const QString& filePath)
    : DefaultsStore(disk, filePath, Timings{}) {}

DefaultsStore::DefaultsStore(SerialQueue& disk, const QString& filePath, Timings timings)
    : d_(std::make_shared<Private>(disk, filePath, timings)) {}

DefaultsStore::~DefaultsStore() {
    d_->close();
}

void DefaultsStore::registerDefaults(const QList<std::pair<QString, QJsonValue>>& values) {
    d_->registerDefaults(values);
}

QJsonValue DefaultsStore::object(const QString& key) const {
    return d_->object(key);
}

std::optional<QString> DefaultsStore::string(const QString& key) const {
    return d_->read<QString>(key, u"Text"_s, json::toString);
}

std::optional<bool> DefaultsStore::boolean(const QString& key) const {
    return d_->read<bool>(key, u"Wahrheitswert"_s, json::toBoolean);
}

std::optional<std::int64_t> DefaultsStore::integer(const QString& key) const {
    return d_->read<std::int64_t>(key, u"Ganzzahl"_s, json::toInteger);
}

std::optional<float> DefaultsStore::floatValue(const QString& key) const {
    return d_->read<float>(key, u"Zahl"_s, json::toFloat);
}

std::optional<double> DefaultsStore::doubleValue(const QString& key) const {
    return d_->read<double>(key, u"Zahl"_s, json::toDouble);
}

void DefaultsStore::setString(const QString& key, const QString& value) {
    d_->write(key, value);
}

void DefaultsStore::setBool(const QString& key, bool value) {
    d_->write(key, value);
}

void DefaultsStore::setInteger(const QString& key, std::int64_t value) {
    d_->write(key, QJsonValue(static_cast<qint64>(value)));
}

void DefaultsStore::setFloat(const QString& key, float value) {
    setDouble(key, static_cast<double>(value));
}

void DefaultsStore::setDouble(const QString& key, double value) {
    if (!std::isfinite(value)) {
        logLine(u"⚠️ Einstellung \"%1\": keine endliche Zahl, nicht gespeichert"_s.arg(key));
        return;
    }
    d_->write(key, value);
}

void DefaultsStore::remove(const QString& key) {
    d_->remove(key);
}

bool DefaultsStore::waitUntilWritten(std::chrono::milliseconds limit) {
    return d_->waitUntilWritten(limit);
}

std::uint64_t DefaultsStore::generation() const {
    return d_->generation();
}

void DefaultsStore::setWrittenObserver(WrittenObserver observer) {
    d_->setWrittenObserver(std::move(observer));
}

} // namespace orv
