#pragma once

#include "CloudSTTEngine.h"
#include "PostTarget.h"
#include "Result.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <functional>
#include <memory>

namespace orv {

class DirectEngineTranscriptWriter;

/// One direct engine for one run: connects it, feeds it in order, brings its results to the main
/// thread and into the transcript. Lives on the main thread.
class DirectEngineSession {
  public:
    /// Run on the main thread; never after the session was destroyed, and after its end only
    /// `result`, as `end` says.
    struct Handlers {
        std::function<void(const Result& result)> result;
        /// "connected" or "error", and what to tell the user.
        std::function<void(const QString& status, const QString& message)> status;
        std::function<void()> connectFailed; ///< The session is of no further use.
    };

    /// `writer` may be null.
    DirectEngineSession(std::shared_ptr<CloudSTTEngine> engine,
                        std::shared_ptr<DirectEngineTranscriptWriter> writer, Handlers handlers);

    /// Ends, and gives up whatever the engine is still working on.
    ~DirectEngineSession();

    DirectEngineSession(const DirectEngineSession&) = delete;
    DirectEngineSession& operator=(const DirectEngineSession&) = delete;

    /// Starts connecting; says how it went in the log.
    void connect(const CloudEngineConfig& config);

    /// Queues one block of 16-bit PCM. Blocks go to the engine one after the other, once it is
    /// connected, each when the one before has been accepted. What fails is lost, with a log line,
    /// and so is the oldest of more than 32 MiB that wait.
    void sendAudio(QByteArray pcm);

    /// The run is over, but for chunks that are on their way: closes the transcript at once and
    /// reports no status any more. A streaming engine takes nothing more: this is its `end`.
    void finish();

    /// Takes nothing more and disconnects the engine in the background, after the chunks that wait
    /// for the answer to another: they are somebody's last words. Dropped is what waits for a
    /// connection, and what waits for a streaming engine. What the engine has may still bring a
    /// result while the session exists.
    void end();

    bool isStreaming() const;

  private:
    struct State;

    std::shared_ptr<State> state_;
    std::shared_ptr<DirectEngineTranscriptWriter> writer_;
    Handlers handlers_;
    std::unique_ptr<PostTarget> target_;
};

} // namespace orv
