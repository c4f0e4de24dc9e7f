#include "TranslationController.h"

#include "DefaultsStore.h"
#include "Fakes.h"
#include "LogCapture.h"
#include "Quit.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class TranslationControllerTest : public ::testing::Test {
  protected:
    TranslationControllerTest() {
        QObject::connect(&quit, &Quit::terminationDue, &quit, [this] { ++terminations; });
        make({.captureStart = 1ms});
    }

    void make(ControllerTimings timings) {
        controller.emplace(ControllerEnvironment{.settings = settings,
                                                 .capture = capture,
                                                 .backend = backend,
                                                 .dialogs = dialogs,
                                                 .text = keyAsText,
                                                 .quit = quit,
                                                 .timings = timings});
        QObject::connect(&*controller, &TranslationController::TranslationStatusChanged,
                         &*controller, [this](bool translating) { posted.append(translating); });
        QObject::connect(&*controller, &TranslationController::subtitlesEnded, &*controller,
                         [this] { subtitlesEnded.append(posted.size()); });
    }

    bool waitForCapture() {
        return waitUntil([this] { return capture.capturing; });
    }

    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.path() + u"/defaults.json"_s};
    TranslationSettings settings{store};
    FakeCapture capture;
    FakeBackend backend;
    FakeDialogs dialogs;
    QList<bool> posted;
    QList<qsizetype> subtitlesEnded; ///< After how many announcements.
    int terminations = 0;
    Quit quit{backend, {.secondStop = 1ms, .terminate = 1ms, .panel = 1ms}};
    std::optional<TranslationController> controller;
};

TEST_F(TranslationControllerTest, refusesToStartWithoutBackendAndChangesNothing) {
    log.clear();
    controller->startTranslation();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"<alert.backend.notready.title>"_s);
    EXPECT_EQ(dialogs.alerts[0].message, u"<alert.backend.notready.msg>"_s);
    EXPECT_EQ(dialogs.alerts[0].buttons, QStringList{u"<alert.ok>"_s});
    EXPECT_FALSE(controller->isTranslating());
    EXPECT_TRUE(posted.isEmpty());
    EXPECT_TRUE(capture.calls.isEmpty());
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_FALSE(store.contains(u"showOverlay"_s));
}

TEST_F(TranslationControllerTest, needsTheBackendAlsoForADirectEngine) {
    settings.sttEngine.set(u"deepgram"_s);
    controller->startTranslation();
    EXPECT_EQ(dialogs.alerts.size(), 1);
    EXPECT_FALSE(controller->isTranslating());
}

TEST_F(TranslationControllerTest, refusesSingleAppWithoutAnAppAndChangesNothing) {
    backend.running = true;
    settings.audioSourceType.set(AudioSourceType::SingleApp);
    settings.selectedAppBundleId.set(QString());
    controller->startTranslation();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"<alert.noapp.title>"_s);
    EXPECT_EQ(dialogs.alerts[0].message, u"<alert.noapp.msg>"_s);
    EXPECT_FALSE(controller->isTranslating());
    EXPECT_TRUE(posted.isEmpty());
    EXPECT_TRUE(capture.calls.isEmpty());
}

TEST_F(TranslationControllerTest, asksForTheBackendBeforeItAsksForTheApp) {
    settings.audioSourceType.set(AudioSourceType::SingleApp);
    controller->startTranslation();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"<alert.backend.notready.title>"_s);
}

TEST_F(TranslationControllerTest, doesNotNeedAnAppForTheOtherSources) {
    backend.running = true;
    settings.audioSourceType.set(AudioSourceType::SystemAudio);
    controller->startTranslation();
    EXPECT_TRUE(controller->isTranslating());
    EXPECT_TRUE(dialogs.alerts.isEmpty());
}

TEST_F(TranslationControllerTest, handsTheRunOverInOrder) {
    backend.running = true;
    settings.sourceLang.set(u"en"_s);
    settings.targetLang.set(u"es"_s);
    settings.showOriginal.set(true);
    settings.saveTranscript.set(false);
    settings.audioGain.set(1.5F);
    settings.autoGain.set(false);
    settings.selectedInputDevice.set(u"mic7"_s);
    settings.selectedAppBundleId.set(u"player"_s);
    controller->startTranslation();
    EXPECT_TRUE(controller->isTranslating());
    EXPECT_EQ(posted, QList<bool>{true});
    EXPECT_FALSE(capture.capturing) << "capturing starts later";
    ASSERT_TRUE(waitForCapture());
    EXPECT_EQ(capture.calls, (QStringList{u"setGain 1.5 0"_s, u"sendConfig en es 0 1"_s,
                                          u"startCapture 0 'mic7' 'player'"_s}));
    EXPECT_TRUE(
        log.contains(u"🎤 Starte Audio-Capture:\n   Quelle: 0\n   Device: mic7\n   App: player"_s));
}

TEST_F(TranslationControllerTest, startsFromFactorOneWithAutoGain) {
    backend.running = true;
    settings.audioGain.set(2.5F);
    settings.autoGain.set(true);
    controller->startTranslation();
    EXPECT_EQ(capture.calls.value(0), u"setGain 1 1"_s);
}

TEST_F(TranslationControllerTest, writesBothOptionsToTheStore) {
    registerDefaultSettings(store);
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(store.waitUntilWritten());
    const DefaultsStore reread(disk, folder.path() + u"/defaults.json"_s);
    EXPECT_EQ(reread.boolean(u"showOverlay"_s), true);
    EXPECT_EQ(reread.boolean(u"speakTranslations"_s), false);
}

TEST_F(TranslationControllerTest, stopsAnOldCaptureFirstAndStartsTheNewOneLater) {
    backend.running = true;
    capture.capturing = true;
    make({.captureStart = 200ms});
    QElapsedTimer clock;
    clock.start();
    controller->startTranslation();
    EXPECT_TRUE(log.contains(u"⚠️ Alte Audio-Capture wird gestoppt..."_s));
    EXPECT_EQ(capture.calls.value(0), u"stopCaptureSync"_s);
    EXPECT_TRUE(capture.calls.value(1).startsWith(u"setGain"_s)) << "a stop resets the gain";
    ASSERT_TRUE(waitForCapture());
    EXPECT_GE(clock.elapsed(), 199);
}

TEST_F(TranslationControllerTest, startsWithoutTheLineWhenNothingIsCapturing) {
    backend.running = true;
    controller->startTranslation();
    EXPECT_FALSE(log.contains(u"⚠️ Alte Audio-Capture wird gestoppt..."_s));
    EXPECT_FALSE(capture.calls.contains(u"stopCaptureSync"_s));
}

TEST_F(TranslationControllerTest, theRealDelayBeforeCapturingIs200Milliseconds) {
    EXPECT_EQ(ControllerTimings().captureStart, 200ms);
    EXPECT_EQ(QuitTimings().panel, 1500ms);
}

TEST_F(TranslationControllerTest, aSecondStartWhileTranslatingDoesNothing) {
    backend.running = true;
    controller->startTranslation();
    const QStringList calls = capture.calls;
    controller->startTranslation();
    EXPECT_EQ(capture.calls, calls);
    EXPECT_EQ(posted, QList<bool>{true});
}

TEST_F(TranslationControllerTest, showsThatItStopsUntilTheLastResultIsBack) {
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    controller->stopTranslation();
    EXPECT_FALSE(controller->isTranslating());
    EXPECT_TRUE(controller->isStopping());
    EXPECT_EQ(posted, (QList<bool>{true, false}));
    EXPECT_EQ(capture.calls.last(), u"stopCapture"_s);
    drainEvents();
    EXPECT_TRUE(controller->isStopping());
    capture.finishStops();
    EXPECT_FALSE(controller->isStopping());
}

TEST_F(TranslationControllerTest, aStopEndsTheSubtitlesBeforeItTellsOthers) {
    backend.running = true;
    controller->startTranslation();
    EXPECT_TRUE(subtitlesEnded.isEmpty());
    controller->stopTranslation();
    EXPECT_EQ(subtitlesEnded, QList<qsizetype>{1});
    EXPECT_EQ(posted, (QList<bool>{true, false}));
}

TEST_F(TranslationControllerTest, stoppingWithoutARunDoesNothing) {
    controller->stopTranslation();
    EXPECT_TRUE(posted.isEmpty());
    EXPECT_TRUE(capture.calls.isEmpty());
    EXPECT_FALSE(controller->isStopping());
}

TEST_F(TranslationControllerTest, aStopBeforeCapturingHasBegunKeepsItFromBeginning) {
    backend.running = true;
    make({.captureStart = 20ms});
    controller->startTranslation();
    controller->stopTranslation();
    capture.finishStops();
    // Timers fire in the order of their times: after this one the delayed step would have run.
    bool passed = false;
    QTimer::singleShot(40ms, &*controller, [&] { passed = true; });
    ASSERT_TRUE(waitUntil([&] { return passed; }));
    EXPECT_TRUE(capture.calls.filter(u"startCapture"_s).isEmpty());
}

TEST_F(TranslationControllerTest, aStartDuringTheStopCutsItShort) {
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    controller->stopTranslation();
    controller->startTranslation();
    EXPECT_TRUE(capture.calls.contains(u"stopCaptureSync"_s));
    EXPECT_TRUE(controller->isTranslating());
    EXPECT_FALSE(controller->isStopping());
    ASSERT_TRUE(waitForCapture());
}

TEST_F(TranslationControllerTest, theEndOfAnEarlierStopDoesNotEndALaterOne) {
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    controller->stopTranslation();
    const auto earlierEnd = capture.pendingStops.value(0);
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    controller->stopTranslation();
    earlierEnd();
    EXPECT_TRUE(controller->isStopping());
    capture.finishStops();
    EXPECT_FALSE(controller->isStopping());
}

TEST_F(TranslationControllerTest, theEndOfAStopAfterTheControllerIsGoneIsHarmless) {
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    controller->stopTranslation();
    controller.reset();
    capture.finishStops();
}

TEST_F(TranslationControllerTest, quitStopsTheRunThenTheBackendThenTheProgram) {
    backend.running = true;
    settings.autoStopBackend.set(false);
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    QStringList ends;
    capture.together = &ends;
    backend.together = &ends;
    controller->quitApp();
    EXPECT_TRUE(log.contains(u"🛑 Beende App..."_s));
    EXPECT_EQ(ends, (QStringList{u"stopCapture"_s, u"stopBackend"_s}));
    EXPECT_EQ(backend.calls, QStringList{u"stopBackend"_s});
    EXPECT_EQ(terminations, 0) << "the program ends later";
    EXPECT_TRUE(waitUntil([this] { return terminations == 1; }));
}

TEST_F(TranslationControllerTest, quitWithoutARunStopsOnlyTheBackend) {
    controller->quitApp();
    EXPECT_TRUE(capture.calls.isEmpty());
    EXPECT_EQ(backend.calls, QStringList{u"stopBackend"_s});
    EXPECT_TRUE(waitUntil([this] { return terminations == 1; }));
}

TEST_F(TranslationControllerTest, quittingTwiceEndsOnce) {
    controller->quitApp();
    controller->quitApp();
    EXPECT_EQ(log.count(u"🛑 Beende App..."_s), 1);
    EXPECT_EQ(backend.calls.size(), 1);
}

TEST_F(TranslationControllerTest, aSourceChosenInARunIsListenedToAtOnce) {
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    capture.calls.clear();
    settings.selectedInputDevice.set(u"mic7"_s);
    ASSERT_TRUE(waitUntil([this] { return !capture.calls.isEmpty(); }));
    EXPECT_EQ(capture.calls, QStringList{u"changeSource 0 'mic7' ''"_s});
    EXPECT_TRUE(
        log.contains(u"🎤 Wechsle Audio-Quelle:\n   Quelle: 0\n   Device: mic7\n   App: "_s));
    capture.calls.clear();
    settings.audioSourceType.set(AudioSourceType::SystemAudio);
    settings.selectedAppBundleId.set(u"player"_s); // Counts for nothing yet.
    ASSERT_TRUE(waitUntil([this] { return !capture.calls.isEmpty(); }));
    EXPECT_EQ(capture.calls, QStringList{u"changeSource 1 'mic7' 'player'"_s});
}

TEST_F(TranslationControllerTest, untilAnAppIsChosenTheRunListensToWhatItDid) {
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    capture.calls.clear();
    settings.audioSourceType.set(AudioSourceType::SingleApp);
    drainEvents();
    EXPECT_TRUE(capture.calls.isEmpty());
    settings.selectedAppBundleId.set(u"player"_s);
    ASSERT_TRUE(waitUntil([this] { return !capture.calls.isEmpty(); }));
    EXPECT_EQ(capture.calls, QStringList{u"changeSource 2 '' 'player'"_s});
}

TEST_F(TranslationControllerTest, aChoiceThatChangesNothingHeardChangesNothing) {
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    capture.calls.clear();
    settings.selectedAppBundleId.set(u"player"_s);
    settings.audioSourceType.set(AudioSourceType::SystemAudio);
    settings.audioSourceType.set(AudioSourceType::Microphone);
    drainEvents();
    EXPECT_TRUE(capture.calls.isEmpty());
}

TEST_F(TranslationControllerTest, aSourceChosenBeforeTheCaptureBeginsIsTheOneItBeginsWith) {
    backend.running = true;
    make({.captureStart = 300ms});
    controller->startTranslation();
    settings.audioSourceType.set(AudioSourceType::SystemAudio);
    ASSERT_TRUE(waitForCapture());
    EXPECT_TRUE(waitUntil([this] { return capture.calls.last().endsWith(u" 1 '' ''"); }));
}

TEST_F(TranslationControllerTest, continuesWithTheSourceChosenLast) {
    backend.running = true;
    controller->startTranslation();
    ASSERT_TRUE(waitForCapture());
    settings.audioSourceType.set(AudioSourceType::SystemAudio);
    ASSERT_TRUE(waitUntil([this] { return capture.calls.last().startsWith(u"changeSource"); }));
    capture.capturing = false;
    controller->continueTranslation();
    ASSERT_TRUE(waitForCapture());
    EXPECT_EQ(capture.calls.last(), u"startCapture 1 '' ''"_s);
}

} // namespace

} // namespace orv::test
