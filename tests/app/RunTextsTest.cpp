#include "RunTexts.h"

#include "Fakes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

QString filledIn(const QString& key) {
    return keyAsText(key) + u" %1"_s;
}

TEST(TroubleText, saysNothingWhileAllIsWell) {
    EXPECT_EQ(troubleText({}, keyAsText), QString());
    EXPECT_EQ(troubleText({.isOn = true}, keyAsText), QString());
}

TEST(TroubleText, namesTheStageThatIsStuck) {
    const auto said = [](RunTrouble trouble) {
        return troubleText({.isOn = true, .trouble = trouble, .lag = 12s}, filledIn);
    };
    EXPECT_EQ(said(RunTrouble::LinkLost), u"<run.trouble.link> %1"_s);
    EXPECT_EQ(said(RunTrouble::NoSound), u"<run.trouble.nosound> 12"_s);
    EXPECT_EQ(said(RunTrouble::AnswersLag), u"<run.trouble.lag> 12"_s);
    EXPECT_EQ(said(RunTrouble::OnlySilence), u"<run.trouble.silence> 12"_s);
}

TEST(TroubleText, givesTheServicesOwnReason) {
    const auto said = [](RunTrouble trouble) {
        return troubleText({.isOn = true, .trouble = trouble, .reason = u"quota used up"_s},
                           filledIn);
    };
    EXPECT_EQ(said(RunTrouble::EngineLost), u"<run.trouble.engine> quota used up"_s);
    EXPECT_EQ(said(RunTrouble::EngineRefused), u"<run.trouble.refused> quota used up"_s);
}

TEST(TroubleText, saysWhyASourceFails) {
    const auto said = [](RunTrouble trouble, CaptureProblem problem) {
        return troubleText({.isOn = true,
                            .trouble = trouble,
                            .captureProblem = problem,
                            .reason = u"device busy"_s},
                           filledIn);
    };
    for (const RunTrouble trouble : {RunTrouble::CaptureFailed, RunTrouble::CaptureEnded}) {
        EXPECT_EQ(said(trouble, CaptureProblem::NoPermission), u"<run.trouble.permission> %1"_s);
        EXPECT_EQ(said(trouble, CaptureProblem::NoSoundService), u"<run.trouble.service> %1"_s);
        EXPECT_EQ(said(trouble, CaptureProblem::NoDevice), u"<run.trouble.nodevice> %1"_s);
        EXPECT_EQ(said(trouble, CaptureProblem::DeviceGone), u"<run.trouble.devicegone> %1"_s);
        EXPECT_EQ(said(trouble, CaptureProblem::Other), u"<run.trouble.capture> device busy"_s);
    }
}

TEST(StageTime, tellsHowLongAgoAStageWasReached) {
    const RunProgress::TimePoint now(1h);
    EXPECT_EQ(stageTime(std::nullopt, now, filledIn), u"<run.stage.never> %1"_s);
    EXPECT_EQ(stageTime(now, now, filledIn), u"<run.stage.now> %1"_s);
    EXPECT_EQ(stageTime(now - 2999ms, now, filledIn), u"<run.stage.now> %1"_s);
    EXPECT_EQ(stageTime(now - 3s, now, filledIn), u"<run.stage.ago> 3"_s);
    EXPECT_EQ(stageTime(now - 90s, now, filledIn), u"<run.stage.ago> 90"_s);
}

} // namespace

} // namespace orv::test
