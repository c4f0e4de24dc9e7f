#pragma once

#include "EngineDescriptor.h"
#include "StreamingEngine.h"

#include <QTimer>

namespace orv {

EngineDescriptor deepgramEngine();

/// Deepgram's streaming recognition.
class DeepgramDirectEngine : public StreamingEngine {
  public:
    explicit DeepgramDirectEngine(ServiceEndpoints endpoints = {}, EngineTimings timings = {});

    QString id() const override;
    QString name() const override;

    /// Does not wait for the service: a key that it refuses shows as the end of the connection.
    QCoro::Task<> connect(CloudEngineConfig config) override;
    QCoro::Task<> disconnect() override;

  protected:
    Completion<QString> sendBlock(StreamingSocket& socket, const QByteArray& pcm) override;
    QString farewell() const override;
    QStringList finalTranscripts(const QByteArray& message) override;
    bool isLast(const QByteArray& message) const override;
    ServiceFault refusal(const HttpOutcome& answer) const override;
    ServiceFault closing(int closeCode, const QString& reason) const override;

  private:
    QTimer keepAliveTimer_;
};

} // namespace orv
