#pragma once

#include <chrono>
#include <optional>

namespace orv {

/// The settings of pause detection: what counts as speech, and what as a pause.
struct VoiceActivitySettings {
    double silenceDurationMs = 600.0; ///< So long a pause ends an utterance, milliseconds.
    float thresholdDb = -35.0F;       ///< A buffer strictly louder than this is speech, dB.
};

/// The findings in one buffer, in the order in which the caller acts on them.
struct VoiceActivity {
    bool speechStarted = false;  ///< The first loud buffer of an utterance.
    bool silenceStarted = false; ///< The first quiet buffer of a pause within an utterance.
    bool pauseReached = false;   ///< The pause is long enough: send, and tell by `pauseSent`.
    bool forcedDue = false;      ///< The longest chunk is full: send, and tell by `forcedSent`.
};

/// A detector of pauses in speech, by the level of each captured buffer. A state machine that is
/// told the time; it sends nothing itself. Belongs to one thread at a time.
class VoiceActivityDetector {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// `now` counts as the time of the last send.
    explicit VoiceActivityDetector(TimePoint now);

    /// Back to "not speaking", with `now` as the time of the last send.
    void reset(TimePoint now);

    /// Takes up the level of the next buffer. Whether a send is due is judged by the last send as
    /// it stood at this call, for both kinds of send.
    VoiceActivity observe(float levelDb, const VoiceActivitySettings& settings, TimePoint now);

    /// A chunk left because of `pauseReached`: the utterance is over. Without this call the next
    /// quiet buffer asks again.
    void pauseSent(TimePoint now);

    /// A chunk left because of `forcedDue`; a long utterance stays an utterance. Without this call
    /// the next buffer asks again.
    void forcedSent(TimePoint now);

    bool vadIsSpeaking() const { return vadIsSpeaking_; }

    std::optional<TimePoint> vadSilenceStart() const { return vadSilenceStart_; }

    TimePoint vadLastSendTime() const { return vadLastSendTime_; }

    /// Tells after how many seconds a chunk is sent in any case. The value is built in: a change
    /// here alone changes nothing.
    double vadMaxChunkDuration = 8.0;
    /// Tells how many seconds lie at least between a send and the next one for a pause. Built in,
    /// too.
    double vadMinChunkDuration = 1.0;

  private:
    bool vadIsSpeaking_ = false;
    std::optional<TimePoint> vadSilenceStart_;
    TimePoint vadLastSendTime_;
};

} // namespace orv
