#pragma once

#include "AnswerOrder.h"
#include "CloudSTTEngine.h"
#include "EngineDescriptor.h"
#include "EngineTimings.h"
#include "Lifetime.h"
#include "ServiceClient.h"
#include "ServiceEndpoints.h"

#include <QUrl>

namespace orv {

EngineDescriptor googleCloudEngine();

/// Google's synchronous recognition and its translation: two requests for each chunk, one after the
/// other.
class GoogleCloudDirectEngine : public CloudSTTEngine {
  public:
    explicit GoogleCloudDirectEngine(ServiceEndpoints endpoints = {}, EngineTimings timings = {});

    QString id() const override;
    QString name() const override;

    bool isStreaming() const override { return false; }

    int requestsAtOnce() const override { return 2; }

    bool supportsTranslation() const override { return true; }

    /// Of no use to this engine, whose own key serves both requests.
    void setTranslationKey(const QString&) override {}

    /// Between connect and disconnect.
    bool isActive() const { return isActive_; }

    QCoro::Task<> connect(CloudEngineConfig config) override;

    /// A request under way may still bring its result.
    QCoro::Task<> disconnect() override;

    /// Results come in the order of the calls. Throws `ServiceError` when there is no answer, or
    /// none that can be read; then nothing is delivered for this chunk.
    QCoro::Task<> sendAudio(QByteArray pcm) override;

  private:
    QCoro::Task<> recogniseAndDeliver(QByteArray pcm);
    QCoro::Task<QString> recognizeSpeech(QByteArray audioBase64);
    QCoro::Task<QString> translateText(QString text, QString targetLang);
    /// The content of the answer. What is wrong by its status is told; `translator` as in
    /// `ServiceFault`.
    QCoro::Task<QByteArray> post(QUrl url, QByteArray body, std::chrono::milliseconds timeout,
                                 QString translator = {});
    void report(ServiceFault fault, const QByteArray& body);
    bool needsTranslation() const;
    void deliver(const QString& transcript, const QString& translation);

    const ServiceEndpoints endpoints_;
    const EngineTimings timings_;
    QString apiKey_;
    QString sourceLang_;
    QString targetLang_;
    std::int64_t sampleRate_ = 48000;
    bool isActive_ = false;
    AnswerOrder order_;
    ServiceClient http_;
    Lifetime lifetime_; // Last: ends first.
};

} // namespace orv
