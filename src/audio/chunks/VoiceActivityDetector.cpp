#include "VoiceActivityDetector.h"

namespace orv {

namespace {

constexpr double maxChunkSeconds = 8.0;
constexpr double minChunkSeconds = 1.0;

double seconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

} // namespace

VoiceActivityDetector::VoiceActivityDetector(TimePoint now)
    : vadLastSendTime_(now) {}

void VoiceActivityDetector::reset(TimePoint now) {
    vadIsSpeaking_ = false;
    vadSilenceStart_.reset();
    vadLastSendTime_ = now;
}

VoiceActivity VoiceActivityDetector::observe(float levelDb, const VoiceActivitySettings& settings,
                                             TimePoint now) {
    const double sinceLastSend = seconds(now - vadLastSendTime_);
    VoiceActivity activity;
    activity.forcedDue = sinceLastSend >= maxChunkSeconds;

    if (levelDb > settings.thresholdDb) {
        activity.speechStarted = !vadIsSpeaking_;
        vadIsSpeaking_ = true;
        vadSilenceStart_.reset();
    } else if (vadIsSpeaking_) {
        activity.silenceStarted = !vadSilenceStart_;
        if (!vadSilenceStart_) {
            vadSilenceStart_ = now;
        }
        activity.pauseReached =
            seconds(now - *vadSilenceStart_) >= settings.silenceDurationMs / 1000.0 &&
            sinceLastSend >= minChunkSeconds;
    }
    return activity;
}

void VoiceActivityDetector::pauseSent(TimePoint now) {
    reset(now);
}

void VoiceActivityDetector::forcedSent(TimePoint now) {
    vadLastSendTime_ = now;
    vadSilenceStart_.reset();
}

} // namespace orv
