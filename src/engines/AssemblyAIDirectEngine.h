#pragma once

#include "AssemblyAITurns.h"
#include "EngineDescriptor.h"
#include "PcmPacer.h"
#include "StreamingEngine.h"

#include <QTimer>

#include <memory>
#include <optional>

namespace orv {

EngineDescriptor assemblyaiEngine();

/// AssemblyAI's real-time transcription: version 2, and where that is served no longer, version 3.
class AssemblyAIDirectEngine : public StreamingEngine {
  public:
    /// Which interface has worked; sessions share it, so that only the first has to find out.
    struct Memory {
        bool isVersion3 = false;
    };

    explicit AssemblyAIDirectEngine(ServiceEndpoints endpoints = {}, EngineTimings timings = {},
                                    std::shared_ptr<Memory> memory = std::make_shared<Memory>());

    QString id() const override;
    QString name() const override;

    /// Waits for the service's first message, or its failure, or `EngineTimings::firstWord`, for
    /// each of the two interfaces.
    QCoro::Task<> connect(CloudEngineConfig config) override;

    /// Version 3 gets the sound in blocks of its own lengths, and not faster than it was spoken.
    QCoro::Task<> sendAudio(QByteArray pcm) override;

    QCoro::Task<> disconnect() override;

  protected:
    Completion<QString> sendBlock(StreamingSocket& socket, const QByteArray& pcm) override;
    QString farewell() const override;
    QStringList finalTranscripts(const QByteArray& message) override;
    QStringList lastTranscripts() override;
    bool isLast(const QByteArray& message) const override;
    std::optional<ServiceFault> faultIn(const QByteArray& message) const override;
    ServiceFault refusal(const HttpOutcome& answer) const override;
    ServiceFault closing(int closeCode, const QString& reason) const override;

  private:
    /// What version 3 needs beside the connection.
    struct Stream {
        Stream(std::int64_t sampleRate, bool awaitsFormatted)
            : pacer(sampleRate)
            , turns(awaitsFormatted) {}

        PcmPacer pacer;
        AssemblyAITurns turns;
    };

    QCoro::Task<bool> openVersion2(CloudEngineConfig config);
    QCoro::Task<> openVersion3(CloudEngineConfig config);
    Completion<QString> sendDue();
    void pump();

    /// That nothing waits any more. Whoever waits for it goes on at the latest with the engine's
    /// end.
    struct Drained {
        ~Drained() { done.complete(false); }

        Completion<bool> done;
    };

    const std::shared_ptr<Memory> memory_;
    bool isFinishing_ = false;
    Drained drained_;
    std::optional<Stream> stream_; ///< Once version 3 is tried.
    QTimer firstMessageTimer_;
    QTimer pumpTimer_; ///< For sound that has to wait.
};

} // namespace orv
