#pragma once

#include "PrivatePulse.h"
#include "PulseAudioCapture.h"
#include "SerialQueue.h"
#include "Tones.h"
#include "WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace orv::test {

inline constexpr std::size_t blockFloats = 1920;
inline constexpr std::size_t channelFloats = 960;

/// Sound services on a private server with two outputs and two microphones: "cable" and "speakers"
/// play at 48 kHz; "mic" hears what is played to "cable" at 48 kHz, "mic44" hears it at 44.1 kHz
/// and cannot do otherwise; the monitor of "slow" runs at 44.1 kHz and can be switched.
///
/// It listens to the services and to every stream that it makes.
class PulseCaptureFixture : public testing::Test,
                            protected AudioCapture::Listener,
                            protected MicrophoneStream::Listener,
                            protected ScreenCaptureStream::Listener {
  protected:
    static QStringList modules();

    PulseCaptureFixture();

    std::unique_ptr<MicrophoneStream> createMicrophone();
    std::unique_ptr<ScreenCaptureStream> createScreenCapture();

    MicrophonePreparation prepare(MicrophoneStream& stream, const QString& device);
    /// Starts a prepared microphone into `heard`. Returns the error.
    QString start(MicrophoneStream& stream);
    ScreenCaptureStart start(ScreenCaptureStream& stream, const ScreenCaptureRequest& request = {});

    QList<AudioDevice> inputDevices();
    std::optional<QList<RunningApp>> capturableApps();

    /// What was told last; false before anything was.
    bool isToldAvailable() const { return !availability.isEmpty() && availability.last(); }

    /// Waits until the newest 200 ms of `heard` carry each tone in `present` and none of `absent`.
    bool hears(const std::vector<int>& present, const std::vector<int>& absent,
               double sampleRate = 48000);
    /// Waits for so many more samples, so that what was on its way has come through.
    bool hearsMore(std::size_t samples);

    PrivatePulse pulse;
    PulseOptions options;
    SerialQueue disk{QStringLiteral("test.disk")};
    std::unique_ptr<PulseAudioCapture> capture;
    SampleCollector heard;  ///< Of a screen capture: the left channel.
    SampleCollector blocks; ///< Of a screen capture: everything as it lies.
    QStringList stops;      ///< With which errors streams have ended by themselves.
    std::optional<MicrophonePreparation> preparation;
    int preparations = 0; ///< How many have been told.
    std::optional<QString> microphoneStart;
    std::optional<ScreenCaptureStart> screenCaptureStart;
    int listChanges = 0;
    QList<bool> availability; ///< Everything that was told.

  private:
    void microphonePrepared(const MicrophonePreparation& found) override;
    void microphoneStarted(const QString& error) override;
    void microphoneBuffer(const MicrophoneBuffer& buffer) override;
    void microphoneStopped(const QString& error) override;
    void screenCaptureStarted(const ScreenCaptureStart& outcome) override;
    void screenCaptureBlock(std::span<const std::byte> bytes) override;
    void screenCaptureStopped(const QString& error) override;
    void captureListsChanged() override;
    void captureAvailabilityChanged(bool available) override;
};

} // namespace orv::test
