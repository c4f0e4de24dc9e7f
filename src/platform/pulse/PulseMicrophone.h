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
class PulseMicrophone final : public MicrophoneStream {
  public:
    explicit PulseMicrophone(std::shared_ptr<PulseConnection> connection);
    ~PulseMicrophone() override;

    void prepare(const QString& deviceId,
                 std::function<void(const MicrophonePreparation&)> done) override;
    void start(std::size_t framesPerBuffer, BufferHandler onBuffer, StoppedHandler onStopped,
               std::function<void(const QString& error)> done) override;

  private:
    using Sources = std::optional<std::vector<PulseSource>>;

    // On the loop's thread, or with its lock held.
    void findChosen(const QByteArray& name);
    void findDefault();
    void use(const PulseSource& source);
    void askFor48kHz();
    void readBack();
    void finishPreparation(MicrophoneFailure failure = MicrophoneFailure::None);
    void startEnded(const QString& error);
    PulseRecording recording(std::uint32_t sampleRate) const;

    std::shared_ptr<PulseConnection> connection_;
    QObject context_; ///< What the completions are posted to; lives where this object does.

    PulseSource source_;
    bool isChosen_ = false; ///< By identifier, so that it must not turn into another device.
    MicrophonePreparation preparation_;
    std::function<void(const MicrophonePreparation&)> prepared_;
    std::function<void(const QString&)> started_;
    BufferHandler onBuffer_;
    StoppedHandler onStopped_;
    std::optional<FrameCollector> collector_;
    std::unique_ptr<PulseRecordStream> stream_;
};

} // namespace orv
