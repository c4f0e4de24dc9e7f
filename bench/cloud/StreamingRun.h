#pragma once

#include "AudioManager.h"
#include "DefaultsStore.h"
#include "EngineCatalogue.h"
#include "NullAudioCapture.h"
#include "SerialQueue.h"
#include "ServiceEndpoints.h"
#include "TranslationSettings.h"

#include <QTemporaryDir>

#include <memory>
#include <span>

namespace orv::bench {

/// A whole run of the program's audio with a streaming engine, as the composition root puts it
/// together, but for the source: buffers come from who measures. Lives on the main thread.
class StreamingRun {
  public:
    /// The service and the backend both listen on `port`.
    StreamingRun(const QString& engine, std::uint16_t port);
    ~StreamingRun();

    /// Begins; the run takes sound once `isRunning`.
    void start();
    void stop();
    bool isRunning() const;

    /// One captured buffer at 48 kHz, on the thread that plays the capture thread.
    void deliver(std::span<const float> samples);

  private:
    const EngineCatalogue engines_;
    QTemporaryDir folder_;
    SerialQueue disk_{QStringLiteral("bench.disk")};
    DefaultsStore store_;
    TranslationSettings settings_;
    NullAudioCapture capture_;
    std::unique_ptr<AudioManager> manager_;
};

ServiceEndpoints endpointsAt(std::uint16_t port);

} // namespace orv::bench
