#pragma once

#include "PostTarget.h"

#include <QTimer>

#include <chrono>
#include <cstddef>
#include <functional>

namespace orv {

/// The end of a run over the backend link, step by step: the last buffer leaves, the backend
/// confirms that it has answered everything, the stop message leaves. Every step is waited for, but
/// only so long. Lives on the main thread and blocks nothing; destroying it ends it without `done`.
class GracefulStop {
  public:
    struct Timings {
        std::chrono::milliseconds lastBuffer;
        std::chrono::milliseconds flush;
        std::chrono::milliseconds stop;
    };

    /// What the steps do. Each send calls `sent` once, from any thread, or never.
    struct Actions {
        using Sent = std::function<void()>;
        std::function<void(Sent sent)> sendLastBuffer;
        std::function<void()> sendFlush;
        std::function<void(Sent sent)> sendStop;
        std::function<void()> done; ///< Called once, at the end; must not destroy the object.
    };

    /// Starts. A remainder of 1000 samples or fewer is not worth a message; the caller drops it.
    GracefulStop(std::size_t lastBufferSamples, Actions actions, Timings timings);

    /// The backend confirmed the flush request.
    void flushed();

    /// The link broke: no confirmation can come any more.
    void linkFailed();

    bool isDone() const { return step_ == Step::Done; }

    /// Smallest remainder that is sent.
    static constexpr std::size_t minimumLastBuffer = 1001;

  private:
    enum class Step { LastBuffer, Flush, Stop, Done };

    void enterLastBuffer(std::size_t samples);
    void enterFlush();
    void enterStop();
    void finish();
    void wait(std::chrono::milliseconds limit);
    void advanceFrom(Step step);

    Actions actions_;
    Timings timings_;
    Step step_ = Step::LastBuffer;
    bool linkBroken_ = false;
    QTimer timer_;
    PostTarget target_;
};

} // namespace orv
