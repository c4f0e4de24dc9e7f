#include "Controls.h"

#include "AudioManager.h"
#include "TranslationEngine.h"

#include <utility>

namespace orv {

namespace {

class AudioManagerControl : public CaptureControl {
  public:
    explicit AudioManagerControl(AudioManager& audio)
        : audio_(audio) {}

    bool isCapturing() const override { return audio_.isCapturing(); }

    void setGain(float gain, bool autoGain) override { audio_.setGain(gain, autoGain); }

    void sendConfig(const QString& sourceLang, const QString& targetLang, bool saveTranscript,
                    bool showOriginal) override {
        audio_.sendConfig(sourceLang, targetLang, saveTranscript, showOriginal);
    }

    void startCapture(AudioSourceType source, const QString& deviceId,
                      const QString& appBundleId) override {
        audio_.startCapture(source, deviceId, appBundleId);
    }

    void stopCapture(std::function<void()> done) override { audio_.stopCapture(std::move(done)); }

    void stopCaptureSync() override { audio_.stopCaptureSync(); }

  private:
    AudioManager& audio_;
};

class SupervisorControl : public BackendControl {
  public:
    explicit SupervisorControl(TranslationEngine& engine)
        : engine_(engine) {}

    bool isRunning() const override { return engine_.isRunning(); }

    void startBackend() override { engine_.startBackend(); }

    void stopBackend() override { engine_.stopBackend(); }

    void leaveRunning() override { engine_.leaveRunning(); }

  private:
    TranslationEngine& engine_;
};

} // namespace

std::unique_ptr<CaptureControl> makeCaptureControl(AudioManager& audio) {
    return std::make_unique<AudioManagerControl>(audio);
}

std::unique_ptr<BackendControl> makeBackendControl(TranslationEngine& engine) {
    return std::make_unique<SupervisorControl>(engine);
}

} // namespace orv
