#pragma once

#include "ServiceFault.h"

#include <QByteArray>
#include <QString>

#include <QCoroTask>

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>

namespace orv {

/// What a direct engine needs to know for one session.
struct CloudEngineConfig {
    QString sourceLang; ///< Language code as the settings hold it; "auto" for detection.
    QString targetLang; ///< Language code.
    QString apiKey;     ///< The service key for the engine.
    QString region;     ///< Azure region identifier; empty for engines that need none.
    std::int64_t sampleRate = 48000; ///< Hz, of the audio that `sendAudio` will receive.
};

/// Why a direct engine could not be connected.
class CloudEngineError : public std::exception {
  public:
    enum class Kind {
        MissingApiKey,    ///< A required key or region is empty.
        ConnectionFailed, ///< The service address could not be formed.
    };

    CloudEngineError(Kind kind, const QString& message, std::optional<ServiceFault> fault = {});

    static CloudEngineError missingApiKey(const QString& message) {
        return {Kind::MissingApiKey, message};
    }

    static CloudEngineError missingRegion(const QString& message) {
        return {Kind::MissingApiKey, message, ServiceFault{ServiceFault::Kind::RegionMissing}};
    }

    /// The service lacks the language that is spoken.
    static CloudEngineError unknownLanguage(const QString& message) {
        return {Kind::ConnectionFailed, message, ServiceFault{ServiceFault::Kind::LanguageUnknown}};
    }

    static CloudEngineError connectionFailed(const QString& message) {
        return {Kind::ConnectionFailed, message};
    }

    Kind kind() const { return kind_; }

    /// For people, unchanged as given.
    QString errorDescription() const { return message_; }

    const char* what() const noexcept override { return utf8_.constData(); }

    /// What people are told in their language; nothing where a notice says it.
    const std::optional<ServiceFault>& fault() const { return fault_; }

  private:
    Kind kind_;
    QString message_;
    std::optional<ServiceFault> fault_;
    QByteArray utf8_;
};

/// A speech recognition service that the program talks to itself. Lives on the main thread; every
/// call is made there. The host sets both callbacks before `connect` and keeps the engine alive
/// for the session; an engine is used for one session only.
class CloudSTTEngine {
  public:
    /// (source text, translation), once per final result. May run on a network thread.
    using TranslationCallback = std::function<void(const QString&, const QString&)>;
    /// (status, message); status is "connected" or "error". May run on a network thread.
    using StatusCallback = std::function<void(const QString&, const QString&)>;
    /// What keeps results from coming, or from being translated; each time that it does.
    using FaultCallback = std::function<void(const ServiceFault&)>;

    virtual ~CloudSTTEngine() = default;

    /// Equal to the value of the `sttEngine` setting that selects the engine.
    virtual QString id() const = 0;

    /// For log lines: the engine's type name.
    virtual QString name() const = 0;

    /// True: wants every captured buffer as it comes. False: wants the chunker's chunks.
    virtual bool isStreaming() const = 0;

    /// How many calls of `sendAudio` may be under way. Those of a stream would only queue up.
    virtual int requestsAtOnce() const { return 1; }

    /// True when the engine itself translates; false when it needs a translation key.
    virtual bool supportsTranslation() const = 0;

    /// The key for the translation service, for engines that do not translate themselves; empty
    /// for none. Set before `connect`.
    virtual void setTranslationKey(const QString& key) = 0;

    /// Validates `config` and opens the session. Throws `CloudEngineError`. Reports success
    /// through `onStatus`.
    virtual QCoro::Task<> connect(CloudEngineConfig config) = 0;

    /// Ends the session: no more audio is taken. A stream has brought all its results when this
    /// returns; a call of `sendAudio` under way may still bring its own. Destroying the engine
    /// gives up both. Never throws; harmless when not connected.
    virtual QCoro::Task<> disconnect() = 0;

    /// Hands over signed 16-bit little-endian mono PCM at `CloudEngineConfig::sampleRate`, without
    /// a header. May throw.
    virtual QCoro::Task<> sendAudio(QByteArray pcm) = 0;

    TranslationCallback onTranslation;
    StatusCallback onStatus;
    FaultCallback onFault;
};

} // namespace orv
