#pragma once

#include "AnswerOrder.h"
#include "AzureMessages.h"
#include "CloudSTTEngine.h"
#include "EngineDescriptor.h"
#include "EngineTimings.h"
#include "Lifetime.h"
#include "ServiceClient.h"
#include "ServiceEndpoints.h"
#include "TranslationClient.h"

#include <span>

namespace orv {

EngineDescriptor azureEngine();

/// The regions of Azure's speech services, in the order in which they are offered.
std::span<const ServiceRegion> azureRegions();

/// Azure's speech services. First one request for each chunk, which recognises and translates;
/// where the service has no such interface any more, one for recognising, and one to whoever
/// translates: Azure with the same key, else Google with the user's. Which way works is remembered.
class AzureDirectEngine : public CloudSTTEngine {
  public:
    explicit AzureDirectEngine(ServiceEndpoints endpoints = {}, EngineTimings timings = {});

    QString id() const override;
    QString name() const override;

    bool isStreaming() const override { return false; }

    int requestsAtOnce() const override { return 2; }

    bool supportsTranslation() const override { return true; }

    /// Google's, for what Azure does not translate with its own.
    void setTranslationKey(const QString& key) override { googleKey_ = key; }

    /// Between connect and disconnect.
    bool isActive() const { return isActive_; }

    QCoro::Task<> connect(CloudEngineConfig config) override;

    /// A request under way may still bring its result.
    QCoro::Task<> disconnect() override;

    /// Results come in the order of the calls. Throws `ServiceError` when there is no answer, or
    /// none that can be read.
    QCoro::Task<> sendAudio(QByteArray pcm) override;

  private:
    /// What a request has brought: a result, or why there is none.
    struct Attempt {
        AzureResult result = {};
        std::optional<ServiceFault> fault = {};
    };

    /// The same for a translation of a text.
    struct Translation {
        QString text = {};
        std::optional<ServiceFault> fault = {};
    };

    QCoro::Task<AzureResult> recognise(QByteArray pcm);
    QCoro::Task<Attempt> translateSpeech(QByteArray wav);
    QCoro::Task<Attempt> recognizeSpeech(QByteArray wav, std::int64_t sampleRate);
    QCoro::Task<AzureResult> recogniseThenTranslate(QByteArray pcm);
    QCoro::Task<QString> translateText(QString text);
    QCoro::Task<Translation> askTranslator(QString text);
    QCoro::Task<HttpOutcome> post(QUrl url, QByteArray wav, std::int64_t sampleRate);
    bool needsTranslation() const;
    void report(ServiceFault fault);

    const ServiceEndpoints endpoints_;
    const EngineTimings timings_;
    QString apiKey_;
    QString region_;
    QString spokenLang_; ///< As in the settings.
    QString sourceLang_; ///< The locale.
    QString targetLang_;
    QString googleKey_;
    std::int64_t sampleRate_ = 48000;
    bool isActive_ = false;
    bool inSteps_ = false;           ///< Recognising and translating are requests of their own.
    bool translatorRefused_ = false; ///< Azure's, with this key.
    AnswerOrder order_;
    ServiceClient http_;
    TranslationClient google_;
    Lifetime lifetime_; // Last: ends first.
};

} // namespace orv
