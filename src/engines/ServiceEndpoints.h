#pragma once

#include <QString>

namespace orv {

/// Where the cloud services are reached: scheme, host and port, without a trailing slash. The
/// defaults are the providers' public hosts, always with TLS; tests hand in servers of their own.
/// In the hosts of Azure, "{region}" stands for the region's identifier.
struct ServiceEndpoints {
    QString googleTranslate = QStringLiteral("https://translation.googleapis.com");
    QString googleSpeech = QStringLiteral("https://speech.googleapis.com");
    QString deepgram = QStringLiteral("wss://api.deepgram.com");
    QString assemblyai = QStringLiteral("wss://api.assemblyai.com");
    QString azureSpeechToText = QStringLiteral("https://{region}.stt.speech.microsoft.com");
    QString azureSpeechTranslation = QStringLiteral("https://{region}.s2s.speech.microsoft.com");
};

} // namespace orv
