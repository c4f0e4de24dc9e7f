#pragma once

#include <QByteArray>

#include <cstdint>

namespace orv {

/// 16-bit mono PCM at another rate, Hz, for services that take no other; as it is where the rates
/// are the same. Empty when it cannot be converted.
QByteArray atSampleRate(const QByteArray& pcm, std::int64_t from, std::int64_t to);

} // namespace orv
