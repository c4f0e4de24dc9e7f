#pragma once

#include "Answer.h"
#include "AudioDevice.h"
#include "RunningApp.h"

#include <QList>
#include <QString>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

namespace orv {

class SerialQueue;

/// Whether the person at the machine allows the program to listen.
enum class CaptureAuthorization { NotDetermined, Restricted, Denied, Authorized };

/// Outcome of asking an input device to run at 48 kHz.
enum class RateSwitch {
    NotTried,        ///< No device was chosen by identifier.
    AlreadyAt48kHz,  ///< Nothing to do.
    Switched,        ///< The device now runs at 48 kHz; it did not before.
    NotSupported,    ///< The device keeps its own rate.
    RatesUnreadable, ///< The device does not tell its rates.
};

/// Sample format of a device.
struct AudioFormat {
    double sampleRate = 0; ///< Hz; 0 when there is no usable format.
    int channels = 0;      ///< 0 when there is no usable format.
};

/// One buffer of an input device: 32-bit float samples in [-1, 1], interleaved or not.
/// Valid only during the call that hands it over.
struct MicrophoneBuffer {
    const float* firstChannel = nullptr; ///< First sample of channel 0; null without float data.
    std::size_t frames = 0;              ///< Samples per channel.
    std::size_t stride = 1;              ///< Distance between two samples of channel 0.
};

/// Why a microphone cannot be prepared at all.
enum class MicrophoneFailure {
    None,
    NoEngine, ///< The sound service cannot be used.
    NoInput,  ///< There is no input device.
};

/// What `MicrophoneStream::prepare` found out. The rest is meaningful without a failure only.
struct MicrophonePreparation {
    MicrophoneFailure failure = MicrophoneFailure::None;
    bool deviceFound = true; ///< False: the identifier is unknown and the default input is used.
    QString deviceNumber;    ///< The platform's short number of the chosen device.
    QString selectError;     ///< The device exists but could not be selected; empty otherwise.
    RateSwitch rateSwitch = RateSwitch::NotTried;
    double rateBefore = 0;     ///< The device's rate before the switch, Hz.
    AudioFormat initialFormat; ///< As found.
    AudioFormat format;        ///< As it will be delivered.
};

/// Capture from one input device. Made, used and destroyed on the main thread. Destroying it ends
/// the capture; nothing comes to its listener after the destructor has returned.
class MicrophoneStream {
  public:
    /// Who uses the stream, and outlives it. Called on the main thread, but for the buffers. A call
    /// on the main thread may destroy the stream; what the call hands over stays valid until its
    /// return.
    class Listener {
      public:
        /// The answer to `prepare`: comes later, once.
        virtual void microphonePrepared(const MicrophonePreparation& found) = 0;

        /// The answer to `start`: comes later, once, with an empty string or the reason of the
        /// failure.
        virtual void microphoneStarted(const QString& error) = 0;

        /// Sound, on the platform's capture thread, which must not be held up: no memory is asked
        /// for and the system is not called. The first buffers may come before the answer to
        /// `start`.
        virtual void microphoneBuffer(const MicrophoneBuffer& buffer) = 0;

        /// A running capture has ended by itself: device or sound service gone. Comes once.
        virtual void microphoneStopped(const QString& error) = 0;

      protected:
        ~Listener() = default;
    };

    virtual ~MicrophoneStream() = default;

    /// Chooses the device (`deviceId`; empty: the default input), asks it for 48 kHz and tells the
    /// format that buffers will have. Never blocks.
    virtual void prepare(const QString& deviceId) = 0;

    /// After a successful `prepare`: starts delivering buffers of `framesPerBuffer` frames (the
    /// platform may deliver other sizes). Never blocks.
    virtual void start(std::size_t framesPerBuffer) = 0;

    /// Ends the capture. What has been recorded and not been delivered yet comes within the call,
    /// as a last and shorter buffer, on the calling thread; nothing follows it.
    virtual void finish() = 0;
};

/// What to capture of everything the machine plays.
struct ScreenCaptureRequest {
    std::optional<QString> applicationId; ///< Without a value: everything.
    /// An unknown application: false captures everything instead, true waits for it in silence.
    bool waitForApplication = false;
};

/// What `ScreenCaptureStream::start` came to.
struct ScreenCaptureStart {
    QString error;                ///< Empty when the capture runs.
    bool contentRead = true;      ///< False: it failed before it was known what there is.
    bool displayFound = true;     ///< False: there is nothing to capture; `error` is set as well.
    bool applicationFound = true; ///< False: the application is unknown, all sound is captured.
    QString applicationName;      ///< For people; empty for system audio.
};

/// Capture of what the machine plays: everything, or one application. Threads and lifetime as for
/// `MicrophoneStream`.
///
/// Blocks are 32-bit floats at 48 kHz, two channels, planar: all samples of the left channel, then
/// all of the right. Blocks keep coming, silent ones, while nothing plays: whoever waits for a
/// pause in speech needs to hear it. An application that stops playing and plays again, and a
/// change of what the machine plays on, do not end the capture.
class ScreenCaptureStream {
  public:
    /// Who uses the stream, and outlives it. Threads and lifetime as for
    /// `MicrophoneStream::Listener`.
    class Listener {
      public:
        /// The answer to `start`: comes later, once.
        virtual void screenCaptureStarted(const ScreenCaptureStart& outcome) = 0;

        /// One block of raw bytes, on the platform's capture thread like a microphone's buffers;
        /// valid only during the call.
        virtual void screenCaptureBlock(std::span<const std::byte> block) = 0;

        /// A running capture has ended by itself: the sound service is gone. Comes once.
        virtual void screenCaptureStopped(const QString& error) = 0;

      protected:
        ~Listener() = default;
    };

    virtual ~ScreenCaptureStream() = default;

    /// Starts capturing. Never blocks.
    virtual void start(const ScreenCaptureRequest& request) = 0;

    /// Ends the capture, or its start: nothing comes to the listener after the return, and what has
    /// gathered comes within the call, on the calling thread. The answer is an empty string or what
    /// went wrong.
    virtual void stop(Answer<const QString&> done) = 0;
};

/// The sound services of a platform: what can be listened to, and the listening. Lives on the main
/// thread; nothing here blocks. Every question is answered.
class AudioCapture {
  public:
    /// Who follows the sound services. Called on the main thread.
    class Listener {
      public:
        /// Devices or applications have come or gone; several changes may be told at once.
        virtual void captureListsChanged() = 0;

        /// The sound service has gone away (false) or is there again (true), which is the moment
        /// to start a capture again that ended by itself.
        virtual void captureAvailabilityChanged(bool available) = 0;

      protected:
        ~Listener() = default;
    };

    virtual ~AudioCapture() = default;

    virtual void microphoneAuthorization(Answer<CaptureAuthorization> done) = 0;
    /// Answers whether the access was granted.
    virtual void requestMicrophoneAccess(Answer<bool> done) = 0;

    /// Devices that have input channels, without the platform's own loop-backs of outputs unless a
    /// person would choose them as an input.
    virtual void listInputDevices(Answer<const QList<AudioDevice>&> done) = 0;
    /// Applications whose sound can be captured; no value when the platform refuses to tell.
    virtual void listCapturableApps(Answer<const std::optional<QList<RunningApp>>&> done) = 0;
    /// Running applications that may play sound, whether they do so now or not.
    virtual void listRunningApps(Answer<const QList<RunningApp>&> done) = 0;

    // A stream may outlive the object that made it.

    /// Null when the sound service cannot be used at all.
    virtual std::unique_ptr<MicrophoneStream>
    createMicrophoneStream(MicrophoneStream::Listener& listener) = 0;
    /// Never null.
    virtual std::unique_ptr<ScreenCaptureStream>
    createScreenCaptureStream(ScreenCaptureStream::Listener& listener) = 0;

    /// One listener; null ends it.
    virtual void setListener(Listener* listener) = 0;
};

/// The sound services of this machine. Returns at once; the service is contacted in the background
/// and reconnected to whenever it goes away. `disk` is the queue for files and outlives the
/// services.
std::unique_ptr<AudioCapture> createSystemAudioCapture(SerialQueue& disk);

} // namespace orv
