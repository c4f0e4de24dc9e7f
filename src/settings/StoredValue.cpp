#include "StoredValue.h"

namespace orv {

std::optional<bool> StoredValue<bool>::read(const DefaultsStore& store, const QString& key) {
    return store.boolean(key);
}

void StoredValue<bool>::write(DefaultsStore& store, const QString& key, bool value) {
    store.setBool(key, value);
}

QJsonValue StoredValue<bool>::json(bool value) {
    return value;
}

std::optional<std::int64_t> StoredValue<std::int64_t>::read(const DefaultsStore& store,
                                                            const QString& key) {
    return store.integer(key);
}

void StoredValue<std::int64_t>::write(DefaultsStore& store, const QString& key,
                                      std::int64_t value) {
    store.setInteger(key, value);
}

QJsonValue StoredValue<std::int64_t>::json(std::int64_t value) {
    return qint64(value);
}

std::optional<float> StoredValue<float>::read(const DefaultsStore& store, const QString& key) {
    return store.floatValue(key);
}

void StoredValue<float>::write(DefaultsStore& store, const QString& key, float value) {
    store.setFloat(key, value);
}

QJsonValue StoredValue<float>::json(float value) {
    return double(value);
}

std::optional<double> StoredValue<double>::read(const DefaultsStore& store, const QString& key) {
    return store.doubleValue(key);
}

void StoredValue<double>::write(DefaultsStore& store, const QString& key, double value) {
    store.setDouble(key, value);
}

QJsonValue StoredValue<double>::json(double value) {
    return value;
}

std::optional<QString> StoredValue<QString>::read(const DefaultsStore& store, const QString& key) {
    return store.string(key);
}

void StoredValue<QString>::write(DefaultsStore& store, const QString& key, const QString& value) {
    store.setString(key, value);
}

QJsonValue StoredValue<QString>::json(const QString& value) {
    return value;
}

std::optional<AudioSourceType> StoredValue<AudioSourceType>::read(const DefaultsStore& store,
                                                                  const QString& key) {
    const auto number = store.integer(key);
    if (number && *number >= static_cast<int>(AudioSourceType::Microphone) &&
        *number <= static_cast<int>(AudioSourceType::SingleApp)) {
        return static_cast<AudioSourceType>(*number);
    }
    return std::nullopt;
}

void StoredValue<AudioSourceType>::write(DefaultsStore& store, const QString& key,
                                         AudioSourceType value) {
    store.setInteger(key, static_cast<std::int64_t>(value));
}

QJsonValue StoredValue<AudioSourceType>::json(AudioSourceType value) {
    return static_cast<int>(value);
}

std::optional<std::optional<QString>>
StoredValue<std::optional<QString>>::read(const DefaultsStore& store, const QString& key) {
    const auto text = store.string(key);
    return text ? std::optional(text) : std::nullopt;
}

void StoredValue<std::optional<QString>>::write(DefaultsStore& store, const QString& key,
                                                const std::optional<QString>& value) {
    if (value) {
        store.setString(key, *value);
    } else {
        store.remove(key);
    }
}

QJsonValue StoredValue<std::optional<QString>>::json(const std::optional<QString>& value) {
    return value ? QJsonValue(*value) : QJsonValue();
}

} // namespace orv
