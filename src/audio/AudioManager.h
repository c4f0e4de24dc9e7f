#pragma once

#include "AudioDevice.h"
#include "AudioEnvironment.h"
#include "AudioNotice.h"
#include "AudioSourceType.h"
#include "BackendNews.h"
#include "CaptureControl.h"
#include "ConfigMessage.h"
#include "EventLoopThread.h"
#include "Result.h"
#include "RunProgress.h"
#include "RunningApp.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orv {

class AudioRun;
class SoundPath;

/// The owner of everything between captured sound and results: starts and stops runs, and publishes
/// what they bring. Lives on the main thread; every public operation is called there and none of
/// them blocks.
class AudioManager : public QObject, public CaptureControl {
    Q_OBJECT

  public:
    explicit AudioManager(AudioEnvironment environment, QObject* parent = nullptr);
    ~AudioManager() override;

    // Published state. Read on the main thread; the signals below tell of changes.
    QList<AudioDevice> inputDevices() const;
    QList<RunningApp> runningApps() const;
    QList<RunningApp> capturableApps() const;
    bool isBlackHoleInstalled() const;
    bool hasScreenCapturePermission() const;

    QString currentOriginal() const { return currentResult_.original; }

    QString currentTranslation() const { return currentResult_.translation; }

    /// In the words of whoever told it: a speech server's are German.
    QString backendStatus() const { return backendNews_.latest.message; }

    /// The same with its codes, and what of a run's warnings still holds.
    const BackendNews& backendNews() const { return backendNews_; }

    bool isModelLoading() const { return isModelLoading_; }

    bool hasEngineError() const { return hasEngineError_; }

    float audioLevel() const; ///< 0..1, smoothed.
    float peakLevel() const;  ///< 0..1, peak hold.

    /// How the run is, by the stages that sound passes; nothing is on without a run.
    const RunProgress& progress() const { return progress_; }

    // Pause detection, which follows its three settings at once.
    bool vadEnabled() const;
    double vadSilenceDuration() const; ///< Milliseconds.
    float vadThreshold() const;        ///< dB.

    /// Asks the platform again for devices and applications; the lists follow by signal.
    void refreshLists();

    /// How the next run scales the signal. With auto-gain it starts from `gain` and follows.
    void setGain(float gain, bool autoGain) override;

    /// What the run asks of the speech server, and later runs too: sent at once, or when the link
    /// is ready.
    void sendConfig(const QString& sourceLang, const QString& targetLang, bool saveTranscript,
                    bool showOriginal) override;

    /// Opens the link to the backend and, once it is ready, starts capturing from `source`.
    /// `deviceId` and `appBundleId` count for their kind of source; empty means the default input
    /// and no application. Whatever ran before is stopped at once.
    void startCapture(AudioSourceType source, const QString& deviceId,
                      const QString& appBundleId) override;

    /// Lets the run that lasts listen to another source from now on: the link, and what has been
    /// heard so far, stay. Does nothing without a run, or once it is being stopped.
    void changeSource(AudioSourceType source, const QString& deviceId,
                      const QString& appBundleId) override;

    /// True from `startCapture` until the end of a stop.
    bool isCapturing() const override;

    /// True while chunks can be sent.
    bool isConnected() const;

    /// Ends the run so that the last words still get recognised: stops capturing at once, sends
    /// what is left, waits for the backend to finish everything, closes the link. Returns at once;
    /// `done` is called later, once, when all that is over (at most 123 seconds).
    void stopCapture(std::function<void()> done = {}) override;

    /// Ends the run at once; nothing is sent and nothing waited for. Also ends a graceful stop that
    /// is under way, whose `done` is then called.
    void stopCaptureSync() override;

  Q_SIGNALS:
    void listsChanged();
    void resultChanged(); ///< `currentOriginal`, `currentTranslation`.
    /// A result for every output, once for each; `resultChanged` has been told of it before.
    void resultArrived(const Result& result);
    void statusChanged(); ///< `backendStatus`, `backendNews`, `isModelLoading`, `hasEngineError`.
    void levelChanged();  ///< `audioLevel`, `peakLevel`.
    void captureStateChanged(); ///< `isCapturing`.
    void progressChanged();     ///< `progress`: once a second during a run, and with each news.
    /// Something that the user has to know, told later than what it is about.
    void noticeRaised(const AudioNotice& notice);

  private:
    void makeRun();
    void publishResult(const Result& result);
    void publishBackendStatus(const StatusMessage& status);
    void publishEngineStatus(const QString& status, const QString& message);
    void noteService(const Result& result);
    void publishProgress();
    void finishRun();

    const AudioEnvironment environment_;
    Result currentResult_;
    BackendNews backendNews_;
    bool isModelLoading_ = false;
    bool hasEngineError_ = false;
    RunProgress progress_;
    QTimer progressTimer_;
    std::optional<RunConfiguration> configuration_; ///< As last asked for.
    std::vector<std::function<void()>> stopCallbacks_;

    // Destroyed from below: the capture ends first, then the sending, then the run with its link.
    EventLoopThread linkThread_;
    /// From a start on. After a graceful stop it stays until the next start, because its last words
    /// may still be translated.
    std::unique_ptr<AudioRun> run_;
    std::unique_ptr<SoundPath> sound_;
};

} // namespace orv
