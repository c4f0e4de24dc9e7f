#pragma once

#include "BackendMessages.h"
#include "CloudSTTEngine.h"
#include "PostTarget.h"
#include "Result.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

namespace orv {

class DirectEngineTranscriptWriter;
class PcmSink;

/// The session of a direct engine in one run: connects the engine, feeds it in order, brings its
/// results to the main thread and into the transcript. Lives on the main thread.
class DirectEngineSession : public QObject {
    Q_OBJECT

  public:
    /// The transcript's writer may be null. `product` is the service's name for people.
    DirectEngineSession(std::shared_ptr<CloudSTTEngine> engine, QString product,
                        std::shared_ptr<DirectEngineTranscriptWriter> directTranscriptWriter);

    /// Ends, and gives up whatever the engine is still working on.
    ~DirectEngineSession() override;

    /// Starts connecting; says how it went in the log.
    void open(const CloudEngineConfig& config);

    /// What brings sound to this session from another thread, and then its `end`; does nothing once
    /// the session is destroyed.
    std::shared_ptr<PcmSink> pcmSink();

    /// Queues one block of 16-bit PCM. Blocks go to the engine one after the other, once it is
    /// connected, each when the one before has been accepted. What fails is lost, with a log line,
    /// and so is the oldest of more than 32 MiB that wait.
    void sendAudio(QByteArray pcm);

    /// The run is over, but for chunks that are on their way: closes the transcript at once and
    /// reports no status any more. A streaming engine takes nothing more: this is its `end`.
    void finish();

    /// Takes nothing more and disconnects the engine in the background, after the chunks that wait
    /// for the answer to another, because they hold the last words that were said. What waits for a
    /// connection, or for a streaming engine, is dropped. What the engine has already got may still
    /// bring a result while the session exists.
    void end();

    bool isStreaming() const;

  Q_SIGNALS:
    // Told later than what they are about. Each may destroy the session. After its end there is
    // only `resultArrived`, as `end` says.
    void resultArrived(const Result& result);
    /// "connected" or "error", and what to tell the user.
    void statusArrived(const QString& status, const QString& message);
    /// Something keeps results from coming, or from being translated; each time that it does.
    void faultArrived(const StatusMessage& status);
    void blockAccepted(); ///< Or refused: one more block that is not streamed is done with.
    void openFailed();    ///< The session is of no further use.

  private:
    struct State;

    std::shared_ptr<State> state_;
    std::shared_ptr<DirectEngineTranscriptWriter> directTranscriptWriter_;
    std::unique_ptr<PostTarget> target_;
};

} // namespace orv
