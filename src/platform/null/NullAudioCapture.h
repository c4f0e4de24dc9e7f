#pragma once

#include "AudioCapture.h"

#include <QObject>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace orv {

/// Sound services that answer what they are told to: by default, those of a machine that has
/// neither an input device nor anything to capture. Streams deliver what is put into them.
///
/// Everything is called on the main thread, but for the two `deliver…` calls: they play the
/// capture thread, and the stream must stay alive while they last. Answers come later, as with
/// real services.
class NullAudioCapture final : public AudioCapture {
  public:
    /// What the services answer.
    struct Answers {
        Answers();

        CaptureAuthorization authorization = CaptureAuthorization::Authorized;
        bool accessGranted = false;
        QList<AudioDevice> inputDevices;
        std::optional<QList<RunningApp>> capturableApps = QList<RunningApp>();
        QList<RunningApp> runningApps;
        MicrophonePreparation preparation;
        QString microphoneStartError;    ///< Empty: it starts.
        std::vector<float> gatheredRest; ///< What a running microphone delivers at its end.
        ScreenCaptureStart screenCapture;
        QString screenCaptureStopError; ///< Empty: it stops.
    };

    /// What the services were asked.
    struct Asked {
        int accessRequests = 0;
        int preparations = 0;
        QString deviceId;                ///< Of the last preparation.
        std::size_t framesPerBuffer = 0; ///< Of the last microphone start.
        int screenCaptureStarts = 0;
        ScreenCaptureRequest screenCapture; ///< Of the last screen capture start.
        int listings = 0;                   ///< Of all three kinds.
    };

    NullAudioCapture();
    ~NullAudioCapture() override;

    Answers& answers();
    const Asked& asked() const;

    bool isMicrophoneRunning() const;
    bool isScreenCaptureRunning() const;

    /// Hands a buffer to the running microphone. False when none runs.
    bool deliver(const MicrophoneBuffer& buffer);
    /// Hands a block to the running screen capture. False when none runs.
    bool deliverBlock(std::span<const std::byte> block);

    // Ends what runs, the way a device that is unplugged does. False when nothing runs.
    bool endMicrophone(const QString& error);
    bool endScreenCapture(const QString& error);

    void tellListsChanged();
    void tellAvailability(bool available);

    void microphoneAuthorization(Answer<CaptureAuthorization> done) override;
    void requestMicrophoneAccess(Answer<bool> done) override;
    void listInputDevices(Answer<const QList<AudioDevice>&> done) override;
    void listCapturableApps(Answer<const std::optional<QList<RunningApp>>&> done) override;
    void listRunningApps(Answer<const QList<RunningApp>&> done) override;
    std::unique_ptr<MicrophoneStream>
    createMicrophoneStream(MicrophoneStream::Listener& listener) override;
    std::unique_ptr<ScreenCaptureStream>
    createScreenCaptureStream(ScreenCaptureStream::Listener& listener) override;
    void setListener(Listener* listener) override;

  private:
    struct State;
    class Microphone;
    class ScreenCapture;

    std::shared_ptr<State> state_;
    QObject context_;
    Listener* listener_ = nullptr;
};

} // namespace orv
