#pragma once

#include "BackendMessages.h"
#include "CloudSTTEngine.h"
#include "PostTarget.h"
#include "Result.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

namespace orv {

class DirectEngineTranscriptWriter;
class PcmSink;

/// The session of a direct engine in one run: connects the engine, feeds it in order, brings its
/// results to the main thread and into the transcript. Lives on the main thread.
class DirectEngineSession : public QObject {
    Q_OBJECT

  public:
    /// The transcript's writer may be null. `product` is the service's name for people, and
    /// `oldestSpeech` how long sound may wait for its turn.
    DirectEngineSession(std::shared_ptr<CloudSTTEngine> engine, QString product,
                        std::chrono::milliseconds oldestSpeech,
                        std::shared_ptr<DirectEngineTranscriptWriter> directTranscriptWriter);

    /// Ends, gives up whatever the engine is still working on, and closes the transcript. A stream
    /// gets its farewell in the background.
    ~DirectEngineSession() override;

    /// Starts connecting; says how it went in the log.
    void open(const CloudEngineConfig& config);

    /// What brings sound to this session from another thread, and then its `end`; does nothing once
    /// the session is destroyed.
    std::shared_ptr<PcmSink> pcmSink();

    /// Queues one block of 16-bit PCM. Blocks go to the engine in order, once it is connected, as
    /// many at once as it takes. What fails is lost, with a log line, and so is what has waited for
    /// too long; that is told as a fault, too.
    void sendAudio(QByteArray pcm);

    /// The run is over, but for what is on its way: reports no status any more.
    void finish();

    /// Takes nothing more, since nothing more was said. What waits still goes to the engine, which
    /// is disconnected then; `drained` tells when it has brought everything. Whoever does not want
    /// to wait for that destroys the session.
    void end();

    bool isStreaming() const;

  Q_SIGNALS:
    // Told later than what they are about. Each may destroy the session.
    void resultArrived(const Result& result);
    /// "connected" or "error", and what to tell the user.
    void statusArrived(const QString& status, const QString& message);
    /// Something keeps results from coming, or from being translated; each time that it does.
    void faultArrived(const StatusMessage& status);
    void blockAccepted(); ///< Or refused: one more block that is not streamed is done with.
    void openFailed();    ///< The session is of no further use.
    void drained();       ///< After `end`: no result comes any more.

  private:
    struct State;

    std::shared_ptr<State> state_;
    std::shared_ptr<DirectEngineTranscriptWriter> directTranscriptWriter_;
    std::unique_ptr<PostTarget> target_;
};

} // namespace orv
