#include "RunWatch.h"

#include <algorithm>
#include <cstddef>

namespace orv {

namespace {

/// More than can wait in a run that still makes sense; what comes then is not counted.
constexpr std::size_t mostUnanswered = 10000;

std::chrono::seconds wholeSeconds(RunWatch::TimePoint::duration duration) {
    return std::chrono::duration_cast<std::chrono::seconds>(duration);
}

} // namespace

RunWatch::RunWatch(RunWatchTimings timings)
    : timings_(timings) {}

void RunWatch::begin(TimePoint now) {
    stages_ = {.isOn = true};
    capture_ = Capture::Starting;
    listeningSince_ = now;
    linkLost_ = false;
    engine_ = RunTrouble::None;
    captureProblem_ = CaptureProblem::None;
    linkReason_.clear();
    captureReason_.clear();
    engineReason_.clear();
    countsAnswers_ = false;
    unanswered_.clear();
    streams_ = false;
    utterance_.reset();
}

void RunWatch::end() {
    stages_ = {};
}

void RunWatch::sourceChanged(TimePoint now) {
    capture_ = Capture::Starting;
    listeningSince_ = now;
}

void RunWatch::captureStarted(TimePoint now) {
    capture_ = Capture::Running;
    listeningSince_ = now;
}

void RunWatch::captureEnded(CaptureProblem problem, const QString& reason) {
    capture_ = Capture::Ended;
    captureProblem_ = problem;
    captureReason_ = reason;
}

void RunWatch::captureFailed(CaptureProblem problem, const QString& reason) {
    capture_ = Capture::Failed;
    captureProblem_ = problem;
    captureReason_ = reason;
}

void RunWatch::soundArrived(bool isSpeech, TimePoint now) {
    stages_.soundArrived = now;
    if (!isSpeech) {
        return;
    }
    const std::optional<TimePoint> before = stages_.speechHeard;
    const bool answered = !before || (stages_.answered && *stages_.answered >= *before);
    if (streams_ && !utterance_ && !answered && now - *before >= timings_.utterancePause) {
        utterance_ = before;
    }
    stages_.speechHeard = now;
}

void RunWatch::linkLost(const QString& reason) {
    linkLost_ = true;
    linkReason_ = reason;
}

void RunWatch::engineLost(const QString& reason) {
    engine_ = RunTrouble::EngineLost;
    engineReason_ = reason;
}

void RunWatch::engineRefused(const QString& reason) {
    engine_ = RunTrouble::EngineRefused;
    engineReason_ = reason;
}

void RunWatch::engineServes() {
    engine_ = RunTrouble::None;
}

void RunWatch::chunkSent(TimePoint now) {
    const bool hasSpeech =
        stages_.speechHeard && (!stages_.sent || *stages_.speechHeard >= *stages_.sent);
    stages_.sent = now;
    if (unanswered_.size() < mostUnanswered) {
        unanswered_.push_back({.at = now, .hasSpeech = hasSpeech});
    }
}

void RunWatch::soundStreamed(TimePoint now) {
    streams_ = true;
    stages_.sent = now;
}

void RunWatch::chunkAnswered(TimePoint now) {
    countsAnswers_ = true;
    stages_.answered = now;
    if (!unanswered_.empty()) {
        unanswered_.pop_front();
    }
}

void RunWatch::resultArrived(TimePoint now) {
    stages_.answered = now;
    utterance_.reset();
    if (!countsAnswers_) {
        unanswered_.clear();
    }
}

std::optional<RunWatch::TimePoint> RunWatch::waitingSince(TimePoint now) const {
    if (!streams_) {
        const auto oldest =
            std::find_if(unanswered_.begin(), unanswered_.end(), [this](const SentChunk& chunk) {
                return countsAnswers_ || chunk.hasSpeech;
            });
        return oldest == unanswered_.end() ? std::nullopt : std::optional(oldest->at);
    }
    if (utterance_ || !stages_.speechHeard) {
        return utterance_;
    }
    const bool isOver = now - *stages_.speechHeard >= timings_.utterancePause;
    const bool answered = stages_.answered && *stages_.answered >= *stages_.speechHeard;
    return isOver && !answered ? stages_.speechHeard : std::nullopt;
}

RunProgress RunWatch::progress(TimePoint now) const {
    RunProgress progress = stages_;
    if (progress.isOn) {
        judge(progress, now);
    }
    return progress;
}

void RunWatch::judge(RunProgress& progress, TimePoint now) const {
    const auto say = [&progress](RunTrouble trouble, const QString& reason,
                                 TimePoint::duration lasting = {}) {
        progress.trouble = trouble;
        progress.reason = reason;
        progress.lag = wholeSeconds(lasting);
    };
    if (linkLost_) {
        say(RunTrouble::LinkLost, linkReason_);
        return;
    }
    if (capture_ == Capture::Failed || capture_ == Capture::Ended) {
        say(capture_ == Capture::Failed ? RunTrouble::CaptureFailed : RunTrouble::CaptureEnded,
            captureReason_);
        progress.captureProblem = captureProblem_;
        return;
    }
    if (engine_ != RunTrouble::None) {
        say(engine_, engineReason_);
        return;
    }
    if (capture_ == Capture::Starting) {
        return; // Somebody may be asking the user for a permission.
    }
    const auto since = [&](std::optional<TimePoint> last) {
        return now - std::max(last.value_or(listeningSince_), listeningSince_);
    };
    const std::optional<TimePoint> waiting = waitingSince(now);
    if (const auto quiet = since(progress.soundArrived); quiet >= timings_.noSound) {
        say(RunTrouble::NoSound, {}, quiet);
    } else if (waiting && now - *waiting > timings_.answersLag) {
        say(RunTrouble::AnswersLag, {}, now - *waiting);
    } else if (const auto silent = since(progress.speechHeard); silent >= timings_.onlySilence) {
        say(RunTrouble::OnlySilence, {}, silent);
    }
}

} // namespace orv
