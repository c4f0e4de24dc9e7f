#include "PulseCaptureFixture.h"

#include <QDeadlineTimer>

#include <chrono>

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using orv::RunningApp;
using orv::ScreenCaptureRequest;
using orv::ScreenCaptureStart;
using orv::test::blockFloats;
using orv::test::channelFloats;
using orv::test::PulseCaptureFixture;
using orv::test::PulsePlayer;
using orv::test::toneAmplitude;
using orv::test::toneSamples;
using orv::test::waitUntil;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

class PulseScreenCaptureTest : public PulseCaptureFixture {
  protected:
    PulseScreenCaptureTest() { pulse.pactl({u"set-default-sink"_s, u"speakers"_s}); }

    std::size_t recordings() {
        return static_cast<std::size_t>(
            pulse.pactl({u"list"_s, u"short"_s, u"source-outputs"_s}).split(u'\n').size() - 2);
    }

    bool isCapturable(const QString& id) {
        return waitUntil([&] {
            const auto apps = capturableApps();
            return apps && apps->contains(RunningApp{id, id});
        });
    }

    static ScreenCaptureRequest app(const QString& id, bool wait = false) {
        return {.applicationId = id, .waitForApplication = wait};
    }
};

TEST_F(PulseScreenCaptureTest, systemAudioIsWhatEveryonePlaysOnTheDefaultSink) {
    const auto stream = createScreenCapture();
    EXPECT_EQ(start(*stream).error, QString());
    const PulsePlayer one(pulse, toneSamples(700), u"one"_s);
    const PulsePlayer two(pulse, toneSamples(1900), u"two"_s);
    const PulsePlayer elsewhere(pulse, toneSamples(3100), u"elsewhere"_s, u"cable"_s);
    EXPECT_TRUE(hears({700, 1900}, {3100}));
}

TEST_F(PulseScreenCaptureTest, blocksArePlanarLeftThenRight) {
    pulse.load(u"module-remap-sink sink_name=left master=speakers channels=1 "
               "channel_map=front-left master_channel_map=front-left remix=no"_s);
    const auto stream = createScreenCapture();
    EXPECT_EQ(start(*stream).error, QString());
    const PulsePlayer player(pulse, toneSamples(1000), u"one"_s, u"left"_s);
    ASSERT_TRUE(hears({1000}, {500, 2000}));
    // A player that is late leaves a gap in a block; one of the next is whole.
    EXPECT_TRUE(waitUntil([&] {
        const std::vector<float> newest = blocks.newest(blockFloats);
        return toneAmplitude(std::span(newest).first(channelFloats), 1000, 48000) > 0.4;
    }));
    const std::vector<float> all = blocks.all();
    for (std::size_t right = channelFloats; right < all.size(); right += blockFloats) {
        ASSERT_THAT(std::span(all).subspan(right, channelFloats), Each(0.0F));
    }
}

TEST_F(PulseScreenCaptureTest, silentBlocksComeAtThePaceOfTheClockWhileTheSinkSleeps) {
    pulse.pactl({u"suspend-sink"_s, u"speakers"_s, u"1"_s});
    const auto stream = createScreenCapture();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(start(*stream).error, QString());
    ASSERT_TRUE(hearsMore(1));
    const auto first = std::chrono::steady_clock::now();
    ASSERT_TRUE(hearsMore(channelFloats * 50));
    EXPECT_LE(std::chrono::steady_clock::now() - first, 5s);
    // Those that were late may come all at once, but none before its time.
    const auto received = heard.size() / channelFloats;
    EXPECT_LE(received * 20ms, std::chrono::steady_clock::now() - begin);
    EXPECT_THAT(blocks.all(), Each(0.0F));
}

TEST_F(PulseScreenCaptureTest, systemAudioFollowsTheDefaultSink) {
    // The server moves plain streams along with the default; those of remapped sinks stay.
    pulse.load(u"module-remap-sink sink_name=to_speakers master=speakers"_s);
    pulse.load(u"module-remap-sink sink_name=to_cable master=cable"_s);
    const auto stream = createScreenCapture();
    EXPECT_EQ(start(*stream).error, QString());
    const PulsePlayer one(pulse, toneSamples(700), u"one"_s, u"to_speakers"_s);
    const PulsePlayer two(pulse, toneSamples(1900), u"two"_s, u"to_cable"_s);
    ASSERT_TRUE(hears({700}, {1900}));
    pulse.pactl({u"set-default-sink"_s, u"cable"_s});
    EXPECT_TRUE(hears({1900}, {700}));
    pulse.pactl({u"set-default-sink"_s, u"speakers"_s});
    EXPECT_TRUE(hears({700}, {1900}));
    EXPECT_THAT(stops, IsEmpty());
}

TEST_F(PulseScreenCaptureTest, aSinkThatDisappearsIsReplacedByTheNextDefault) {
    const QString module = pulse.load(u"module-null-sink sink_name=usb rate=48000"_s);
    pulse.pactl({u"set-default-sink"_s, u"usb"_s});
    const auto stream = createScreenCapture();
    EXPECT_EQ(start(*stream).error, QString());
    {
        const PulsePlayer player(pulse, toneSamples(700), u"one"_s, u"usb"_s);
        ASSERT_TRUE(hears({700}, {}));
    }
    pulse.unload(module);
    const QString next = pulse.pactl({u"get-default-sink"_s});
    const PulsePlayer player(pulse, toneSamples(1900), u"two"_s, next);
    EXPECT_TRUE(hears({1900}, {700}));
    EXPECT_THAT(stops, IsEmpty());
}

TEST_F(PulseScreenCaptureTest, withoutAnyOutputThereIsNothingToCapture) {
    for (const char* sink : {"speakers", "cable", "slow"}) {
        for (const QString& line :
             pulse.pactl({u"list"_s, u"short"_s, u"modules"_s}).split(u'\n')) {
            if (line.contains(u"sink_name="_s + QString::fromLatin1(sink))) {
                pulse.unload(line.section(u'\t', 0, 0));
            }
        }
    }
    const auto stream = createScreenCapture();
    const ScreenCaptureStart outcome = start(*stream);
    EXPECT_FALSE(outcome.displayFound);
    EXPECT_FALSE(outcome.error.isEmpty());
}

TEST_F(PulseScreenCaptureTest, oneApplicationIsHeardAloneWhileAnotherPlays) {
    const PulsePlayer one(pulse, toneSamples(700), u"org.one"_s);
    const PulsePlayer two(pulse, toneSamples(1900), u"org.two"_s);
    ASSERT_TRUE(isCapturable(u"org.one"_s));
    const auto stream = createScreenCapture();
    const ScreenCaptureStart outcome = start(*stream, app(u"org.one"_s));
    EXPECT_TRUE(outcome.applicationFound);
    EXPECT_EQ(outcome.applicationName, u"org.one"_s);
    EXPECT_TRUE(hears({700}, {1900}));
}

TEST_F(PulseScreenCaptureTest, anApplicationIsFoundByItsProgramToo) {
    const PulsePlayer one(pulse, toneSamples(700), u"org.one"_s);
    ASSERT_TRUE(isCapturable(u"org.one"_s));
    const auto stream = createScreenCapture();
    EXPECT_TRUE(start(*stream, app(u"pacat"_s)).applicationFound);
    EXPECT_TRUE(hears({700}, {}));
}

TEST_F(PulseScreenCaptureTest, severalStreamsOfOneApplicationAreMixed) {
    const PulsePlayer one(pulse, toneSamples(700), u"org.one"_s);
    ASSERT_TRUE(isCapturable(u"org.one"_s));
    const auto stream = createScreenCapture();
    EXPECT_TRUE(start(*stream, app(u"org.one"_s)).applicationFound);
    const PulsePlayer other(pulse, toneSamples(1300), u"org.one"_s, u"cable"_s);
    const PulsePlayer two(pulse, toneSamples(1900), u"org.two"_s);
    EXPECT_TRUE(hears({700, 1300}, {1900}));
}

TEST_F(PulseScreenCaptureTest, aStreamThatEndsAndReturnsIsTakenUpAgain) {
    auto one = std::make_unique<PulsePlayer>(pulse, toneSamples(700), u"org.one"_s);
    const PulsePlayer two(pulse, toneSamples(1900), u"org.two"_s);
    ASSERT_TRUE(isCapturable(u"org.one"_s));
    const auto stream = createScreenCapture();
    start(*stream, app(u"org.one"_s));
    ASSERT_TRUE(hears({700}, {1900}));
    one.reset();
    ASSERT_TRUE(hears({}, {700, 1900})) << "silence keeps coming";
    ASSERT_TRUE(hearsMore(4800));
    one = std::make_unique<PulsePlayer>(pulse, toneSamples(700), u"org.one"_s);
    EXPECT_TRUE(hears({700}, {1900}));
    EXPECT_THAT(stops, IsEmpty());
}

TEST_F(PulseScreenCaptureTest, anApplicationThatMovesToAnotherSinkIsFollowed) {
    const PulsePlayer one(pulse, toneSamples(700), u"org.one"_s);
    ASSERT_TRUE(isCapturable(u"org.one"_s));
    const auto stream = createScreenCapture();
    start(*stream, app(u"org.one"_s));
    ASSERT_TRUE(hears({700}, {}));
    const QString input =
        pulse.pactl({u"list"_s, u"short"_s, u"sink-inputs"_s}).section(u'\t', 0, 0);
    pulse.pactl({u"move-sink-input"_s, input, u"cable"_s});
    heard.clear();
    EXPECT_TRUE(hears({700}, {}));
}

TEST_F(PulseScreenCaptureTest, anUnknownApplicationYieldsSystemAudio) {
    const auto stream = createScreenCapture();
    const ScreenCaptureStart outcome = start(*stream, app(u"org.nobody"_s));
    EXPECT_EQ(outcome.error, QString());
    EXPECT_FALSE(outcome.applicationFound);
    const PulsePlayer one(pulse, toneSamples(700), u"org.one"_s);
    EXPECT_TRUE(hears({700}, {}));
}

TEST_F(PulseScreenCaptureTest, anApplicationThatIsWaitedForIsHeardWhenItComes) {
    const PulsePlayer one(pulse, toneSamples(700), u"org.one"_s);
    const auto stream = createScreenCapture();
    EXPECT_TRUE(start(*stream, app(u"org.two"_s, true)).applicationFound);
    ASSERT_TRUE(hears({}, {700}));
    const PulsePlayer two(pulse, toneSamples(1900), u"org.two"_s);
    EXPECT_TRUE(hears({1900}, {700}));
}

TEST_F(PulseScreenCaptureTest, aStopEndsTheBlocksAndTheRecording) {
    const auto stream = createScreenCapture();
    start(*stream);
    ASSERT_TRUE(hearsMore(1));
    std::optional<QString> answer;
    stream->stop([&](const QString& error) { answer = error; });
    const std::size_t before = heard.size();
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(*answer, QString());
    EXPECT_TRUE(waitUntil([&] { return recordings() == 0; }));
    EXPECT_EQ(heard.size(), before);
}

TEST_F(PulseScreenCaptureTest, aStopDuringTheStartIsFinal) {
    const auto stream = createScreenCapture();
    stream->start({});
    // The recording begins at the server; its answer may already wait for this thread, whose events
    // do not run meanwhile.
    const QDeadlineTimer limit(20s);
    while (recordings() == 0 && !limit.hasExpired()) {
    }
    ASSERT_EQ(recordings(), 1U);
    bool stopped = false;
    stream->stop([&](const QString&) { stopped = true; });
    ASSERT_TRUE(waitUntil([&] { return stopped; }));
    EXPECT_FALSE(screenCaptureStart);
    EXPECT_TRUE(waitUntil([&] { return recordings() == 0; }));
}

TEST_F(PulseScreenCaptureTest, aServerThatGoesAwayEndsTheCaptureOnce) {
    const PulsePlayer one(pulse, toneSamples(700), u"org.one"_s);
    ASSERT_TRUE(isCapturable(u"org.one"_s));
    const auto everything = createScreenCapture();
    const auto single = createScreenCapture();
    start(*everything);
    start(*single, app(u"org.one"_s));
    ASSERT_TRUE(hearsMore(1));
    pulse.kill();
    ASSERT_TRUE(waitUntil([&] { return stops.size() == 2; }));
    capture->setListener(this);
    pulse.start();
    ASSERT_TRUE(waitUntil([&] { return isToldAvailable(); }));
    EXPECT_THAT(stops, SizeIs(2));
}

} // namespace
