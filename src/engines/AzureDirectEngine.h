#pragma once

#include "AzureMessages.h"
#include "CloudSTTEngine.h"
#include "EngineDescriptor.h"
#include "EngineTimings.h"
#include "Lifetime.h"
#include "ServiceClient.h"
#include "ServiceEndpoints.h"

#include <span>

namespace orv {

EngineDescriptor azureEngine();

/// The regions of Azure's speech services, in the order in which they are offered.
std::span<const ServiceRegion> azureRegions();

/// Azure's speech services: one request for each chunk, which recognises and translates.
class AzureDirectEngine : public CloudSTTEngine {
  public:
    explicit AzureDirectEngine(ServiceEndpoints endpoints = {}, EngineTimings timings = {});

    QString id() const override;
    QString name() const override;

    bool isStreaming() const override { return false; }

    bool supportsTranslation() const override { return true; }

    /// Of no use to this engine.
    void setTranslationKey(const QString&) override {}

    /// Between connect and disconnect.
    bool isActive() const { return isActive_; }

    QCoro::Task<> connect(CloudEngineConfig config) override;

    /// A request under way may still bring its result.
    QCoro::Task<> disconnect() override;

    /// Throws `ServiceError` when there is no answer, or none that can be read.
    QCoro::Task<> sendAudio(QByteArray pcm) override;

  private:
    QCoro::Task<AzureResult> recognise(QByteArray wav);
    QCoro::Task<AzureResult> translateSpeech(QByteArray wav);
    QCoro::Task<AzureResult> recognizeSpeech(QByteArray wav);
    QCoro::Task<QByteArray> post(QUrl url, QByteArray wav);

    const ServiceEndpoints endpoints_;
    const EngineTimings timings_;
    QString apiKey_;
    QString region_;
    QString sourceLang_;
    QString targetLang_;
    std::int64_t sampleRate_ = 48000;
    bool isActive_ = false;
    ServiceClient http_;
    Lifetime lifetime_; // Last: ends first.
};

} // namespace orv
