#pragma once

#include "Result.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <span>
#include <variant>

namespace orv {

// The messages of the link to the speech server: JSON objects, one for each text frame. Everything
// here is a function from values to values and may be called from any thread.

/// The audio message: `samples` (mono, [-1, 1]) as base64 of signed 16-bit little-endian PCM.
QByteArray audioMessage(std::span<const float> samples, int sampleRate);

QByteArray flushMessage();
QByteArray stopMessage();

/// The backend's message about its own state.
struct StatusMessage {
    QString status;
    QString message;
    std::optional<std::int64_t> version; ///< Of status "backend_version", when it is an integer.

    friend bool operator==(const StatusMessage&, const StatusMessage&) = default;
};

/// The confirmation of a flush request: everything sent before it has been answered.
struct FlushedMessage {
    friend bool operator==(const FlushedMessage&, const FlushedMessage&) = default;
};

/// The backend is done with one more chunk, whether it brought a result or not. Not every backend
/// tells.
struct ProcessedMessage {
    friend bool operator==(const ProcessedMessage&, const ProcessedMessage&) = default;
};

/// One message of the backend; `std::monostate` stands for one that is to be ignored.
using DownstreamMessage =
    std::variant<std::monostate, Result, StatusMessage, ProcessedMessage, FlushedMessage>;

/// Understands one message of the backend. Members that are missing or of the wrong type count as
/// empty; anything but an object with a known "type" is ignored.
DownstreamMessage parseDownstream(const QByteArray& utf8);

/// The oldest backend the program works with.
inline constexpr std::int64_t requiredBackendVersion = 4;

} // namespace orv
