#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>

namespace orv {

// Deepgram's streaming recognition.

inline const QString deepgramHost = QStringLiteral("wss://api.deepgram.com");

/// The address of a stream of 16-bit mono PCM; invalid when `endpoint` spells none. "auto" leaves
/// the language to the service.
QUrl deepgramUrl(const QString& endpoint, std::int64_t sampleRate, const QString& sourceLang);

/// Keeps a stream without sound open.
QString deepgramKeepAlive();

/// Ends a stream.
QString deepgramCloseStream();

/// The text of a message with a final result; empty for every other message.
QString deepgramTranscript(const QByteArray& message);

} // namespace orv
