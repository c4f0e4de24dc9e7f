#pragma once

#include "AudioCapture.h"
#include "PulseConnection.h"
#include "RunningAppScanner.h"

#include <QObject>
#include <QTimer>

#include <memory>

namespace orv {

/// The sound services of a desktop whose sound server speaks PulseAudio's protocol (PulseAudio
/// itself, or PipeWire). A missing server is looked for again and again, in the background.
class PulseAudioCapture final : public AudioCapture, private PulseListener {
  public:
    /// The queue for files outlives the object. `connection` is not null.
    PulseAudioCapture(SerialQueue& disk, std::shared_ptr<PulseConnection> connection,
                      RunningAppPlaces places = RunningAppPlaces::ofThisMachine());
    ~PulseAudioCapture() override;

    /// Authorized when the server can be reached, else Denied.
    void microphoneAuthorization(Answer<CaptureAuthorization> done) override;
    void requestMicrophoneAccess(Answer<bool> done) override;

    /// Sources that are not monitors. A virtual cable is made with a remapped or virtual source and
    /// is listed by that.
    void listInputDevices(Answer<const QList<AudioDevice>&> done) override;
    /// Who plays now, and the running programs with a desktop entry; no value without a server.
    void listCapturableApps(Answer<const std::optional<QList<RunningApp>>&> done) override;
    void listRunningApps(Answer<const QList<RunningApp>&> done) override;

    std::unique_ptr<MicrophoneStream>
    createMicrophoneStream(MicrophoneStream::Listener& listener) override;
    std::unique_ptr<ScreenCaptureStream>
    createScreenCaptureStream(ScreenCaptureStream::Listener& listener) override;

    void setListener(Listener* listener) override;

  private:
    void pulseReady() override;
    void pulseLost() override;
    void pulseChanged(PulseChange change) override;
    void tellAvailability(bool available);
    void tellListsChanged();

    std::shared_ptr<PulseConnection> connection_;
    std::shared_ptr<RunningAppScanner> scanner_;
    QObject context_; ///< What the answers are posted to; lives where this object does.
    QTimer settle_;   ///< Gathers changes that come together.
    Listener* listener_ = nullptr;
};

} // namespace orv
