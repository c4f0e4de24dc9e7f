#pragma once

#include "HttpCall.h"
#include "ServiceFault.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <optional>

namespace orv {

// AssemblyAI's real-time transcription: version 2, and version 3, which has taken its place.

inline const QString assemblyaiHost = QStringLiteral("wss://api.assemblyai.com");
inline const QString assemblyaiStreamingHost = QStringLiteral("wss://streaming.assemblyai.com");

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

/// Whether this is the message behind the last transcript.
bool assemblyaiIsSessionEnd(const QByteArray& message);

/// Whether this is a message of version 2.
bool assemblyaiIsOfVersion2(const QByteArray& message);

/// Whether this first message of version 2 says that it is served no longer.
bool assemblyaiIsRefusal(const QByteArray& message);

/// The address of a stream of version 3, with the model that has the language `sourceLang` of the
/// settings; "auto" leaves it to the service.
QUrl assemblyaiStreamUrl(const QString& endpoint, std::int64_t sampleRate,
                         const QString& sourceLang);

/// Whether version 3 says the finished turn twice, the second time with punctuation.
bool assemblyaiFormatsTurns(const QString& sourceLang);

/// The identifier in the message that begins a session of version 3; empty for every other message.
QString assemblyaiBegin(const QByteArray& message);

/// Ends a session of version 3.
QString assemblyaiTerminateStream();

/// Whether this is the message behind the last turn.
bool assemblyaiIsTermination(const QByteArray& message);

/// What a message of version 3 says about a turn.
struct AssemblyAITurn {
    int order = 0;
    bool isOver = false;
    bool isFormatted = false;
    QString text;

    friend bool operator==(const AssemblyAITurn&, const AssemblyAITurn&) = default;
};

/// Nothing for every other message.
std::optional<AssemblyAITurn> parseAssemblyaiTurn(const QByteArray& message);

/// The error that a message of either version is; nothing for every other message, also for one of
/// another type that mentions an error.
std::optional<ServiceFault> assemblyaiError(const QByteArray& message);

/// Why the service refused a request, by its answer.
ServiceFault assemblyaiRefusal(const HttpOutcome& answer);

/// The address of a token for a session of version 3, which is given for nothing; `endpoint` is
/// that of the streams.
QUrl assemblyaiTokenUrl(const QString& endpoint);

/// Why no token was given; nothing where one was.
std::optional<ServiceFault> assemblyaiTokenFault(const HttpOutcome& answer);

/// Why the service closed a connection.
ServiceFault assemblyaiClosing(int closeCode, const QString& reason);

} // namespace orv
