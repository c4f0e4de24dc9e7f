#pragma once

#include "AudioCapture.h"
#include "FrameCollector.h"
#include "PulseConnection.h"
#include "PulseRecordStream.h"

#include <QObject>

#include <memory>
#include <optional>

namespace orv {

/// A microphone of the sound server, delivered at the rate the device runs at, so that the server
/// does not resample. A device at another rate is asked for 48 kHz by opening it at that rate,
/// which an idle device that can follows. Buffers carry channel 0, always of the size asked for.
class PulseMicrophone final : public MicrophoneStream, private PulseRecordStream::Listener {
  public:
    PulseMicrophone(std::shared_ptr<PulseConnection> connection,
                    MicrophoneStream::Listener& listener);
    ~PulseMicrophone() override;

    void prepare(const QString& deviceId) override;
    void start(std::size_t framesPerBuffer) override;
    void finish() override;

  private:
    using Sources = std::optional<std::vector<PulseSource>>;

    /// What the recording stream is open for.
    enum class Purpose {
        RateQuestion, ///< It asks the device for 48 kHz, and takes no sound.
        Start,        ///< `start` waits for it.
        Capture,
    };

    // On the loop's thread, or with its lock held.
    void recordingReady() override;
    void recorded(const float* samples, std::size_t frames) override;
    void recordingMoved(const QByteArray& source) override;
    void recordingEnded(const QString& error) override;
    void findChosen(const QByteArray& name);
    void findDefault();
    /// The first input of all, for a default that is none.
    void findAny();
    void use(const PulseSource& source);
    void askFor48kHz();
    void cannotAskFor48kHz(const QString& error);
    void readBack();
    void finishPreparation(MicrophoneFailure failure = MicrophoneFailure::None);
    void captureEnded(const QString& error);
    PulseRecording recording(std::uint32_t sampleRate) const;

    std::shared_ptr<PulseConnection> connection_;
    MicrophoneStream::Listener& listener_;
    QObject context_; ///< What the listener's calls are posted to; lives where this object does.

    PulseSource source_;
    bool isChosen_ = false; ///< By identifier, so that it must not turn into another device.
    MicrophonePreparation preparation_;
    std::size_t framesPerBuffer_ = 0;
    std::optional<FrameCollector> collector_;
    Purpose purpose_ = Purpose::RateQuestion;
    std::unique_ptr<PulseRecordStream> stream_;
};

} // namespace orv
