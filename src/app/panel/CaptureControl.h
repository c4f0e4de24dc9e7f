#pragma once

#include "AudioSourceType.h"

#include <QString>

#include <functional>

namespace orv {

/// What the flows of the control panel need of the audio manager; each operation means what the
/// audio manager's own means.
class CaptureControl {
  public:
    virtual ~CaptureControl() = default;

    virtual bool isCapturing() const = 0;
    virtual void setGain(float gain, bool autoGain) = 0;
    virtual void sendConfig(const QString& sourceLang, const QString& targetLang,
                            bool saveTranscript, bool showOriginal) = 0;
    virtual void startCapture(AudioSourceType source, const QString& deviceId,
                              const QString& appBundleId) = 0;
    virtual void stopCapture(std::function<void()> done) = 0;
    virtual void stopCaptureSync() = 0;
};

} // namespace orv
