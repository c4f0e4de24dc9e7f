#pragma once

#include <QString>

namespace orv {

/// A speech service as the thread that drives it sees it: made, used and destroyed on that thread,
/// which has an event loop. Every operation may block for as long as the service likes.
class SpeechEngine {
  public:
    virtual ~SpeechEngine() = default;

    /// Begins to speak and returns. False when the engine does not work any more.
    virtual bool say(const QString& text) = 0;

    /// Ends what is being spoken, and what is still to be.
    virtual void stop() = 0;
};

} // namespace orv
