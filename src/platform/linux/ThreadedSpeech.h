#pragma once

#include "SpeechEngine.h"
#include "SpeechSynthesizer.h"

#include <chrono>
#include <functional>
#include <memory>

namespace orv {

class EventLoopThread;

/// The fixed times of speaking.
struct SpeechTimings {
    /// How long the end of the program waits for a speech service that does not answer.
    std::chrono::milliseconds farewell{500};
};

/// Speech by an engine that may block, on a thread of its own. Thread and engine are made on first
/// use. At most one request waits for the thread: a later one takes its place, so a service that
/// hangs costs neither time nor memory, and when it recovers it hears the latest request only.
class ThreadedSpeech : public SpeechSynthesizer {
  public:
    /// Makes an engine, or null where there is none. Runs on the speech thread. Asked again by each
    /// `prepare` until it succeeds, and when the engine has failed; when the one made then fails as
    /// well, the log says that there is no speech, and the next `prepare` asks again.
    using EngineMaker = std::function<std::unique_ptr<SpeechEngine>()>;

    explicit ThreadedSpeech(EngineMaker maker, SpeechTimings timings = {});

    /// Ends speech and thread. A thread that hangs is left to itself; it ends when it comes back.
    ~ThreadedSpeech() override;

    ThreadedSpeech(const ThreadedSpeech&) = delete;
    ThreadedSpeech& operator=(const ThreadedSpeech&) = delete;

    void prepare() override;
    void speak(const QString& text) override;
    void stop() override;

  private:
    class Worker;
    struct Request;

    void request(Request request);

    std::shared_ptr<Worker> worker_;
    std::unique_ptr<EventLoopThread> thread_;
    SpeechTimings timings_;
};

} // namespace orv
