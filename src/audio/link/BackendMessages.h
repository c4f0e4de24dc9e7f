#pragma once

#include "Result.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <cstdint>
#include <optional>
#include <span>
#include <variant>

class QJsonObject;

namespace orv {

// The messages of the link to the speech server: JSON objects, one for each text frame. Everything
// here is a function from values to values and may be called from any thread.

/// The audio message: `samples` (mono, [-1, 1]) as base64 of signed 16-bit little-endian PCM.
QByteArray audioMessage(std::span<const float> samples, int sampleRate);

QByteArray flushMessage();
QByteArray stopMessage();

/// One thing that the backend has to tell, for whoever knows the code. Empty where it told none.
struct BackendNotice {
    QString code = {};
    QMap<QString, QString> parameters = {}; ///< Numbers as they are written.

    friend bool operator==(const BackendNotice&, const BackendNotice&) = default;
};

/// The code and parameters in an object, which may hold more. Parameters that are neither texts nor
/// numbers are left out.
BackendNotice parseNotice(const QJsonObject& object);

/// The backend's message about its own state.
struct StatusMessage {
    QString status;
    QString message; ///< In the backend's own language, for whoever does not know the code.
    std::optional<std::int64_t> version; ///< Of status "backend_version", when it is an integer.
    BackendNotice notice = {};
    /// What there is to tell about recognising: of who serves, or why nobody does.
    QList<BackendNotice> recognition = {};
    QList<BackendNotice> translation = {}; ///< What there is to tell about translating.

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

/// More notices than this in one list are left out: a person reads no more.
inline constexpr qsizetype mostNotices = 32;

/// The oldest backend the program works with.
inline constexpr std::int64_t requiredBackendVersion = 4;

} // namespace orv
