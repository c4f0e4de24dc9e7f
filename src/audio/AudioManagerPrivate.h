#pragma once

#include "AudioIngest.h"
#include "AudioManager.h"
#include "AudioSender.h"
#include "BackendLink.h"
#include "BackendMessageHandler.h"
#include "CaptureSources.h"
#include "Chunker.h"
#include "ClientTranslation.h"
#include "ConfigMessage.h"
#include "DirectEngineSession.h"
#include "EventLoopThread.h"
#include "GracefulStop.h"
#include "LevelMeter.h"
#include "PostTarget.h"

#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orv {

/// What an audio manager owns and how a run goes. Lives on the main thread. The members stand in
/// the order in which they need each other: destroying them in reverse ends the capture first, then
/// the sending, then the link.
class AudioManager::Private {
  public:
    Private(AudioManager& manager, AudioEnvironment environment);
    ~Private();

    // AudioSession.cpp: the course of a run.
    void startCapture(AudioSourceType source, const QString& deviceId, const QString& appBundleId);
    void stopCapture(std::function<void()> done);
    void stopCaptureSync();

    // AudioConversation.cpp: what is said to and by the backend or engine.
    void sendConfig(const RunConfiguration& configuration);

    AudioManager& q;
    const AudioEnvironment env;

    // Published state.
    Result currentResult;
    QString backendStatus;
    bool isModelLoading = false;
    bool hasEngineError = false;
    bool capturing = false;

    // For the next run.
    float requestedGain = 1.0F;
    bool requestedAutoGain = false;
    std::optional<RunConfiguration> pendingConfig;

    LevelMeter meter;
    Chunker chunker;
    AudioIngest ingest;
    CaptureSources sources;

  private:
    // AudioManagerPrivate.cpp: pause detection and meter.
    void followPauseDetection();
    void setVadEnabled(bool enabled);
    void startSendTimer();
    void readMeter();

    void connectToBackend();
    void linkReady();
    void linkFailed(const QString& error);
    void startSource();
    void stopTimers();
    void stopSources();
    void finishDirectEngine();
    void endDirectEngine();
    void beginGracefulStop();
    void endGracefulStop();
    void finishRun();
    void resetPublishedState();
    void runStopCallbacks();

    BackendMessageHandler::Actions messageActions();
    void publishResult(const Result& result);
    void translateOnClient(const QString& original);
    void publishStatus(const StatusMessage& status);
    void tellMissingCredentials(const QString& id);
    std::optional<RunConfiguration> nextConfiguration() const;

    RunConfiguration configuration() const { return configuration_.value_or(RunConfiguration()); }

    void startDirectEngine();
    void abandonDirectEngine();
    void publishDirectEngineStatus(const QString& status, const QString& message);

    // The run.
    AudioSourceType currentSource_ = AudioSourceType::Microphone;
    QString currentDeviceId_;
    QString currentAppBundleId_;
    std::optional<RunConfiguration> configuration_; ///< As last sent.
    std::vector<std::function<void()>> stopCallbacks_;

    QTimer sendTimer_;
    QTimer levelUpdateTimer_;
    QTimer readyTimer_;

    BackendMessageHandler messages_;
    /// Made when a run needs it first. The last words of a run that was stopped gracefully may
    /// still come, until the next run.
    std::unique_ptr<ClientTranslation> translation_;
    EventLoopThread linkThread_;
    std::unique_ptr<BackendLink> link_;
    std::unique_ptr<DirectEngineSession> directEngine_;
    /// Of a run that was stopped gracefully: its last result may still come, until the next run.
    std::unique_ptr<DirectEngineSession> endedDirectEngine_;
    std::unique_ptr<GracefulStop> gracefulStop_;
    PostTarget target_;
    AudioSender sender_;
};

} // namespace orv
