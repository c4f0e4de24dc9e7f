#pragma once

#include "AudioCapture.h"
#include "AudioDevice.h"
#include "AudioSourceType.h"
#include "CaptureProblem.h"
#include "RunningApp.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <span>

namespace orv {

class AudioIngest;

/// The fixed times of taking a capture up again that ended by itself. The pause doubles from the
/// first to the longest and starts over with every capture that runs.
struct CaptureTimings {
    std::chrono::milliseconds firstRetry{1000};
    std::chrono::milliseconds longestRetry{10000};
};

/// The source of a stored number; no value for a number that names none (negative, or 3 and above).
std::optional<AudioSourceType> audioSourceFromRaw(int raw);

/// Opens and closes what a run listens to, and lists what there is to listen to. Lives on the main
/// thread; nothing blocks. Captured buffers go straight from the platform's capture thread into the
/// ingest.
///
/// A start that fails prints its line and leaves the capture not running, but for the two
/// fallbacks: an unknown device gives way to the default input, a screen capture that fails to the
/// microphone. A capture that has run and ends by itself (device unplugged, sound service
/// restarted) is taken up again until `stop`: when the service is back, when a device comes, or
/// after a growing pause. It then waits for the device or application it had and takes no other.
class CaptureSources : public QObject,
                       private AudioCapture::Listener,
                       private MicrophoneStream::Listener,
                       private ScreenCaptureStream::Listener {
    Q_OBJECT

  public:
    /// The references outlive this object. Asks the platform for all lists at once.
    CaptureSources(AudioCapture& capture, AudioIngest& ingest, CaptureTimings timings = {},
                   QObject* parent = nullptr);
    ~CaptureSources() override;

    /// Ends what ran before, as `stop` does, and starts. `deviceId` counts for a microphone (empty:
    /// the default input), `appBundleId` for a single application (empty: everything is captured).
    /// False, with a line, when `source` is none of the known ones.
    bool start(AudioSourceType source, const QString& deviceId, const QString& appBundleId);

    /// Ends the capture. No buffer reaches the ingest after the return; its converter is dropped.
    /// The line about a screen capture's end follows later.
    void stop();

    /// True from `start` until `stop` or a start that fails.
    bool isActive() const { return run_ != nullptr; }

    /// True while buffers are being delivered.
    bool isRunning() const;

    // Published lists; `listsChanged` tells of changes. They follow the platform by themselves.
    QList<AudioDevice> inputDevices() const { return inputDevices_; }

    QList<RunningApp> runningApps() const { return runningApps_; }

    QList<RunningApp> capturableApps() const { return capturableApps_; }

    bool isBlackHoleInstalled() const { return isBlackHoleInstalled_; }

    bool hasScreenCapturePermission() const { return hasScreenCapturePermission_; }

    // Ask the platform again; the answers arrive later, with their lines.
    void scanDevices();
    void refreshCapturableApps();
    void scanRunningApps();
    void checkScreenCapturePermission();
    void refreshLists(); ///< All of them.

  Q_SIGNALS:
    void listsChanged();
    void activeChanged();  ///< `isActive`, `isRunning`.
    void captureStarted(); ///< Buffers come, for the first time or again.
    /// A capture has ended by itself, or cannot be taken up again yet; it is tried on.
    void captureEnded(CaptureProblem problem, const QString& reason);
    /// A start has failed; nothing is tried any more.
    void captureFailed(CaptureProblem problem, const QString& reason);

  private:
    struct Run;
    /// Whether an answer of the platform is logged always, or only when it is news.
    enum class Announce { Always, Changes };

    // Microphone.
    void startMicrophoneCapture();
    void microphoneAuthorized(CaptureAuthorization status);
    void microphoneAccessAnswered(bool granted);
    void startMicrophoneCaptureInternal();
    void microphonePrepared(const MicrophonePreparation& found) override;
    bool choosePath();
    void startMicrophoneStream();
    void microphoneStarted(const QString& error) override;
    void microphoneBuffer(const MicrophoneBuffer& buffer) override;
    void microphoneStopped(const QString& error) override;

    // System or application sound.
    void startScreenCaptureAudio();
    void screenCaptureStarted(const ScreenCaptureStart& outcome) override;
    void screenCaptureBlock(std::span<const std::byte> block) override;
    void screenCaptureStopped(const QString& error) override;

    // The course of a run.
    template <typename Work>
    auto forThisRun(Work work);
    void running();
    void failed(const QString& line, CaptureProblem problem, const QString& reason = {});
    void giveUp(CaptureProblem problem, const QString& reason = {});
    void retryLater();
    void retry();
    /// Hands over what it has left; the converter is dropped.
    void finishMicrophone();
    void closeStreams();

    void askDevices(Announce announce);
    void askCapturableApps(Announce announce);
    void askRunningApps(Announce announce);
    void captureListsChanged() override;
    void captureAvailabilityChanged(bool available) override;

    AudioCapture& capture_;
    AudioIngest& ingest_;
    const CaptureTimings timings_;
    QTimer retry_;
    std::shared_ptr<Run> run_; ///< Answers of the platform hold it weakly.
    /// Stopped ones. Each is kept until the platform has answered its stop.
    std::list<std::unique_ptr<ScreenCaptureStream>> retired_;

    QList<AudioDevice> inputDevices_;
    QList<RunningApp> runningApps_;
    QList<RunningApp> capturableApps_;
    bool isBlackHoleInstalled_ = false;
    bool hasScreenCapturePermission_ = false;
};

} // namespace orv
