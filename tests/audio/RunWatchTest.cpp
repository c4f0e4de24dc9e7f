#include "RunWatch.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

namespace {

class RunWatchTest : public ::testing::Test {
  protected:
    RunWatchTest() {
        watch.begin(at(0s));
        watch.captureStarted(at(0s));
    }

    static RunWatch::TimePoint at(std::chrono::milliseconds time) {
        return RunWatch::TimePoint(1h + time);
    }

    RunTrouble trouble(std::chrono::milliseconds time) const {
        return watch.progress(at(time)).trouble;
    }

    /// Sound ten times a second, as from a meter; `isSpeech` for all of it.
    void hear(std::chrono::milliseconds from, std::chrono::milliseconds to, bool isSpeech) {
        for (auto time = from; time < to; time += 100ms) {
            watch.soundArrived(isSpeech, at(time));
        }
    }

    RunWatch watch;
};

TEST_F(RunWatchTest, tellsWhenEachStageWasLastReached) {
    watch.soundArrived(true, at(1s));
    watch.soundArrived(false, at(2s));
    watch.chunkSent(at(3s));
    watch.resultArrived(at(4s));
    const RunProgress progress = watch.progress(at(5s));
    EXPECT_TRUE(progress.isOn);
    EXPECT_EQ(progress.speechHeard, at(1s));
    EXPECT_EQ(progress.soundArrived, at(2s));
    EXPECT_EQ(progress.sent, at(3s));
    EXPECT_EQ(progress.answered, at(4s));
    EXPECT_EQ(progress.trouble, RunTrouble::None);
}

TEST_F(RunWatchTest, isEmptyWithoutARun) {
    watch.soundArrived(true, at(1s));
    watch.linkLost(u"gone"_s);
    watch.end();
    EXPECT_EQ(watch.progress(at(100s)), RunProgress());
    watch.begin(at(101s));
    EXPECT_EQ(watch.progress(at(101s)), RunProgress{.isOn = true});
}

TEST_F(RunWatchTest, aSourceThatDeliversNothingIsToldAfterTenSeconds) {
    EXPECT_EQ(trouble(9999ms), RunTrouble::None);
    EXPECT_EQ(trouble(10s), RunTrouble::NoSound);
    watch.soundArrived(false, at(11s));
    EXPECT_EQ(trouble(20999ms), RunTrouble::None);
    EXPECT_EQ(trouble(21s), RunTrouble::NoSound);
    EXPECT_EQ(watch.progress(at(35s)).lag, 24s);
}

TEST_F(RunWatchTest, anotherSourceHasTheTimeThatTheFirstOneHad) {
    watch.captureFailed(CaptureProblem::NoDevice, {});
    watch.sourceChanged(at(100s));
    EXPECT_EQ(trouble(200s), RunTrouble::None) << "somebody may be asking for a permission";
    watch.captureStarted(at(200s));
    EXPECT_EQ(trouble(209s), RunTrouble::None);
    EXPECT_EQ(trouble(210s), RunTrouble::NoSound);
}

TEST_F(RunWatchTest, silenceIsToldAfterAMinute) {
    hear(0s, 70s, false);
    EXPECT_EQ(trouble(59999ms), RunTrouble::None);
    EXPECT_EQ(trouble(60s), RunTrouble::OnlySilence);
    watch.soundArrived(true, at(71s));
    EXPECT_EQ(trouble(72s), RunTrouble::None);
}

TEST_F(RunWatchTest, aSourceThatIsOpenedAgainHasItsTime) {
    hear(0s, 5s, false);
    watch.captureEnded(CaptureProblem::Other, u"unplugged"_s);
    EXPECT_EQ(trouble(6s), RunTrouble::CaptureEnded);
    EXPECT_EQ(watch.progress(at(6s)).reason, u"unplugged"_s);
    watch.captureStarted(at(100s));
    EXPECT_EQ(trouble(109s), RunTrouble::None);
    EXPECT_EQ(trouble(110s), RunTrouble::NoSound);
}

TEST_F(RunWatchTest, aSourceThatIsStillBeingOpenedIsNoTrouble) {
    RunWatch asking;
    asking.begin(at(0s));
    EXPECT_EQ(asking.progress(at(300s)).trouble, RunTrouble::None);
    asking.captureFailed(CaptureProblem::Other, u"denied"_s);
    EXPECT_EQ(asking.progress(at(300s)).trouble, RunTrouble::CaptureFailed);
}

TEST_F(RunWatchTest, aLostLinkIsWhatMattersMost) {
    watch.engineRefused(u"no key"_s);
    EXPECT_EQ(trouble(1s), RunTrouble::EngineRefused);
    watch.captureFailed(CaptureProblem::Other, u"denied"_s);
    EXPECT_EQ(trouble(1s), RunTrouble::CaptureFailed);
    watch.linkLost(u"closed"_s);
    EXPECT_EQ(trouble(1s), RunTrouble::LinkLost);
    EXPECT_EQ(watch.progress(at(1s)).reason, u"closed"_s);
}

TEST_F(RunWatchTest, tellsWhatIsWrongWithTheSource) {
    watch.captureFailed(CaptureProblem::NoDevice, {});
    EXPECT_EQ(watch.progress(at(1s)).captureProblem, CaptureProblem::NoDevice);
    watch.linkLost(u"closed"_s);
    EXPECT_EQ(watch.progress(at(1s)).captureProblem, CaptureProblem::None);
}

TEST_F(RunWatchTest, anEngineWhoseConnectionIsGoneIsLost) {
    watch.engineLost(u"bye"_s);
    EXPECT_EQ(trouble(1s), RunTrouble::EngineLost);
    watch.engineServes();
    EXPECT_EQ(trouble(1s), RunTrouble::None);
}

TEST_F(RunWatchTest, anEngineThatServesAgainIsForgiven) {
    watch.engineRefused(u"no key"_s);
    EXPECT_EQ(watch.progress(at(1s)).reason, u"no key"_s);
    watch.engineServes();
    EXPECT_EQ(trouble(1s), RunTrouble::None);
}

TEST_F(RunWatchTest, aChunkThatWaitsLongerThanTenSecondsLags) {
    hear(0s, 3s, true);
    watch.chunkSent(at(3s));
    hear(3s, 30s, false);
    EXPECT_EQ(trouble(13s), RunTrouble::None);
    EXPECT_EQ(trouble(13001ms), RunTrouble::AnswersLag);
    watch.resultArrived(at(14s));
    EXPECT_EQ(trouble(29s), RunTrouble::None);
}

TEST_F(RunWatchTest, withoutConfirmationsSilenceIsNotExpectedToBeAnswered) {
    hear(0s, 1s, true);
    watch.chunkSent(at(1s));
    watch.resultArrived(at(2s));
    hear(1100ms, 30s, false);
    watch.chunkSent(at(9s));
    EXPECT_EQ(trouble(29s), RunTrouble::None);
}

TEST_F(RunWatchTest, withConfirmationsEachChunkHasItsOwnAnswer) {
    hear(0s, 60s, true);
    watch.chunkSent(at(2s));
    watch.chunkSent(at(8s));
    watch.chunkAnswered(at(9s));
    watch.resultArrived(at(17s)); // What it says belongs to a chunk that is still worked on.
    EXPECT_EQ(trouble(18s), RunTrouble::None);
    EXPECT_EQ(trouble(18001ms), RunTrouble::AnswersLag);
    EXPECT_EQ(watch.progress(at(25s)).lag, 17s);
    watch.chunkAnswered(at(26s));
    EXPECT_EQ(trouble(50s), RunTrouble::None);
}

TEST_F(RunWatchTest, confirmationsOfMoreThanWasSentAreNoHarm) {
    hear(0s, 30s, true);
    watch.chunkAnswered(at(1s));
    watch.chunkAnswered(at(2s));
    EXPECT_EQ(trouble(29s), RunTrouble::None);
}

TEST_F(RunWatchTest, aStreamingEngineIsGivenTimeFromTheEndOfWhatWasSaid) {
    hear(0s, 30s, true);
    watch.soundStreamed(at(29s));
    EXPECT_EQ(trouble(30s), RunTrouble::None) << "one long sentence";
    hear(30s, 60s, false);
    EXPECT_EQ(trouble(39900ms), RunTrouble::None);
    EXPECT_EQ(trouble(40s), RunTrouble::AnswersLag);
    watch.resultArrived(at(41s));
    EXPECT_EQ(trouble(59s), RunTrouble::None);
}

TEST_F(RunWatchTest, aStreamingEngineIsGivenNoMoreTimeByFurtherSpeech) {
    watch.soundStreamed(at(0s));
    hear(0s, 2s, true);
    hear(2s, 4s, false);
    hear(4s, 20s, true);
    EXPECT_EQ(trouble(11s), RunTrouble::None);
    EXPECT_EQ(trouble(12s), RunTrouble::AnswersLag);
    watch.resultArrived(at(12s));
    EXPECT_EQ(trouble(19s), RunTrouble::None);
}

} // namespace

} // namespace orv
