#pragma once

#include "RunProgress.h"

#include <QString>

#include <chrono>
#include <deque>
#include <optional>

namespace orv {

/// The times after which something that does not happen counts as trouble.
struct RunWatchTimings {
    std::chrono::seconds noSound{10};
    std::chrono::seconds onlySilence{60};
    std::chrono::seconds answersLag{10};
    std::chrono::milliseconds utterancePause{1000}; ///< Silence that ends what was said.
};

/// The account of a run: is told what happens, and says how the run is. It reads no clock; `now`
/// never goes back.
class RunWatch {
  public:
    using TimePoint = RunProgress::TimePoint;

    explicit RunWatch(RunWatchTimings timings = {});

    /// A new run, of which nothing is known yet.
    void begin(TimePoint now);

    /// The run is over; nothing is told about it any more.
    void end();

    /// Another source is being opened.
    void sourceChanged(TimePoint now);

    void captureStarted(TimePoint now); ///< For the first time, or again.
    void captureEnded(CaptureProblem problem, const QString& reason);
    void captureFailed(CaptureProblem problem, const QString& reason);

    /// The source has delivered sound; `isSpeech` tells whether some was above the threshold.
    void soundArrived(bool isSpeech, TimePoint now);

    void linkLost(const QString& reason);
    void engineLost(const QString& reason);
    void engineRefused(const QString& reason);
    void engineServes();

    /// A chunk has left. Each is expected to be answered, in order.
    void chunkSent(TimePoint now);

    /// A streaming engine has taken sound, whose answer comes after a pause.
    void soundStreamed(TimePoint now);

    /// A chunk is done with, whether it brought a result or not. Once a peer has told so, it is
    /// expected to tell it of every chunk, also of silent ones.
    void chunkAnswered(TimePoint now);

    /// A result has come. As long as no peer tells when a chunk is done with, it answers everything
    /// that was sent before, and nothing is expected for silence.
    void resultArrived(TimePoint now);

    RunProgress progress(TimePoint now) const;

  private:
    /// Since when the oldest thing that was sent has waited; none when nothing waits.
    std::optional<TimePoint> waitingSince(TimePoint now) const;
    void judge(RunProgress& progress, TimePoint now) const;

    struct SentChunk {
        TimePoint at;
        bool hasSpeech = false;
    };

    enum class Capture { Starting, Running, Ended, Failed };

    const RunWatchTimings timings_;
    RunProgress stages_; ///< Without a judgement.
    Capture capture_ = Capture::Starting;
    TimePoint listeningSince_;
    bool linkLost_ = false;
    RunTrouble engine_ = RunTrouble::None; ///< What it has, if anything.
    CaptureProblem captureProblem_ = CaptureProblem::None;
    QString linkReason_;
    QString captureReason_;
    QString engineReason_;
    bool countsAnswers_ = false; ///< A peer has told when a chunk was done with.
    std::deque<SentChunk> unanswered_;
    bool streams_ = false;
    std::optional<TimePoint> utterance_; ///< End of the oldest utterance that was not answered.
};

} // namespace orv
