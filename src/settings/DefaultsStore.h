#pragma once

#include <QJsonValue>
#include <QList>
#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace orv {

class SerialQueue;

/// The user's persisted values, one JSON object in one file: key to value with its real type.
///
/// Every write changes the values in memory at once and is carried to the disk by the queue for
/// files, which replaces the file atomically (mode 0600, missing folders are made); writes that
/// come faster than the disk share one replacement. The queue is shared with jobs on other files:
/// the store's are urgent, so that a write waits for one such job at most, the one under way. All
/// operations may be called from any thread and none waits for the disk, except the constructor,
/// which reads the file, `waitUntilWritten` and the destructor.
///
/// When the disk refuses (read-only, full), one line says so, and one more when it takes the values
/// again; in between they stay in memory and are tried again with each later write, at regular
/// intervals and once more by the destructor.
///
/// A registration domain answers for keys that have no value of their own; a registered value
/// counts as present.
///
/// The file belongs to one process at a time. A second one does no damage, but of both the last
/// writer's values are what remains.
class DefaultsStore {
  public:
    struct Timings {
        /// How long after a refusal the disk is tried again without a new write.
        std::chrono::milliseconds retry = std::chrono::seconds(30);
    };

    /// The queue outlives the store. Reads `filePath`; where it is a symbolic link, the file behind
    /// it. A missing file is an empty store. A file that cannot be read or holds no JSON object is
    /// kept beside it under the suffix
    /// ".corrupt" (an earlier one of that name gets a number), a line says so, and the store starts
    /// empty; should it be impossible to keep it, it stays where it is and is never written over.
    /// A file that the disk does not give out for the time being, and a device in its place, are
    /// left alone: nothing is written until the file can be read, whose values then hold where none
    /// has been set since. Rights of others to the file are taken away.
    /// Temporary files that a killed process left behind are removed.
    DefaultsStore(SerialQueue& disk, const QString& filePath);
    DefaultsStore(SerialQueue& disk, const QString& filePath, Timings timings);

    /// Waits until everything has been written, or has been refused once more. Not on the queue.
    ~DefaultsStore();

    DefaultsStore(const DefaultsStore&) = delete;
    DefaultsStore& operator=(const DefaultsStore&) = delete;

    /// Values for keys that have none of their own. Never written to the file.
    void registerDefaults(const QList<std::pair<QString, QJsonValue>>& values);

    /// The value as it is stored or registered; `QJsonValue::Undefined` when the key is absent.
    QJsonValue object(const QString& key) const;

    bool contains(const QString& key) const { return !object(key).isUndefined(); }

    // Typed reads. A stored value of another type gives one log line for each key and counts as
    // absent: the registered value answers, and without one there is no value. An integer is also
    // read as a float or double; a whole number that was written as a double is also read as an
    // integer, since JSON has one kind of number and 1.0 comes back as 1. All 64 bits of an integer
    // and all bits of a float or double survive the file.
    std::optional<QString> string(const QString& key) const;
    std::optional<bool> boolean(const QString& key) const;
    std::optional<std::int64_t> integer(const QString& key) const;
    std::optional<float> floatValue(const QString& key) const;
    std::optional<double> doubleValue(const QString& key) const;

    // Typed writes. Infinities and "not a number" have no place in JSON: they are refused with a
    // log line and the earlier value stays.
    void setString(const QString& key, const QString& value);
    void setBool(const QString& key, bool value);
    void setInteger(const QString& key, std::int64_t value);
    void setFloat(const QString& key, float value);
    void setDouble(const QString& key, double value);
    void remove(const QString& key);

    /// Waits until every change made before the call is on the disk. False when the time runs out
    /// or the disk refuses. Not for the main thread of a running program.
    bool waitUntilWritten(std::chrono::milliseconds limit = std::chrono::seconds(10));

    /// The number of changes made to the values since the store was opened. A write that leaves a
    /// value as it is changes nothing and is not counted.
    std::uint64_t generation() const;

    /// Receives the number of changes that have reached the disk, after each replacement of the
    /// file, on the queue.
    using WrittenObserver = std::function<void(std::uint64_t generation)>;
    void setWrittenObserver(WrittenObserver observer);

  private:
    class Private;
    std::shared_ptr<Private> d_; ///< Its jobs on the queue hold it weakly.
};

} // namespace orv
