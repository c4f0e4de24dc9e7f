#include "VoiceActivityDetector.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using orv::VoiceActivity;
using orv::VoiceActivityDetector;
using orv::VoiceActivitySettings;

constexpr float loud = -20.0F;
constexpr float quiet = -60.0F;
const VoiceActivityDetector::TimePoint start{1000h};

TEST(VoiceActivityDetector, startsNotSpeaking) {
    const VoiceActivityDetector detector(start);
    EXPECT_FALSE(detector.vadIsSpeaking());
    EXPECT_FALSE(detector.vadSilenceStart());
    EXPECT_EQ(detector.vadLastSendTime(), start);
}

TEST(VoiceActivityDetector, onlyTheFirstLoudBufferStartsSpeech) {
    VoiceActivityDetector detector(start);
    EXPECT_TRUE(detector.observe(loud, {}, start + 100ms).speechStarted);
    EXPECT_TRUE(detector.vadIsSpeaking());
    EXPECT_FALSE(detector.observe(loud, {}, start + 200ms).speechStarted);
}

TEST(VoiceActivityDetector, aLevelEqualToTheThresholdIsQuiet) {
    VoiceActivityDetector detector(start);
    EXPECT_FALSE(detector.observe(-35.0F, {}, start).speechStarted);
    EXPECT_FALSE(detector.vadIsSpeaking());
    EXPECT_TRUE(detector.observe(-34.99F, {}, start).speechStarted);
}

TEST(VoiceActivityDetector, quietWithoutSpeechChangesNothing) {
    VoiceActivityDetector detector(start);
    const VoiceActivity activity = detector.observe(quiet, {}, start + 5s);
    EXPECT_FALSE(activity.silenceStarted);
    EXPECT_FALSE(activity.pauseReached);
    EXPECT_FALSE(activity.forcedDue);
    EXPECT_FALSE(detector.vadSilenceStart());
}

TEST(VoiceActivityDetector, aPauseEndsTheUtteranceAfterExactlyItsDuration) {
    VoiceActivityDetector detector(start);
    detector.observe(loud, {}, start + 2s);
    EXPECT_TRUE(detector.observe(quiet, {}, start + 3s).silenceStarted);
    EXPECT_EQ(detector.vadSilenceStart(), start + 3s);
    const VoiceActivity early = detector.observe(quiet, {}, start + 3s + 600ms - 1ns);
    EXPECT_FALSE(early.silenceStarted);
    EXPECT_FALSE(early.pauseReached);
    EXPECT_TRUE(detector.observe(quiet, {}, start + 3s + 600ms).pauseReached);

    detector.pauseSent(start + 3s + 600ms);
    EXPECT_FALSE(detector.vadIsSpeaking());
    EXPECT_FALSE(detector.vadSilenceStart());
    EXPECT_EQ(detector.vadLastSendTime(), start + 3600ms);
}

TEST(VoiceActivityDetector, aPauseOfZeroSendsWithTheFirstQuietBuffer) {
    VoiceActivityDetector detector(start);
    const VoiceActivitySettings settings{0.0, -35.0F};
    detector.observe(loud, settings, start + 2s);
    const VoiceActivity activity = detector.observe(quiet, settings, start + 2s);
    EXPECT_TRUE(activity.silenceStarted);
    EXPECT_TRUE(activity.pauseReached);
}

TEST(VoiceActivityDetector, aPauseWaitsForASecondSinceTheLastSend) {
    VoiceActivityDetector detector(start);
    const VoiceActivitySettings brief{100.0, -35.0F};
    detector.observe(loud, brief, start);
    detector.observe(quiet, brief, start + 500ms);
    EXPECT_FALSE(detector.observe(quiet, brief, start + 999ms).pauseReached);
    EXPECT_TRUE(detector.observe(quiet, brief, start + 1000ms).pauseReached);
}

TEST(VoiceActivityDetector, aRefusedPauseIsOfferedAgain) {
    VoiceActivityDetector detector(start);
    detector.observe(loud, {}, start + 1s);
    detector.observe(quiet, {}, start + 2s);
    EXPECT_TRUE(detector.observe(quiet, {}, start + 3s).pauseReached);
    EXPECT_TRUE(detector.observe(quiet, {}, start + 3100ms).pauseReached);
}

TEST(VoiceActivityDetector, aLoudBufferClearsTheSilence) {
    VoiceActivityDetector detector(start);
    detector.observe(loud, {}, start + 1s);
    detector.observe(quiet, {}, start + 2s);
    EXPECT_FALSE(detector.observe(loud, {}, start + 2500ms).speechStarted);
    EXPECT_FALSE(detector.vadSilenceStart());
    EXPECT_TRUE(detector.observe(quiet, {}, start + 2600ms).silenceStarted);
    EXPECT_FALSE(detector.observe(quiet, {}, start + 3100ms).pauseReached);
    EXPECT_TRUE(detector.observe(quiet, {}, start + 3200ms).pauseReached);
}

TEST(VoiceActivityDetector, eightSecondsForceASendOfSpeechAndOfSilence) {
    for (const float level : {loud, quiet}) {
        VoiceActivityDetector detector(start);
        EXPECT_FALSE(detector.observe(level, {}, start + 8s - 1ns).forcedDue);
        EXPECT_TRUE(detector.observe(level, {}, start + 8s).forcedDue);
        EXPECT_TRUE(detector.observe(level, {}, start + 9s).forcedDue) << "offered again";
    }
}

TEST(VoiceActivityDetector, aForcedSendLeavesTheUtteranceGoingOn) {
    VoiceActivityDetector detector(start);
    detector.observe(loud, {}, start + 7s);
    detector.observe(quiet, {}, start + 8s);
    detector.forcedSent(start + 8s);
    EXPECT_TRUE(detector.vadIsSpeaking());
    EXPECT_FALSE(detector.vadSilenceStart());
    EXPECT_EQ(detector.vadLastSendTime(), start + 8s);
    EXPECT_TRUE(detector.observe(quiet, {}, start + 8100ms).silenceStarted);
}

TEST(VoiceActivityDetector, pauseAndForceAreBothJudgedByTheLastSendAtEntry) {
    VoiceActivityDetector detector(start);
    detector.observe(loud, {}, start + 7s);
    detector.observe(quiet, {}, start + 7500ms);
    const VoiceActivity activity = detector.observe(quiet, {}, start + 8200ms);
    EXPECT_TRUE(activity.pauseReached);
    EXPECT_TRUE(activity.forcedDue);
}

TEST(VoiceActivityDetector, resetForgetsSpeechAndSilenceAndStartsTheClock) {
    VoiceActivityDetector detector(start);
    detector.observe(loud, {}, start + 1s);
    detector.observe(quiet, {}, start + 2s);
    detector.reset(start + 7s);
    EXPECT_FALSE(detector.vadIsSpeaking());
    EXPECT_FALSE(detector.vadSilenceStart());
    EXPECT_FALSE(detector.observe(quiet, {}, start + 14s).forcedDue);
    EXPECT_TRUE(detector.observe(quiet, {}, start + 15s).forcedDue);
}

TEST(VoiceActivityDetector, theDurationFieldsOnlyDocument) {
    VoiceActivityDetector detector(start);
    detector.vadMaxChunkDuration = 2.0;
    detector.vadMinChunkDuration = 5.0;
    detector.observe(loud, {}, start);
    detector.observe(quiet, {}, start + 400ms);
    const VoiceActivity activity = detector.observe(quiet, {}, start + 4s);
    EXPECT_FALSE(activity.forcedDue);
    EXPECT_TRUE(activity.pauseReached);
}

} // namespace
