#include "CaptureSources.h"

#include "AudioIngest.h"
#include "Chunker.h"
#include "LogCapture.h"
#include "NullAudioCapture.h"
#include "WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <span>
#include <vector>

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using orv::AudioSourceType;
using orv::CaptureAuthorization;
using orv::CaptureSources;
using orv::MicrophoneFailure;
using orv::RateSwitch;
using orv::RunningApp;
using orv::test::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;

const QString frame(39, u'═');

/// An answer of the null services may lead to the next question; no start asks more than five.
void letAnswersArrive() {
    for (int i = 0; i < 6; ++i) {
        orv::test::drainEvents();
    }
}

class CaptureSourcesTest : public testing::Test {
  protected:
    CaptureSourcesTest() {
        chunker.setVadEnabled(false);
        capture.answers().preparation = microphoneAt(48000);
        capture.answers().screenCapture = {};
        makeSources();
    }

    /// The old ones go first: the platform has one listener.
    void makeSources(orv::CaptureTimings timings = {.firstRetry = 10ms, .longestRetry = 40ms}) {
        sources.reset();
        sources = std::make_unique<CaptureSources>(capture, ingest, timings);
        letAnswersArrive();
        log.clear();
    }

    static orv::MicrophonePreparation microphoneAt(double rate) {
        orv::MicrophonePreparation found;
        found.deviceNumber = u"3"_s;
        found.initialFormat = {.sampleRate = rate, .channels = 2};
        found.format = found.initialFormat;
        return found;
    }

    void startMicrophone(const QString& device = {}) {
        EXPECT_TRUE(sources->start(AudioSourceType::Microphone, device, {}));
        letAnswersArrive();
    }

    void startScreen(AudioSourceType source, const QString& app = {}) {
        EXPECT_TRUE(sources->start(source, u"mic"_s, app));
        letAnswersArrive();
    }

    bool deliver(std::vector<float> samples, std::size_t stride = 1) {
        return capture.deliver(
            {.firstChannel = samples.data(), .frames = samples.size() / stride, .stride = stride});
    }

    bool deliverBlock(const std::vector<float>& floats, std::size_t extraBytes = 0) {
        std::vector<std::byte> bytes(floats.size() * sizeof(float) + extraBytes);
        std::ranges::copy(std::as_bytes(std::span(floats)), bytes.begin());
        return capture.deliverBlock(bytes);
    }

    orv::test::LogCapture log;
    orv::Chunker chunker{[](orv::Chunk&&) {}, orv::Chunker::TimePoint{1000h}, 48000};
    orv::AudioIngest ingest{chunker};
    orv::NullAudioCapture capture;
    std::unique_ptr<CaptureSources> sources;
};

TEST(AudioSourceFromRaw, threeAndAboveAndNegativeNumbersAreRejected) {
    EXPECT_EQ(orv::audioSourceFromRaw(0), AudioSourceType::Microphone);
    EXPECT_EQ(orv::audioSourceFromRaw(1), AudioSourceType::SystemAudio);
    EXPECT_EQ(orv::audioSourceFromRaw(2), AudioSourceType::SingleApp);
    EXPECT_EQ(orv::audioSourceFromRaw(3), std::nullopt);
    EXPECT_EQ(orv::audioSourceFromRaw(-1), std::nullopt);
}

TEST_F(CaptureSourcesTest, aSourceOfRawValueThreeIsRejected) {
    EXPECT_FALSE(sources->start(static_cast<AudioSourceType>(3), {}, {}));
    EXPECT_FALSE(sources->isActive());
    EXPECT_THAT(log.lines(), ElementsAre(u"❌ Ungültige Audio-Quelle: 3"_s));
}

// Permission.

TEST_F(CaptureSourcesTest, theDefaultMicrophoneAt48kHzStartsWithTheseLines) {
    startMicrophone();
    EXPECT_TRUE(sources->isActive());
    EXPECT_TRUE(sources->isRunning());
    EXPECT_EQ(capture.asked().framesPerBuffer, 4096U);
    EXPECT_THAT(log.lines(),
                ElementsAre(u"🎤 Starte Mikrofon-Capture..."_s, u"   Device ID: System-Default"_s,
                            u"✓ Mikrofon-Berechtigung vorhanden"_s,
                            u"📊 Hardware-Format (initial): 48000Hz, 2 Kanäle"_s,
                            u"📊 Hardware-Format (nach prepare): 48000Hz, 2 Kanäle"_s, frame,
                            u"📊 AUDIO PATH ANALYSIS:"_s, u"   Hardware: 48000Hz, 2 Kanäle"_s,
                            u"   Pfad: 🚀 LOW-LATENCY (Direct 48kHz)"_s,
                            u"   Converter: NO - DIRECT passthrough"_s, frame,
                            u"✅ Mikrofon-Engine gestartet (48000Hz, 2 Kanäle)"_s));
}

TEST_F(CaptureSourcesTest, anOpenPermissionIsAskedForAndThenUsed) {
    capture.answers().authorization = CaptureAuthorization::NotDetermined;
    capture.answers().accessGranted = true;
    startMicrophone();
    EXPECT_EQ(capture.asked().accessRequests, 1);
    EXPECT_TRUE(log.contains(u"⏳ Mikrofon-Berechtigung wird angefordert..."_s));
    EXPECT_TRUE(waitUntil([&] { return sources->isRunning(); }));
}

TEST_F(CaptureSourcesTest, aRefusedPermissionEndsTheStart) {
    capture.answers().authorization = CaptureAuthorization::NotDetermined;
    startMicrophone();
    ASSERT_TRUE(waitUntil([&] { return !sources->isActive(); }));
    EXPECT_EQ(log.lines().last(), u"❌ Mikrofon-Berechtigung verweigert"_s);
    EXPECT_EQ(capture.asked().preparations, 0);
}

TEST_F(CaptureSourcesTest, restrictedAndDeniedPermissionSayWhereToGrantIt) {
    for (const auto status : {CaptureAuthorization::Restricted, CaptureAuthorization::Denied}) {
        capture.answers().authorization = status;
        log.clear();
        startMicrophone();
        EXPECT_FALSE(sources->isActive());
        EXPECT_THAT(
            log.lines().mid(2),
            ElementsAre(u"❌ Mikrofon-Berechtigung nicht erteilt!"_s,
                        u"   Bitte in Systemeinstellungen > Datenschutz > Mikrofon aktivieren"_s));
    }
}

// Device and rate.

TEST_F(CaptureSourcesTest, aChosenDeviceIsNamedWithItsNumberAndRate) {
    capture.answers().preparation.rateSwitch = RateSwitch::AlreadyAt48kHz;
    startMicrophone(u"usb"_s);
    EXPECT_EQ(capture.asked().deviceId, u"usb"_s);
    EXPECT_THAT(log.lines().mid(1, 4),
                ElementsAre(u"   Device ID: usb"_s, u"✓ Mikrofon-Berechtigung vorhanden"_s,
                            u"✓ Mikrofon auf AudioUnit gesetzt (DeviceID: 3)"_s,
                            u"✅ Gerät bereits bei 48kHz"_s));
}

TEST_F(CaptureSourcesTest, aSwitchedDeviceRunsOnTheDirectPath) {
    capture.answers().preparation.rateSwitch = RateSwitch::Switched;
    capture.answers().preparation.rateBefore = 44100;
    capture.answers().preparation.initialFormat.sampleRate = 44100;
    startMicrophone(u"usb"_s);
    EXPECT_TRUE(log.contains(u"✅ Gerät von 44100Hz → 48kHz umgestellt"_s));
    EXPECT_TRUE(log.contains(u"📊 Hardware-Format (initial): 44100Hz, 2 Kanäle"_s));
    EXPECT_TRUE(log.contains(u"   Converter: NO - DIRECT passthrough"_s));
    EXPECT_TRUE(deliver({0.5F, -0.5F}));
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.5F, -0.5F));
}

TEST_F(CaptureSourcesTest, aDeviceThatKeeps44100GetsTheConverter) {
    capture.answers().preparation = microphoneAt(44100);
    capture.answers().preparation.rateSwitch = RateSwitch::NotSupported;
    capture.answers().preparation.rateBefore = 44100;
    startMicrophone(u"usb"_s);
    EXPECT_TRUE(log.contains(u"⚠️ Gerät unterstützt keine 48kHz (bleibt bei 44100Hz)"_s));
    EXPECT_THAT(log.lines().mid(10),
                ElementsAre(u"   Pfad: 📦 Standard (Persistent Converter)"_s,
                            u"   Converter: YES - resampling"_s, frame,
                            u"🔄 Persistenter Sample-Rate Converter erstellt: 44100Hz → 48kHz "
                            "(Mastering-Qualität)"_s,
                            u"✅ Mikrofon-Engine gestartet (44100Hz, 2 Kanäle)"_s));
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(deliver(std::vector<float>(4410, 0.25F)));
    }
    // One second of 44.1 kHz is one of 48 kHz, but for what the filter holds back.
    EXPECT_GT(chunker.bufferedSamples(), 46000U);
    EXPECT_LE(chunker.bufferedSamples(), 48000U);
}

TEST_F(CaptureSourcesTest, aRateWithinOneHertzOf48kHzIsDirectAndBeyondIsNot) {
    capture.answers().preparation = microphoneAt(48001);
    startMicrophone();
    EXPECT_TRUE(log.contains(u"   Converter: NO - DIRECT passthrough"_s));
    log.clear();
    capture.answers().preparation = microphoneAt(48001.5);
    startMicrophone();
    EXPECT_TRUE(log.contains(u"   Converter: YES - resampling"_s));
}

TEST_F(CaptureSourcesTest, ratesThatCannotBeReadAreSaid) {
    capture.answers().preparation.rateSwitch = RateSwitch::RatesUnreadable;
    startMicrophone(u"usb"_s);
    EXPECT_TRUE(log.contains(u"⚠️ Sample-Raten des Geräts nicht lesbar"_s));
    EXPECT_TRUE(sources->isRunning());
}

TEST_F(CaptureSourcesTest, anUnknownDeviceFallsBackToTheDefault) {
    capture.answers().preparation.deviceFound = false;
    startMicrophone(u"gone"_s);
    EXPECT_TRUE(log.contains(u"⚠️ Mikrofon 'gone' nicht gefunden, verwende System-Default"_s));
    EXPECT_TRUE(sources->isRunning());
}

TEST_F(CaptureSourcesTest, aDeviceThatCannotBeSelectedIsSaid) {
    capture.answers().preparation.selectError = u"busy"_s;
    startMicrophone(u"usb"_s);
    EXPECT_TRUE(log.contains(u"⚠️ Konnte Mikrofon nicht auf AudioUnit setzen: busy"_s));
    EXPECT_TRUE(sources->isRunning());
}

TEST_F(CaptureSourcesTest, everyMicrophoneFailureHasItsLineAndLeavesCaptureOff) {
    auto& answers = capture.answers();
    const auto last = [&] {
        startMicrophone();
        EXPECT_FALSE(sources->isActive());
        EXPECT_FALSE(capture.isMicrophoneRunning());
        return log.lines().last();
    };
    answers.preparation.failure = MicrophoneFailure::NoEngine;
    EXPECT_EQ(last(), u"❌ Audio Engine konnte nicht erstellt werden"_s);
    answers.preparation.failure = MicrophoneFailure::NoInput;
    EXPECT_EQ(last(), u"❌ Kein Input Node verfügbar"_s);
    answers.preparation = microphoneAt(0);
    EXPECT_EQ(last(), u"❌ Kein gültiges Hardware-Format verfügbar"_s);
    answers.preparation = microphoneAt(48000);
    answers.preparation.format.channels = 0;
    EXPECT_EQ(last(), u"❌ Kein gültiges Hardware-Format verfügbar"_s);
    answers.preparation = microphoneAt(48000);
    answers.microphoneStartError = u"busy"_s;
    EXPECT_EQ(last(), u"❌ Mikrofon-Engine Fehler: busy"_s);
}

// Buffers.

TEST_F(CaptureSourcesTest, channelZeroOfAnInterleavedBufferIsTakenAndEmptyOnesAreDropped) {
    startMicrophone();
    EXPECT_TRUE(deliver({0.1F, 0.9F, 0.2F, 0.9F}, 2));
    EXPECT_TRUE(deliver({}));
    EXPECT_TRUE(capture.deliver({.firstChannel = nullptr, .frames = 5, .stride = 1}));
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.1F, 0.2F));
}

TEST_F(CaptureSourcesTest, aScreenBlockIsTakenAsItLiesAndTheOddBytesAreCutOff) {
    startScreen(AudioSourceType::SystemAudio);
    EXPECT_TRUE(deliverBlock({0.1F, 0.2F, 0.3F, 0.4F}, 3));
    EXPECT_TRUE(deliverBlock({}, 3));
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.1F, 0.2F, 0.3F, 0.4F));
}

// Screen capture.

TEST_F(CaptureSourcesTest, systemAudioStartsWithTheseLines) {
    startScreen(AudioSourceType::SystemAudio, u"org.ignored"_s);
    EXPECT_EQ(capture.asked().screenCapture.applicationId, std::nullopt);
    EXPECT_THAT(log.lines(), ElementsAre(u"🔊 Starte System-Audio Capture (alle Apps)"_s,
                                         u"✓ Filter für System-Audio (alle Apps)"_s,
                                         u"✅ ScreenCaptureKit Audio gestartet"_s));
}

TEST_F(CaptureSourcesTest, oneApplicationStartsWithTheseLines) {
    capture.answers().screenCapture.applicationName = u"Player"_s;
    startScreen(AudioSourceType::SingleApp, u"org.player"_s);
    EXPECT_EQ(capture.asked().screenCapture.applicationId, u"org.player"_s);
    EXPECT_FALSE(capture.asked().screenCapture.waitForApplication);
    EXPECT_THAT(log.lines(), ElementsAre(u"🔊 Starte App-Audio Capture für: org.player"_s,
                                         u"✓ Filter für App: Player"_s,
                                         u"✅ ScreenCaptureKit Audio gestartet"_s));
}

TEST_F(CaptureSourcesTest, anApplicationThatIsNotCapturableYieldsSystemAudio) {
    capture.answers().screenCapture.applicationFound = false;
    startScreen(AudioSourceType::SingleApp, u"org.player"_s);
    EXPECT_TRUE(sources->isRunning());
    EXPECT_THAT(
        log.lines(),
        ElementsAre(u"🔊 Starte App-Audio Capture für: org.player"_s,
                    u"org.player nicht in ScreenCaptureKit gefunden, verwende System-Audio"_s,
                    u"✓ Filter für System-Audio (alle Apps)"_s,
                    u"✅ ScreenCaptureKit Audio gestartet"_s));
}

TEST_F(CaptureSourcesTest, withoutADisplayThereIsNoCaptureAndNoFallback) {
    capture.answers().screenCapture.displayFound = false;
    capture.answers().screenCapture.error = u"none"_s;
    startScreen(AudioSourceType::SystemAudio);
    EXPECT_FALSE(sources->isActive());
    EXPECT_EQ(log.lines().last(), u"❌ Kein Display gefunden"_s);
    EXPECT_EQ(capture.asked().preparations, 0);
}

TEST_F(CaptureSourcesTest, aScreenCaptureThatFailsFallsBackToTheMicrophone) {
    capture.answers().screenCapture.error = u"refused"_s;
    startScreen(AudioSourceType::SystemAudio);
    ASSERT_TRUE(waitUntil([&] { return sources->isRunning(); }));
    EXPECT_TRUE(capture.isMicrophoneRunning());
    EXPECT_EQ(capture.asked().deviceId, u"mic"_s);
    EXPECT_THAT(log.lines().mid(2, 3),
                ElementsAre(u"❌ ScreenCaptureKit Fehler: refused"_s,
                            u"   Fallback zu Mikrofon..."_s, u"🎤 Starte Mikrofon-Capture..."_s));
}

TEST_F(CaptureSourcesTest, withoutAnyContentNoFilterIsClaimed) {
    capture.answers().screenCapture.error = u"unreachable"_s;
    capture.answers().screenCapture.contentRead = false;
    startScreen(AudioSourceType::SingleApp, u"org.player"_s);
    EXPECT_THAT(log.lines().mid(1, 2), ElementsAre(u"❌ ScreenCaptureKit Fehler: unreachable"_s,
                                                   u"   Fallback zu Mikrofon..."_s));
}

// Stop.

TEST_F(CaptureSourcesTest, stoppingAMicrophoneIsSilentAndFinal) {
    startMicrophone();
    log.clear();
    sources->stop();
    EXPECT_FALSE(sources->isActive());
    EXPECT_FALSE(deliver({0.5F}));
    letAnswersArrive();
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(CaptureSourcesTest, stoppingAMicrophoneBringsWhatItHadGathered) {
    capture.answers().gatheredRest = {0.25F, 0.5F};
    startMicrophone();
    deliver({0.125F});
    sources->stop();
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.125F, 0.25F, 0.5F));
}

TEST_F(CaptureSourcesTest, stoppingAMicrophoneBringsWhatTheConverterHeldBack) {
    capture.answers().preparation = microphoneAt(44100);
    startMicrophone();
    deliver(std::vector<float>(44100, 0.25F));
    EXPECT_LT(chunker.bufferedSamples(), 47990U);
    sources->stop();
    EXPECT_NEAR(static_cast<double>(chunker.bufferedSamples()), 48000, 2);
}

TEST_F(CaptureSourcesTest, aMicrophoneThatEndsByItselfLosesNothingOfThat) {
    capture.answers().gatheredRest = {0.5F};
    startMicrophone();
    deliver({0.25F});
    EXPECT_TRUE(capture.endMicrophone(u"unplugged"_s));
    letAnswersArrive();
    EXPECT_EQ(chunker.takeAll().front(), 0.25F);
}

TEST_F(CaptureSourcesTest, stoppingAScreenCaptureSaysSoOnceItHasStopped) {
    startScreen(AudioSourceType::SystemAudio);
    log.clear();
    sources->stop();
    EXPECT_FALSE(deliverBlock({0.5F}));
    EXPECT_THAT(log.lines(), IsEmpty());
    letAnswersArrive();
    EXPECT_THAT(log.lines(), ElementsAre(u"✓ ScreenCaptureKit gestoppt"_s));
}

TEST_F(CaptureSourcesTest, aScreenCaptureThatWillNotStopIsSaid) {
    capture.answers().screenCaptureStopError = u"stuck"_s;
    startScreen(AudioSourceType::SystemAudio);
    sources->stop();
    letAnswersArrive();
    EXPECT_EQ(log.lines().last(), u"⚠️ SCStream stop error: stuck"_s);
}

TEST_F(CaptureSourcesTest, aStopDuringTheStartLeavesNothingRunning) {
    for (const auto source : {AudioSourceType::Microphone, AudioSourceType::SystemAudio}) {
        EXPECT_TRUE(sources->start(source, {}, {}));
        sources->stop();
        letAnswersArrive();
        EXPECT_FALSE(sources->isActive());
        EXPECT_FALSE(capture.isMicrophoneRunning());
        EXPECT_FALSE(capture.isScreenCaptureRunning());
    }
}

TEST_F(CaptureSourcesTest, aSecondStartReplacesTheFirst) {
    startScreen(AudioSourceType::SystemAudio);
    startMicrophone();
    EXPECT_FALSE(capture.isScreenCaptureRunning());
    EXPECT_TRUE(capture.isMicrophoneRunning());
}

TEST_F(CaptureSourcesTest, destroyingItDuringAStartCallsNothingAfterwards) {
    EXPECT_TRUE(sources->start(AudioSourceType::Microphone, {}, {}));
    log.clear();
    sources.reset();
    letAnswersArrive();
    EXPECT_THAT(log.lines(), IsEmpty());
}

// Coming back.

TEST_F(CaptureSourcesTest, aMicrophoneThatEndsByItselfIsTakenUpAgain) {
    startMicrophone(u"usb"_s);
    log.clear();
    ASSERT_TRUE(capture.endMicrophone(u"unplugged"_s));
    ASSERT_TRUE(waitUntil([&] { return !sources->isRunning(); }));
    EXPECT_TRUE(sources->isActive());
    ASSERT_TRUE(waitUntil([&] { return sources->isRunning(); }));
    EXPECT_EQ(log.lines().first(), u"❌ Mikrofon-Engine gestoppt: unplugged"_s);
    EXPECT_EQ(log.lines().last(), u"✅ Mikrofon-Engine gestartet (48000Hz, 2 Kanäle)"_s);
    EXPECT_EQ(capture.asked().deviceId, u"usb"_s);
    EXPECT_TRUE(deliver({0.5F}));
}

TEST_F(CaptureSourcesTest, aScreenCaptureThatEndsByItselfIsTakenUpAgain) {
    startScreen(AudioSourceType::SingleApp, u"org.player"_s);
    log.clear();
    ASSERT_TRUE(capture.endScreenCapture(u"lost"_s));
    ASSERT_TRUE(waitUntil([&] { return log.lines().size() == 4; }));
    EXPECT_TRUE(sources->isRunning());
    EXPECT_EQ(log.lines().first(), u"❌ SCStream gestoppt: lost"_s);
    EXPECT_EQ(log.lines().last(), u"✅ ScreenCaptureKit Audio gestartet"_s);
    EXPECT_TRUE(capture.asked().screenCapture.waitForApplication)
        << "nobody else is to be heard meanwhile";
}

TEST_F(CaptureSourcesTest, aDeviceThatIsGoneIsWaitedForAndSaidOnlyOnce) {
    startMicrophone(u"usb"_s);
    capture.answers().preparation.deviceFound = false;
    ASSERT_TRUE(capture.endMicrophone(u"unplugged"_s));
    ASSERT_TRUE(waitUntil([&] { return capture.asked().preparations >= 4; }));
    EXPECT_FALSE(capture.isMicrophoneRunning());
    EXPECT_EQ(log.count(u"⏳ Mikrofon 'usb' ist weg, warte auf Rückkehr"_s), 1);
    capture.answers().preparation.deviceFound = true;
    EXPECT_TRUE(waitUntil([&] { return sources->isRunning(); }));
}

TEST_F(CaptureSourcesTest, aScreenCaptureThatCannotReturnKeepsTryingAndDoesNotTurnToTheMicrophone) {
    startScreen(AudioSourceType::SystemAudio);
    capture.answers().screenCapture.error = u"refused"_s;
    ASSERT_TRUE(capture.endScreenCapture(u"lost"_s));
    ASSERT_TRUE(waitUntil([&] { return capture.asked().screenCaptureStarts >= 4; }));
    EXPECT_EQ(capture.asked().preparations, 0);
    EXPECT_EQ(log.count(u"❌ ScreenCaptureKit Fehler: refused"_s), 1);
}

TEST_F(CaptureSourcesTest, aServiceThatIsBackEndsThePauseAtOnce) {
    makeSources({.firstRetry = 1h, .longestRetry = 1h});
    startMicrophone();
    ASSERT_TRUE(capture.endMicrophone(u"lost"_s));
    ASSERT_TRUE(waitUntil([&] { return !sources->isRunning(); }));
    capture.tellAvailability(false);
    letAnswersArrive();
    EXPECT_EQ(capture.asked().preparations, 1);
    capture.tellAvailability(true);
    EXPECT_TRUE(waitUntil([&] { return sources->isRunning(); }));
}

TEST_F(CaptureSourcesTest, aDeviceThatComesEndsThePauseAtOnce) {
    makeSources({.firstRetry = 1h, .longestRetry = 1h});
    startMicrophone(u"usb"_s);
    ASSERT_TRUE(capture.endMicrophone(u"unplugged"_s));
    ASSERT_TRUE(waitUntil([&] { return !sources->isRunning(); }));
    capture.tellListsChanged();
    EXPECT_TRUE(waitUntil([&] { return sources->isRunning(); }));
}

TEST_F(CaptureSourcesTest, aStopEndsTheTrying) {
    startMicrophone();
    capture.answers().preparation.failure = MicrophoneFailure::NoEngine;
    ASSERT_TRUE(capture.endMicrophone(u"lost"_s));
    ASSERT_TRUE(waitUntil([&] { return capture.asked().preparations >= 3; }));
    sources->stop();
    letAnswersArrive();
    const int before = capture.asked().preparations;
    capture.tellAvailability(true);
    capture.tellListsChanged();
    letAnswersArrive();
    EXPECT_EQ(capture.asked().preparations, before);
}

// Lists.

TEST_F(CaptureSourcesTest, listsAreFilledAtConstructionWithTheirLines) {
    auto& answers = capture.answers();
    answers.inputDevices = {{u"a"_s, u"Studio"_s}, {u"b"_s, u"BlackHole 2ch"_s}};
    answers.capturableApps = QList<RunningApp>{{u"org.player"_s, u"Player"_s}};
    answers.runningApps = {{u"org.player"_s, u"Player"_s}, {u"web"_s, u"Web"_s}};
    sources.reset();
    log.clear();
    sources = std::make_unique<CaptureSources>(capture, ingest);
    EXPECT_THAT(sources->inputDevices(), IsEmpty());
    int changes = 0;
    QObject::connect(sources.get(), &CaptureSources::listsChanged, sources.get(),
                     [&] { ++changes; });
    letAnswersArrive();
    EXPECT_GT(changes, 0);
    EXPECT_EQ(sources->inputDevices(), answers.inputDevices);
    EXPECT_EQ(sources->capturableApps(), answers.capturableApps);
    EXPECT_EQ(sources->runningApps(), answers.runningApps);
    EXPECT_TRUE(sources->isBlackHoleInstalled());
    EXPECT_TRUE(sources->hasScreenCapturePermission());
    EXPECT_THAT(log.lines(), ElementsAre(u"🎤 Gefundene Mikrofone: 2"_s, u"✓ BlackHole gefunden"_s,
                                         u"📱 ScreenCaptureKit Apps (1): Player"_s,
                                         u"📱 Gefundene Apps (2): Player, Web"_s));
}

TEST_F(CaptureSourcesTest, aRefusedScreenCaptureIsNoPermission) {
    EXPECT_TRUE(sources->hasScreenCapturePermission());
    capture.answers().capturableApps = std::nullopt;
    sources->checkScreenCapturePermission();
    letAnswersArrive();
    EXPECT_FALSE(sources->hasScreenCapturePermission());
}

TEST_F(CaptureSourcesTest, withoutBlackHoleThereIsNone) {
    capture.answers().inputDevices = {{u"b"_s, u"BlackHole"_s}};
    sources->scanDevices();
    letAnswersArrive();
    EXPECT_TRUE(sources->isBlackHoleInstalled());
    capture.answers().inputDevices = {{u"a"_s, u"Studio"_s}};
    sources->scanDevices();
    letAnswersArrive();
    EXPECT_FALSE(sources->isBlackHoleInstalled());
}

TEST_F(CaptureSourcesTest, theListsFollowThePlatformAndSayOnlyWhatIsNew) {
    capture.answers().inputDevices = {{u"a"_s, u"Studio"_s}};
    capture.tellListsChanged();
    ASSERT_TRUE(waitUntil([&] { return sources->inputDevices().size() == 1; }));
    letAnswersArrive();
    EXPECT_THAT(log.lines(), ElementsAre(u"🎤 Gefundene Mikrofone: 1"_s));
    log.clear();
    const int before = capture.asked().listings;
    capture.tellListsChanged();
    ASSERT_TRUE(waitUntil([&] { return capture.asked().listings > before; }));
    letAnswersArrive();
    EXPECT_THAT(log.lines(), IsEmpty());
}

} // namespace
