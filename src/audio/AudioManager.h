#pragma once

#include "AudioDevice.h"
#include "AudioNotice.h"
#include "AudioSourceType.h"
#include "CaptureControl.h"
#include "EngineTimings.h"
#include "Result.h"
#include "RunningApp.h"
#include "ServiceEndpoints.h"

#include <QList>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace orv {

class AudioCapture;
class EngineCatalogue;
class TranslationSettings;

/// The fixed times of a capture run.
struct AudioTimings {
    std::chrono::milliseconds linkReady{300};       ///< From opening the link to using it.
    std::chrono::milliseconds fixedChunk{3000};     ///< Between chunks without pause detection.
    std::chrono::milliseconds lastBufferSend{2000}; ///< Longest wait for the last buffer's send.
    std::chrono::milliseconds flush{120000};        ///< Longest wait for the flush confirmation.
    std::chrono::milliseconds stopSend{1000};       ///< Longest wait for the stop message's send.
    std::chrono::milliseconds meterRefresh{33};     ///< Between two readings of the level meter.
};

/// What the audio manager is given. The references outlive it.
struct AudioEnvironment {
    TranslationSettings& settings;
    AudioCapture& capture;
    const EngineCatalogue& engines;
    /// Shows the user a notice; called on the main thread.
    std::function<void(const AudioNotice& notice)> showNotice;
    QString transcriptFolder; ///< Where runs with a direct engine put their transcripts.
    ServiceEndpoints endpoints = {};
    EngineTimings engineTimings = {};
    quint16 backendPort = 8765;
    AudioTimings timings = {};
};

/// Everything of a capture run: the source, the sample pipeline, the chunker, the link to the
/// backend or a direct engine. Lives on the main thread; every public operation is called there and
/// none of them blocks.
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
    QString currentOriginal() const;
    QString currentTranslation() const;
    QString backendStatus() const;
    bool isModelLoading() const;
    bool hasEngineError() const;
    float audioLevel() const; ///< 0..1, smoothed.
    float peakLevel() const;  ///< 0..1, peak hold.

    // Pause detection, which follows its three settings at once.
    bool vadEnabled() const;
    double vadSilenceDuration() const; ///< Milliseconds.
    float vadThreshold() const;        ///< dB.

    /// Asks the platform again for devices and applications; the lists follow by signal.
    void refreshLists();

    /// How the next run scales the signal. With auto-gain it starts from `gain` and follows.
    void setGain(float gain, bool autoGain) override;

    /// Sends the run's configuration, or parks it until the link is ready.
    void sendConfig(const QString& sourceLang, const QString& targetLang, bool saveTranscript,
                    bool showOriginal) override;

    /// Opens the link to the backend and, once it is ready, starts capturing from `source`.
    /// `deviceId` and `appBundleId` count for their kind of source; empty means the default input
    /// and no application. Whatever ran before is stopped at once.
    void startCapture(AudioSourceType source, const QString& deviceId,
                      const QString& appBundleId) override;

    /// True from `startCapture` until a stop.
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
    void statusChanged();       ///< `backendStatus`, `isModelLoading`, `hasEngineError`.
    void levelChanged();        ///< `audioLevel`, `peakLevel`.
    void captureStateChanged(); ///< `isCapturing`.

  private:
    class Private;
    std::unique_ptr<Private> d_;
};

} // namespace orv
