#pragma once

#include "AudioNotice.h"
#include "BackendLink.h"
#include "ClientTranslation.h"
#include "ConfigMessage.h"
#include "DirectEngineSession.h"
#include "GracefulStop.h"
#include "PostTarget.h"
#include "Result.h"
#include "RunWatch.h"
#include "SoundPath.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace orv {

class EventLoopThread;
struct AudioEnvironment;

/// One run, from its start to its stop, and the owner of what belongs to it: the link to the speech
/// server, the direct engine, the translation on this side, the graceful stop. Lives on the main
/// thread. Whoever gets a signal may destroy the run, but for `noticeRaised` and `serviceServed`.
///
/// A graceful stop waits for the results of the last words, from the speech server and from the
/// services, for a limited time each; nothing comes after `ended`. Destroying the run cancels the
/// link and gives up everything; it leaves the sound path alone.
class AudioRun : public QObject, private BackendLink::Listener, private GracefulStop::Steps {
    Q_OBJECT

  public:
    /// `configuration` is the owner's, which may change; it is read whenever it is needed. The
    /// references outlive the run, but `sound` may be destroyed right before it.
    AudioRun(const AudioEnvironment& environment,
             const std::optional<RunConfiguration>& configuration, SoundPath& sound,
             EventLoopThread& linkThread);

    /// Opens the link; once it is ready, sends the configuration and starts listening to `source`.
    void start(const SourceChoice& source);

    /// Listens to another source from now on. Not once the run is being stopped.
    void changeSource(const SourceChoice& source);

    /// Sends the configuration. The link must be ready.
    void sendConfig();

    /// Ends the run gracefully; `ended` tells when it is over, maybe within the call. Once.
    void stop();

    bool isStopping() const { return isStopping_; }

    /// Ends the run without sending or waiting, also in the midst of a graceful stop. No signal
    /// follows, and the run is only to be destroyed.
    void endAtOnce();

    bool isOver() const { return isOver_; }

    /// How the run is now; not on any more once its stop has begun.
    RunProgress progress() const;

  Q_SIGNALS:
    void resultArrived(const Result& result);
    void backendStatusArrived(const StatusMessage& status);
    /// "connected" or "error", and what to tell the user.
    void engineStatusArrived(const QString& status, const QString& message);
    void serviceServed(const Result& result); ///< A direct engine, or who translates here.
    void noticeRaised(const AudioNotice& notice);
    void troubleChanged(); ///< Of `progress`, by something that has happened.
    void ended();

  private:
    // AudioRun.cpp: the course of the run.
    void linkReady();
    void linkFailed(const QString& error) override;
    void sendLastBuffer(std::vector<float>&& samples, BackendLink::Sent sent) override;
    void sendFlush() override;
    void sendStop(BackendLink::Sent sent) override;
    void stepsDone() override;
    void beginGracefulStop();
    void awaitServices();
    void giveServicesUp();
    bool isAwaitingServices() const;
    void endWhenDone();
    void finish();

    // RunAccount.cpp: what is noted of the run.
    void noteSource();
    void noteSourceChange();
    void noteSending();
    void noteResult();
    void noteEngine(const QString& status, const QString& message, RunTrouble onError);
    void noteTrouble();

    // AudioConversation.cpp: what is said to and by the speech server or the direct engine.
    void receiveResult(const Result& result) override;
    void receiveStatus(const StatusMessage& status) override;
    void receiveProcessed() override;
    void receiveFlushed() override;
    void receiveVersion(std::int64_t version);
    void tellMissingCredentials(const QString& id);
    bool translatesOnClient() const;
    void translateOnClient(const QString& original);
    void startDirectEngine();
    void receiveFault(const StatusMessage& status);
    void finishDirectEngine();
    void abandonDirectEngine();

    RunConfiguration configuration() const { return configuration_.value_or(RunConfiguration()); }

    const AudioEnvironment& environment_;
    const std::optional<RunConfiguration>& configuration_;
    SoundPath& sound_;
    EventLoopThread& linkThread_;
    SourceChoice source_;
    QTimer readyTimer_;
    bool isOver_ = false;
    bool isLinkLost_ = false;
    bool isStopping_ = false;
    QTimer lastAnswersTimer_; ///< While the stop waits for services.

    std::unique_ptr<BackendLink> link_;
    /// Made when it is needed first.
    std::unique_ptr<ClientTranslation> translation_;
    /// Whether sound goes to the direct engine and not to the speech server.
    bool useDirectEngine_ = false;
    /// Also while the run is being stopped: its last results may still come.
    std::unique_ptr<DirectEngineSession> directEngine_;
    std::unique_ptr<GracefulStop> gracefulStop_;
    /// Who is told when the server confirms a flush; set while a confirmation is awaited.
    GracefulStop* flushCompletionHandler_ = nullptr;
    RunWatch watch_;
    PostTarget target_; ///< For the send queue and the link thread.
};

} // namespace orv
