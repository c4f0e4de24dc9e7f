#pragma once

#include <QString>

#include <cstdint>

namespace orv::test {

/// How many keys the steps go round.
inline constexpr std::int64_t tortureKeys = 37;

/// What step `step` of the torture writes: its key, and a text that no other step writes, of a
/// length that varies so that the file grows and shrinks.
inline QString tortureKey(std::int64_t step) {
    return QStringLiteral("key%1").arg(step % tortureKeys);
}

inline QString tortureText(std::int64_t step) {
    return QString::number(step) + u':' + QString(static_cast<qsizetype>(step * 7919 % 5000), u'x');
}

} // namespace orv::test
