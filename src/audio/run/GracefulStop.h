#pragma once

#include "BackendLink.h"
#include "PostTarget.h"

#include <QTimer>

#include <chrono>
#include <cstddef>
#include <vector>

namespace orv {

/// The graceful end of a run over the backend link, in three steps: the last buffer leaves, the
/// backend confirms that it has answered everything, the stop message leaves. Every step is waited
/// for, up to a limit. Lives on the main thread and blocks nothing; destroying it ends it without
/// `stepsDone`.
class GracefulStop {
  public:
    struct Timings {
        std::chrono::milliseconds lastBuffer;
        std::chrono::milliseconds flush;
        std::chrono::milliseconds stop;
    };

    /// What the owner does for each step. No function may destroy the object. `sent` is called
    /// once, from any thread, or never; its error makes no difference.
    class Steps {
      public:
        virtual ~Steps() = default;
        virtual void sendLastBuffer(std::vector<float>&& samples, BackendLink::Sent sent) = 0;
        virtual void sendFlush() = 0;
        virtual void sendStop(BackendLink::Sent sent) = 0;
        virtual void stepsDone() = 0; ///< Called once, at the end.
    };

    /// `steps` outlives this object.
    GracefulStop(Steps& steps, Timings timings);

    /// Takes the first step. A remainder of 1000 samples or fewer is not worth a message and is
    /// dropped.
    void begin(std::vector<float> lastBuffer);

    /// The backend confirmed the flush request.
    void flushed();

    /// The link broke: no confirmation can come any more.
    void linkFailed();

    /// Smallest remainder that is sent.
    static constexpr std::size_t minimumLastBuffer = 1001;

  private:
    enum class Step { LastBuffer, Flush, Stop, Done };

    void enterLastBuffer(std::vector<float>&& samples);
    void enterFlush();
    void enterStop();
    void finish();
    void wait(std::chrono::milliseconds limit);
    void advanceFrom(Step step);
    /// Advances from `step` once its message was sent.
    BackendLink::Sent advancer(Step step);

    Steps& steps_;
    Timings timings_;
    Step step_ = Step::LastBuffer;
    bool linkBroken_ = false;
    QTimer timer_;
    PostTarget target_;
};

} // namespace orv
