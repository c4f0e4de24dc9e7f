#pragma once

#include "AudioSourceType.h"
#include "DefaultsStore.h"

#include <QJsonValue>
#include <QString>

#include <cstdint>
#include <optional>

namespace orv {

/// How a value of type `T` stands in the store: `read` gives what is there with the right type,
/// `write` puts it there, `json` is the value as it would stand there. Types that are never kept
/// have no specialisation.
template <typename T>
struct StoredValue;

template <>
struct StoredValue<bool> {
    static std::optional<bool> read(const DefaultsStore& store, const QString& key);
    static void write(DefaultsStore& store, const QString& key, bool value);
    static QJsonValue json(bool value);
};

template <>
struct StoredValue<std::int64_t> {
    static std::optional<std::int64_t> read(const DefaultsStore& store, const QString& key);
    static void write(DefaultsStore& store, const QString& key, std::int64_t value);
    static QJsonValue json(std::int64_t value);
};

template <>
struct StoredValue<float> {
    static std::optional<float> read(const DefaultsStore& store, const QString& key);
    static void write(DefaultsStore& store, const QString& key, float value);
    static QJsonValue json(float value);
};

template <>
struct StoredValue<double> {
    static std::optional<double> read(const DefaultsStore& store, const QString& key);
    static void write(DefaultsStore& store, const QString& key, double value);
    static QJsonValue json(double value);
};

template <>
struct StoredValue<QString> {
    static std::optional<QString> read(const DefaultsStore& store, const QString& key);
    static void write(DefaultsStore& store, const QString& key, const QString& value);
    static QJsonValue json(const QString& value);
};

/// A number; one that names no source counts as absent.
template <>
struct StoredValue<AudioSourceType> {
    static std::optional<AudioSourceType> read(const DefaultsStore& store, const QString& key);
    static void write(DefaultsStore& store, const QString& key, AudioSourceType value);
    static QJsonValue json(AudioSourceType value);
};

/// A string; none removes the key.
template <>
struct StoredValue<std::optional<QString>> {
    static std::optional<std::optional<QString>> read(const DefaultsStore& store,
                                                      const QString& key);
    static void write(DefaultsStore& store, const QString& key,
                      const std::optional<QString>& value);
    static QJsonValue json(const std::optional<QString>& value);
};

/// Whether values of the type can be kept.
template <typename T>
concept Storable = requires(const T& value) {
    StoredValue<T>::json(value);
};

} // namespace orv
