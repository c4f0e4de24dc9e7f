// The capture sources on a real sound server of the test's own.

#include "AudioIngest.h"
#include "CaptureSources.h"
#include "Chunker.h"
#include "LogCapture.h"
#include "PrivatePulse.h"
#include "PulseAudioCapture.h"
#include "SerialQueue.h"
#include "Tones.h"
#include "WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using orv::AudioSourceType;
using orv::CaptureSources;
using orv::test::PulsePlayer;
using orv::test::toneAmplitude;
using orv::test::toneSamples;
using orv::test::waitUntil;

class CaptureSourcesPulseTest : public testing::Test {
  protected:
    CaptureSourcesPulseTest() {
        orv::PulseOptions options;
        options.server = pulse.server();
        options.firstReconnect = 20ms;
        options.longestReconnect = 100ms;
        options.retake = 20ms;
        capture = std::make_unique<orv::PulseAudioCapture>(
            disk, orv::PulseConnection::create(options), orv::RunningAppPlaces{});
        ingest.setStreamTap([this](std::span<const float> samples) { heard.add(samples); });
        sources = std::make_unique<CaptureSources>(
            *capture, ingest, orv::CaptureTimings{.firstRetry = 50ms, .longestRetry = 200ms});
    }

    void start(AudioSourceType source, const QString& device, const QString& app = {}) {
        ASSERT_TRUE(sources->start(source, device, app));
        ASSERT_TRUE(waitUntil([&] { return sources->isRunning(); }));
    }

    /// The newest 200 ms carry the one tone and not the other.
    bool hears(int present, int absent) {
        return waitUntil([&] {
            const std::vector<float> newest = heard.newest(9600);
            return toneAmplitude(newest, present, 48000) > 0.4 &&
                   toneAmplitude(newest, absent, 48000) < 0.01;
        });
    }

    orv::test::LogCapture log;
    orv::test::PrivatePulse pulse{
        {u"module-null-sink sink_name=cable rate=48000"_s,
         u"module-null-sink sink_name=speakers rate=48000"_s,
         u"module-remap-source source_name=mic master=cable.monitor"_s,
         u"module-remap-source source_name=mic44 master=cable.monitor rate=44100"_s}};
    orv::Chunker chunker{[](orv::Chunk&&) {}, orv::Chunker::TimePoint{1000h}};
    orv::AudioIngest ingest{chunker};
    orv::test::SampleCollector heard;
    orv::SerialQueue disk{u"test.disk"_s};
    std::unique_ptr<orv::PulseAudioCapture> capture;
    std::unique_ptr<CaptureSources> sources;
};

TEST_F(CaptureSourcesPulseTest, aMicrophoneThatKeeps44100IsHeardAtItsPitch) {
    start(AudioSourceType::Microphone, u"mic44"_s);
    EXPECT_TRUE(log.containsStart(u"🔄 Persistenter Sample-Rate Converter erstellt: 44100Hz"_s));
    const PulsePlayer player(pulse, toneSamples(1000), u"one"_s, u"cable"_s);
    EXPECT_TRUE(hears(1000, 1088));
}

TEST_F(CaptureSourcesPulseTest, aServerThatIsKilledAndRestartedIsTakenUpAgain) {
    start(AudioSourceType::Microphone, u"mic"_s);
    {
        const PulsePlayer player(pulse, toneSamples(1000), u"one"_s, u"cable"_s);
        ASSERT_TRUE(hears(1000, 1700));
    }
    pulse.kill();
    ASSERT_TRUE(waitUntil([&] { return !sources->isRunning(); }));
    EXPECT_TRUE(log.containsStart(u"❌ Mikrofon-Engine gestoppt: "_s));
    EXPECT_TRUE(sources->isActive());
    pulse.start();
    ASSERT_TRUE(waitUntil([&] { return sources->isRunning(); }));
    const PulsePlayer player(pulse, toneSamples(1700), u"one"_s, u"cable"_s);
    EXPECT_TRUE(hears(1700, 1000));
}

TEST_F(CaptureSourcesPulseTest, anApplicationIsTakenUpAgainAfterARestartAndNobodyElse) {
    {
        const PulsePlayer one(pulse, toneSamples(700), u"org.one"_s, u"speakers"_s);
        ASSERT_TRUE(waitUntil([&] { return sources->capturableApps().size() == 1; }));
        start(AudioSourceType::SingleApp, {}, u"org.one"_s);
        EXPECT_TRUE(log.contains(u"✓ Filter für App: org.one"_s));
    }
    pulse.kill();
    ASSERT_TRUE(waitUntil([&] { return log.containsStart(u"❌ SCStream gestoppt: "_s); }));
    pulse.start();
    ASSERT_TRUE(waitUntil([&] { return sources->isRunning(); }));
    const PulsePlayer other(pulse, toneSamples(1900), u"org.two"_s, u"speakers"_s);
    const PulsePlayer one(pulse, toneSamples(1300), u"org.one"_s, u"speakers"_s);
    // Both channels of a block follow each other, so a tone sounds in pieces of 20 ms; 1300 Hz is a
    // whole number of waves in that time.
    EXPECT_TRUE(hears(1300, 1900));
}

TEST_F(CaptureSourcesPulseTest, theListsFollowTheServer) {
    ASSERT_TRUE(waitUntil([&] { return sources->inputDevices().size() == 2; }));
    ASSERT_TRUE(waitUntil([&] { return sources->hasScreenCapturePermission(); }));
    const QString module = pulse.load(u"module-null-source source_name=blackhole "
                                      "description=BlackHole"_s);
    EXPECT_TRUE(waitUntil([&] { return sources->isBlackHoleInstalled(); }));
    pulse.unload(module);
    EXPECT_TRUE(waitUntil([&] { return !sources->isBlackHoleInstalled(); }));
    pulse.kill();
    EXPECT_TRUE(waitUntil([&] { return !sources->hasScreenCapturePermission(); }));
}

TEST_F(CaptureSourcesPulseTest, startingAndStoppingHundredTimesLeavesNothingBehind) {
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(sources->start(
            i % 2 ? AudioSourceType::Microphone : AudioSourceType::SystemAudio, u"mic"_s, {}));
        if (i % 3 == 0) {
            ASSERT_TRUE(waitUntil([&] { return sources->isRunning(); }));
        } else if (i % 3 == 1) {
            orv::test::drainEvents();
        }
        sources->stop();
    }
    EXPECT_TRUE(waitUntil([&] {
        return pulse.pactl({u"list"_s, u"short"_s, u"source-outputs"_s}).split(u'\n').size() == 2;
    })) << "only the two remapped devices record";
}

} // namespace
