#pragma once

#include "EngineTimings.h"
#include "RunWatch.h"
#include "ServiceEndpoints.h"

#include <QString>

#include <chrono>

namespace orv {

class AudioCapture;
class EngineCatalogue;
class TranslationSettings;

/// The fixed times of a capture run.
struct AudioTimings {
    std::chrono::milliseconds linkReady{300};        ///< From opening the link to using it.
    std::chrono::milliseconds fixedChunk{3000};      ///< Between chunks without pause detection.
    std::chrono::milliseconds lastBufferSend{2000};  ///< Longest wait for the last buffer's send.
    std::chrono::milliseconds flush{120000};         ///< Longest wait for the flush confirmation.
    std::chrono::milliseconds stopSend{1000};        ///< Longest wait for the stop message's send.
    std::chrono::milliseconds lastAnswers{10000};    ///< Longest wait for services after the stop.
    std::chrono::milliseconds meterRefresh{33};      ///< Between two readings of the level meter.
    std::chrono::milliseconds progressRefresh{1000}; ///< Between two looks at how a run is.
    RunWatchTimings watch = {};
};

/// What the audio manager and its runs are given. The references outlive them.
struct AudioEnvironment {
    TranslationSettings& settings;
    AudioCapture& capture;
    const EngineCatalogue& engines;
    QString transcriptFolder; ///< Where runs with a direct engine put their transcripts.
    ServiceEndpoints endpoints = {};
    EngineTimings engineTimings = {};
    quint16 backendPort = 8765;
    AudioTimings timings = {};
};

} // namespace orv
