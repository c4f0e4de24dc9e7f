#pragma once

#include "HttpCall.h"
#include "ServiceFault.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <optional>

namespace orv {

// Deepgram's streaming recognition.

inline const QString deepgramHost = QStringLiteral("wss://api.deepgram.com");

/// Whether a model recognises the language `sourceLang` of the settings, detection included.
bool deepgramOffers(const QString& sourceLang);

/// The address of a stream of 16-bit mono PCM to the model "nova-2"; invalid when `endpoint` spells
/// none. With "auto" the service's default applies, which is English.
QUrl deepgramUrl(const QString& endpoint, std::int64_t sampleRate, const QString& sourceLang);

/// The address of a stream to the model that has the language: "nova-2" where it does, else
/// "nova-3"; for "auto", and for what is only detected, "nova-3" with all its languages at once.
QUrl deepgramStreamUrl(const QString& endpoint, std::int64_t sampleRate, const QString& sourceLang);

/// Keeps a stream without sound open.
QString deepgramKeepAlive();

/// Ends a stream.
QString deepgramCloseStream();

/// Why the service did not take a connection: its answer's status, header "dg-error" and content.
ServiceFault deepgramRefusal(int status, const QByteArray& error, const QByteArray& body);

/// The same for the answer to a request for a stream; nothing where it took one.
std::optional<ServiceFault> deepgramHandshakeFault(const HttpOutcome& answer);

/// Why it closed one.
ServiceFault deepgramClosing(int closeCode, const QString& reason);

/// Whether this is the message that comes behind the last result.
bool deepgramIsLast(const QByteArray& message);

/// The text of a message with a final result; empty for every other message.
QString deepgramTranscript(const QByteArray& message);

} // namespace orv
