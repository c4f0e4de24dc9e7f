#include "JsonConversion.h"

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace orv::json {

QString typeName(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Bool:
        return u"Wahrheitswert"_s;
    case QJsonValue::Double:
        return u"Zahl"_s;
    case QJsonValue::String:
        return u"Text"_s;
    case QJsonValue::Array:
        return u"Liste"_s;
    case QJsonValue::Object:
        return u"Objekt"_s;
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
    return u"null"_s;
}

std::optional<QString> toString(const QJsonValue& value) {
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<bool> toBoolean(const QJsonValue& value) {
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<std::int64_t> toInteger(const QJsonValue& value) {
    // The number's own value whatever the fallback: it is whole and within 64 bits.
    const std::int64_t number = value.toInteger(0);
    return number == value.toInteger(1) ? std::optional(number) : std::nullopt;
}

std::optional<double> toDouble(const QJsonValue& value) {
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<float> toFloat(const QJsonValue& value) {
    const std::optional<double> number = toDouble(value);
    if (!number || std::abs(*number) > static_cast<double>(std::numeric_limits<float>::max())) {
        return {};
    }
    return static_cast<float>(*number);
}

} // namespace orv::json
