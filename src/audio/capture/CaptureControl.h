#pragma once

#include "AudioSourceType.h"

#include <QString>

#include <functional>

namespace orv {

/// The audio manager as the control panel's flows see it, which start and stop runs.
class CaptureControl {
  public:
    virtual ~CaptureControl() = default;

    virtual bool isCapturing() const = 0;
    virtual void setGain(float gain, bool autoGain) = 0;
    virtual void sendConfig(const QString& sourceLang, const QString& targetLang,
                            bool saveTranscript, bool showOriginal) = 0;
    virtual void startCapture(AudioSourceType source, const QString& deviceId,
                              const QString& appBundleId) = 0;
    virtual void changeSource(AudioSourceType source, const QString& deviceId,
                              const QString& appBundleId) = 0;
    virtual void stopCapture(std::function<void()> done) = 0;
    virtual void stopCaptureSync() = 0;
};

} // namespace orv
