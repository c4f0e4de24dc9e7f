#include "PanelState.h"

#include "Fakes.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(StatusLine, saysNothingWhenNothingHappens) {
    EXPECT_EQ(statusLine({}, keyAsText), StatusLine());
    EXPECT_EQ(statusLine({.backendStatus = u"Model loaded"_s}, keyAsText), StatusLine());
}

TEST(StatusLine, tellsThatItListens) {
    EXPECT_EQ(statusLine({.isTranslating = true}, keyAsText),
              (StatusLine{.headline = u"<status.listening>"_s, .tone = Tone::Good}));
}

TEST(StatusLine, tellsTheBackendsLastWordBesideListening) {
    const StatusLine line =
        statusLine({.isTranslating = true, .backendStatus = u"Model loaded"_s}, keyAsText);
    EXPECT_EQ(line.headline, u"<status.listening>"_s);
    EXPECT_EQ(line.detail, u"Model loaded"_s);
}

TEST(StatusLine, tellsThatAModelLoads) {
    EXPECT_EQ(
        statusLine(
            {.isTranslating = true, .backendStatus = u"Loading model"_s, .isModelLoading = true},
            keyAsText),
        (StatusLine{.headline = u"Loading model"_s, .tone = Tone::Busy}));
}

TEST(StatusLine, anErrorShowsAlsoAfterTheRun) {
    const StatusLine error{.headline = u"No engine"_s, .tone = Tone::Error};
    EXPECT_EQ(statusLine({.backendStatus = u"No engine"_s, .hasEngineError = true}, keyAsText),
              error);
    EXPECT_EQ(statusLine({.isTranslating = true,
                          .backendStatus = u"No engine"_s,
                          .isModelLoading = true,
                          .hasEngineError = true},
                         keyAsText),
              error);
}

TEST(StatusLine, theEndThatIsAwaitedComesFirst) {
    EXPECT_EQ(statusLine({.isStopping = true, .backendStatus = u"x"_s, .hasEngineError = true},
                         keyAsText),
              (StatusLine{.headline = u"<main.stopping>"_s, .tone = Tone::Busy}));
}

TEST(StatusLine, whatKeepsTheRunFromResultsComesBeforeWhatTheServerSaid) {
    const auto line = [](RunTrouble trouble) {
        return statusLine({.isTranslating = true,
                           .backendStatus = u"Model loaded"_s,
                           .progress = {.isOn = true, .trouble = trouble}},
                          keyAsText);
    };
    EXPECT_EQ(line(RunTrouble::LinkLost),
              (StatusLine{.headline = u"<run.trouble.link>"_s, .tone = Tone::Error}));
    EXPECT_EQ(line(RunTrouble::NoSound),
              (StatusLine{.headline = u"<run.trouble.nosound>"_s, .tone = Tone::Error}));
    // It may be a pause of the speaker, or a slow machine.
    EXPECT_EQ(line(RunTrouble::OnlySilence),
              (StatusLine{.headline = u"<run.trouble.silence>"_s, .tone = Tone::Busy}));
    EXPECT_EQ(line(RunTrouble::AnswersLag),
              (StatusLine{.headline = u"<run.trouble.lag>"_s, .tone = Tone::Busy}));
}

TEST(StatusLine, aModelThatLoadsIsWhyThereIsNoAnswer) {
    const auto line = [](RunTrouble trouble) {
        return statusLine({.isTranslating = true,
                           .backendStatus = u"Loading model"_s,
                           .isModelLoading = true,
                           .progress = {.isOn = true, .trouble = trouble}},
                          keyAsText);
    };
    EXPECT_EQ(line(RunTrouble::AnswersLag).headline, u"Loading model"_s);
    EXPECT_EQ(line(RunTrouble::NoSound).headline, u"<run.trouble.nosound>"_s);
}

TEST(StatusLine, saysARefusalInTheServersWords) {
    const auto line = [](const QString& refusal) {
        return statusLine(
            {.isTranslating = true,
             .refusal = refusal,
             .progress = {.isOn = true, .trouble = RunTrouble::EngineRefused, .reason = u"why"_s}},
            keyAsText);
    };
    EXPECT_EQ(line(u"No recognition"_s),
              (StatusLine{.headline = u"No recognition"_s, .tone = Tone::Error}));
    EXPECT_EQ(line({}).headline, u"<run.trouble.refused>"_s);
}

TEST(DeviceHint, isThereOnlyWithoutAnyDevice) {
    EXPECT_EQ(deviceHint({}, true, keyAsText), u"<audio.mic.none>"_s);
    EXPECT_EQ(deviceHint({{.id = u"a"_s, .name = u"Mic A"_s}}, true, keyAsText), QString());
}

TEST(DeviceHint, isSilentWhereNothingIsKnownAboutDevices) {
    EXPECT_EQ(deviceHint({}, false, keyAsText), QString());
}

TEST(AppHint, helpsOnlyWithoutAnyApplication) {
    const RunningApp app{.bundleId = u"org.example.Player"_s, .name = u"Player"_s};
    EXPECT_EQ(appHint({}, true, keyAsText), u"<audio.app.none>"_s);
    EXPECT_EQ(appHint({app}, true, keyAsText), u"<audio.drm.warning.short>"_s);
    EXPECT_EQ(appHint({}, false, keyAsText), u"<audio.drm.warning.short>"_s);
}

TEST(ResultHelp, namesTheNextStep) {
    EXPECT_EQ(resultHelp(false, false, keyAsText), u"<panel.help.backend>"_s);
    EXPECT_EQ(resultHelp(true, false, keyAsText), u"<panel.help.start>"_s);
    EXPECT_EQ(resultHelp(true, true, keyAsText), u"<panel.result.empty>"_s);
}

TEST(ResultHelp, doesNotAskForABackendThatEndsDuringARun) {
    EXPECT_EQ(resultHelp(false, true, keyAsText), u"<panel.result.empty>"_s);
}

TEST(DeviceEntries, beginWithTheDefaultInput) {
    EXPECT_EQ(deviceEntries({{.id = u"a"_s, .name = u"Mic A"_s}}, {}, keyAsText),
              (QList<FieldEntry>{{.id = {}, .text = u"<audio.mic.default>"_s},
                                 {.id = u"a"_s, .text = u"Mic A"_s}}));
}

TEST(DeviceEntries, keepAChosenDeviceThatIsUnplugged) {
    EXPECT_EQ(deviceEntries({}, u"usb-mic"_s, keyAsText).last(),
              (FieldEntry{.id = u"usb-mic"_s, .text = u"usb-mic"_s}));
}

TEST(AppEntries, beginWithTheInvitationToChoose) {
    EXPECT_EQ(appEntries({{.bundleId = u"player"_s, .name = u"Player"_s}},
                         {.bundleId = u"player"_s, .name = {}}, keyAsText),
              (QList<FieldEntry>{{.id = {}, .text = u"<audio.app.placeholder>"_s},
                                 {.id = u"player"_s, .text = u"Player"_s}}));
}

TEST(AppEntries, keepAChosenApplicationThatDoesNotRun) {
    EXPECT_EQ(appEntries({}, {.bundleId = u"player"_s, .name = {}}, keyAsText).last(),
              (FieldEntry{.id = u"player"_s, .text = u"player"_s}));
}

TEST(AppEntries, keepTheNameOfAChosenApplicationThatHasStoppedPlaying) {
    const RunningApp chosen = {.bundleId = u"pacat"_s, .name = u"Radio"_s};
    EXPECT_EQ(appEntries({}, chosen, keyAsText).last(),
              (FieldEntry{.id = u"pacat"_s, .text = u"Radio"_s}));
}

TEST(NoticeText, saysWhoseKeyIsMissing) {
    const auto text = [](const QString& key) { return QString(key % u": %1"_s); };
    EXPECT_EQ(noticeText({.kind = AudioNotice::Kind::ApiKeyMissing, .detail = u"Deepgram"_s}, text),
              u"notice.apikey.missing: Deepgram"_s);
    EXPECT_EQ(noticeText({.kind = AudioNotice::Kind::BackendOutdated, .detail = u"3"_s}, text),
              u"notice.backend.outdated: 3"_s);
    EXPECT_EQ(
        noticeText({.kind = AudioNotice::Kind::ServiceAccountMissing, .detail = {}}, keyAsText),
        u"<notice.serviceaccount.missing>"_s);
}

TEST(CloseAction, hidesWhereTheTrayGivesAWayBack) {
    EXPECT_EQ(closeAction(true, false), CloseAction::Hide);
    EXPECT_EQ(closeAction(true, true), CloseAction::Hide);
}

TEST(CloseAction, endsAnIdleProgramThatNobodyWouldSee) {
    EXPECT_EQ(closeAction(false, false), CloseAction::EndProgram);
}

TEST(CloseAction, losesNothingThatIsAtWork) {
    EXPECT_EQ(closeAction(false, true), CloseAction::Minimise);
}

} // namespace

} // namespace orv::test
