#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>

namespace orv {

// AssemblyAI's real-time transcription, version 2.

inline const QString assemblyaiHost = QStringLiteral("wss://api.assemblyai.com");

/// The address of a stream of 16-bit mono PCM.
QUrl assemblyaiUrl(const QString& endpoint, std::int64_t sampleRate);

/// The message with a block of audio, UTF-8.
QByteArray assemblyaiAudio(const QByteArray& pcm);

/// Ends a session.
QString assemblyaiTerminate();

/// The identifier in the message that begins a session; empty for every other message.
QString assemblyaiSession(const QByteArray& message);

/// The text of a message with a final transcript; empty for every other message.
QString assemblyaiTranscript(const QByteArray& message);

} // namespace orv
