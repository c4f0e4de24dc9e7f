#pragma once

#include "AudioNotice.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace orv {

class EngineCatalogue;
struct EngineDescriptor;
class TranslationSettings;

// The configuration message of the link to the speech server. But for `fromSettings`, which reads
// the settings on the main thread, everything here may be called from any thread.

/// A run's configuration: what it asks of the backend.
struct RunConfiguration {
    QString sourceLang; ///< Language code, or "auto".
    QString targetLang; ///< Language code.
    bool saveTranscript = false;
    bool showOriginal = false;

    friend bool operator==(const RunConfiguration&, const RunConfiguration&) = default;
};

/// The engine that a configuration message asks for.
struct EngineChoice {
    QString sttEngine;   ///< As the settings hold it, also of an unknown engine.
    QJsonObject members; ///< What the message carries for this engine, its key included.
    bool translatesOnClient = false;
    bool lacksCredentials = false;
    QString fallback; ///< Who recognises in its place while it lacks its credentials.
    QString whisperModel;

    static EngineChoice fromSettings(const TranslationSettings& settings,
                                     const EngineCatalogue& engines);
};

/// The configuration message. An engine that lacks its credentials is replaced by the fallback.
QByteArray configMessage(const RunConfiguration& run, const EngineChoice& engine);

/// What the user is told about an engine that lacks a credential; the settings say which.
AudioNotice missingCredentialsNotice(const EngineDescriptor& engine,
                                     const TranslationSettings& settings);

} // namespace orv
