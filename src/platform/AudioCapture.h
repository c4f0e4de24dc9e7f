#pragma once

#include "AudioDevice.h"
#include "RunningApp.h"

#include <QList>
#include <QString>

#include <cstddef>
#include <functional>
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

/// Capture from one input device. All calls and all completions happen on the thread that created
/// it; buffers arrive on the platform's capture thread. Destroying the object ends the capture; no
/// handler runs after the destructor has returned. A handler that runs on the owner's thread may
/// destroy the object.
class MicrophoneStream {
  public:
    using BufferHandler = std::function<void(const MicrophoneBuffer&)>;
    /// Called once when a running capture ends by itself: device or sound service gone.
    using StoppedHandler = std::function<void(const QString& error)>;

    virtual ~MicrophoneStream() = default;

    /// Chooses the device (`deviceId`; empty: the default input), asks it for 48 kHz and tells the
    /// format that buffers will have. Never blocks; `done` is called later, once.
    virtual void prepare(const QString& deviceId,
                         std::function<void(const MicrophonePreparation&)> done) = 0;

    /// After a successful `prepare`: starts delivering buffers of `framesPerBuffer` frames (the
    /// platform may deliver other sizes). Never blocks; `done` is called later, once, with an
    /// empty string or the reason of the failure.
    virtual void start(std::size_t framesPerBuffer, BufferHandler onBuffer,
                       StoppedHandler onStopped,
                       std::function<void(const QString& error)> done) = 0;
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
    /// One block of raw bytes, on the capture thread, valid only during the call.
    using BlockHandler = std::function<void(std::span<const std::byte>)>;
    using StoppedHandler = std::function<void(const QString& error)>;

    virtual ~ScreenCaptureStream() = default;

    /// Starts capturing. Never blocks; `done` is called later, once.
    virtual void start(const ScreenCaptureRequest& request, BlockHandler onBlock,
                       StoppedHandler onStopped,
                       std::function<void(const ScreenCaptureStart&)> done) = 0;

    /// Ends the capture, or its start: no block, no `onStopped` and no answer of `start` come after
    /// the return. `done` is called later, once, with an empty string or what went wrong, unless
    /// the object is destroyed before.
    virtual void stop(std::function<void(const QString& error)> done) = 0;
};

/// The sound services of a platform: what can be listened to, and the listening. Lives on the main
/// thread; nothing here blocks, and every completion and handler runs later on that thread.
class AudioCapture {
  public:
    virtual ~AudioCapture() = default;

    virtual void microphoneAuthorization(std::function<void(CaptureAuthorization)> done) = 0;
    virtual void requestMicrophoneAccess(std::function<void(bool granted)> done) = 0;

    /// Devices that have input channels, without the platform's own loop-backs of outputs unless a
    /// person would choose them as an input.
    virtual void listInputDevices(std::function<void(const QList<AudioDevice>&)> done) = 0;
    /// Applications whose sound can be captured; no value when the platform refuses to tell.
    virtual void
    listCapturableApps(std::function<void(const std::optional<QList<RunningApp>>&)> done) = 0;
    /// Running applications that may play sound, whether they do so now or not.
    virtual void listRunningApps(std::function<void(const QList<RunningApp>&)> done) = 0;

    virtual std::unique_ptr<MicrophoneStream> createMicrophoneStream() = 0;
    virtual std::unique_ptr<ScreenCaptureStream> createScreenCaptureStream() = 0;

    /// Called when devices or applications come or go (several changes may be told at once). One
    /// handler; an empty one ends it.
    virtual void setListsChangedHandler(std::function<void()> handler) = 0;

    /// Called when the sound service goes away (false) or is there again (true): the moment to
    /// start a capture again that `StoppedHandler` ended. One handler; an empty one ends it.
    virtual void setAvailabilityHandler(std::function<void(bool available)> handler) = 0;
};

/// The sound services of this machine. Returns at once; the service is contacted in the background
/// and reconnected to whenever it goes away. `disk` is the queue for files and outlives the
/// services.
std::unique_ptr<AudioCapture> createSystemAudioCapture(SerialQueue& disk);

} // namespace orv
