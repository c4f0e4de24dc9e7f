#pragma once

#include <QJsonValue>
#include <QString>

#include <cstdint>
#include <optional>

/// JSON's values as the types of settings; nothing for a value of another type. JSON has one kind
/// of number, so that a whole number is read as any of them. Callable from any thread.
namespace orv::json {

std::optional<QString> toString(const QJsonValue& value);
std::optional<bool> toBoolean(const QJsonValue& value);
std::optional<std::int64_t> toInteger(const QJsonValue& value);
std::optional<double> toDouble(const QJsonValue& value);

/// Nothing as well for a number beyond the type's range.
std::optional<float> toFloat(const QJsonValue& value);

/// What kind of value it is, in words of the log.
QString typeName(const QJsonValue& value);

} // namespace orv::json
