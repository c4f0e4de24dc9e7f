#pragma once

#include "AudioCapture.h"
#include "AudioSourceType.h"
#include "CaptureSources.h"

#include <QString>

#include <chrono>
#include <memory>

namespace orv {

/// What is being captured from a start to a stop.
struct CaptureSources::Run {
    AudioSourceType source = AudioSourceType::Microphone; ///< A fallback changes it.
    QString deviceId;
    QString appBundleId;

    std::unique_ptr<MicrophoneStream> microphone;
    std::unique_ptr<ScreenCaptureStream> screenCapture;
    AudioFormat format; ///< Of the microphone.

    bool isRunning = false;
    bool hasRun = false;    ///< It ran once, so that it is taken up again.
    bool hadTarget = false; ///< It ran with the very device or application that was asked for.
    int attempts = 0;       ///< Since it last ran.
    QString lastFailure;    ///< Not to be repeated with every try.
    std::chrono::milliseconds pause{0}; ///< Before the next try.

    /// Later tries are as the first one was, and say nothing new.
    bool isQuiet() const { return attempts > 1; }
};

} // namespace orv
