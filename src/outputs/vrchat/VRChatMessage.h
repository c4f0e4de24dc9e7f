#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace orv {

struct Result;

/// How many characters (as a reader counts them) VRChat's chatbox shows.
inline constexpr qsizetype chatboxCharacters = 144;

/// The text for the chatbox. `sendMode` is the setting of that name: 0 the source text, 1 the
/// translation (the source text if there is none), anything else both, one below the other, and
/// once if they are the same. At most `chatboxCharacters` long; no character is split.
QString vrchatMessage(const Result& result, std::int64_t sendMode);

/// The OSC 1.0 message that puts `message` into the chatbox at once, `playSound` with VRChat's
/// notification sound: one datagram. The text is always valid UTF-8: half a surrogate pair becomes
/// the replacement character, and so does a NUL, which would end an OSC string early.
QByteArray chatboxPacket(const QString& message, bool playSound);

/// The UDP port for a stored one: the nearest in 0 to 65535.
std::uint16_t clampedPort(std::int64_t stored);

} // namespace orv
