#pragma once

#include <QJsonValue>
#include <QList>
#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace orv {

/// The user's persisted values, one JSON object in one file: key to value with its real type.
///
/// Every write changes the values in memory at once and is carried to the disk by a thread of the
/// store's own, which replaces the file atomically; writes that come faster than the disk share one
/// replacement. All operations may be called from any thread and none waits for the disk, except
/// the constructor, which reads the file, and `waitUntilWritten`.
///
/// A registration domain answers for keys that have no value of their own; a registered value
/// counts as present.
class DefaultsStore {
  public:
    /// Reads `filePath`. A missing file is an empty store. A file that holds no JSON object is kept
    /// beside it under the suffix ".corrupt", a line says so, and the store starts empty. Temporary
    /// files that a killed process left behind are removed.
    explicit DefaultsStore(const QString& filePath);

    /// Waits until everything has been written.
    ~DefaultsStore();

    DefaultsStore(const DefaultsStore&) = delete;
    DefaultsStore& operator=(const DefaultsStore&) = delete;

    /// Values for keys that have none of their own. Never written to the file.
    void registerDefaults(const QList<std::pair<QString, QJsonValue>>& values);

    /// The value as it is stored or registered; `QJsonValue::Undefined` when the key is absent.
    QJsonValue object(const QString& key) const;
    bool contains(const QString& key) const { return !object(key).isUndefined(); }

    // Typed reads. No value when the key is absent or holds another type; the second case gives one
    // log line for each key. An integer is also read as a float or double; a whole number that was
    // written as a double is also read as an integer.
    std::optional<QString> string(const QString& key) const;
    std::optional<bool> boolean(const QString& key) const;
    std::optional<std::int64_t> integer(const QString& key) const;
    std::optional<float> floatValue(const QString& key) const;
    std::optional<double> doubleValue(const QString& key) const;

    // Typed writes.
    void setString(const QString& key, const QString& value);
    void setBool(const QString& key, bool value);
    void setInteger(const QString& key, std::int64_t value);
    void setFloat(const QString& key, float value);
    void setDouble(const QString& key, double value);
    void remove(const QString& key);

    /// Waits until every change made before the call is on the disk. False when the time runs out
    /// or the disk refuses. Not for the main thread of a running program.
    bool waitUntilWritten(std::chrono::milliseconds limit = std::chrono::seconds(10));

  private:
    class Private;
    std::unique_ptr<Private> d_;
};

} // namespace orv
