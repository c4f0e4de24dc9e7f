#pragma once

#include "EngineDescriptor.h"
#include "StreamingEngine.h"

#include <QTimer>

namespace orv {

EngineDescriptor assemblyaiEngine();

/// AssemblyAI's real-time transcription. The source language is not sent to it.
class AssemblyAIDirectEngine : public StreamingEngine {
  public:
    explicit AssemblyAIDirectEngine(ServiceEndpoints endpoints = {}, EngineTimings timings = {});

    QString id() const override;
    QString name() const override;

    /// Waits for the service's first message, or its failure, or `EngineTimings::streamRequest`.
    QCoro::Task<> connect(CloudEngineConfig config) override;

  protected:
    Completion<QString> sendBlock(StreamingSocket& socket, const QByteArray& pcm) override;
    QString farewell() const override;
    QString finalTranscript(const QByteArray& message) const override;

  private:
    QTimer firstMessageTimer_;
};

} // namespace orv
