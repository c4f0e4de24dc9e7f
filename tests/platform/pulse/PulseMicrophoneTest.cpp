#include "PulseCaptureFixture.h"
#include "ServicePeer.h"

#include <algorithm>
#include <memory>
#include <random>

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using orv::AudioDevice;
using orv::MicrophoneFailure;
using orv::MicrophonePreparation;
using orv::PulseAudioCapture;
using orv::PulseConnection;
using orv::RateSwitch;
using orv::RunningAppPlaces;
using orv::test::PulseCaptureFixture;
using orv::test::PulsePlayer;
using orv::test::ServicePeer;
using orv::test::toneSamples;
using orv::test::waitUntil;
using testing::SizeIs;

using PulseMicrophoneTest = PulseCaptureFixture;

TEST_F(PulseMicrophoneTest, listsDevicesByIdentifierAndDescriptionWithoutMonitors) {
    const QList<AudioDevice> devices = inputDevices();
    ASSERT_THAT(devices, SizeIs(2));
    EXPECT_EQ(devices[0], (AudioDevice{u"mic"_s, u"Studio"_s}));
    EXPECT_EQ(devices[1].id, u"mic44"_s);
}

TEST_F(PulseMicrophoneTest, at48kHzNothingIsSwitchedAndTheToneHasItsPitch) {
    const auto stream = createMicrophone();
    const MicrophonePreparation found = prepare(*stream, u"mic"_s);
    EXPECT_EQ(found.failure, MicrophoneFailure::None);
    EXPECT_TRUE(found.deviceFound);
    EXPECT_FALSE(found.deviceNumber.isEmpty());
    EXPECT_EQ(found.rateSwitch, RateSwitch::AlreadyAt48kHz);
    EXPECT_EQ(found.format.sampleRate, 48000);
    EXPECT_EQ(found.format.channels, 2);
    ASSERT_EQ(start(*stream), QString());
    const PulsePlayer player(pulse, toneSamples(1000), u"player"_s, u"cable"_s);
    EXPECT_TRUE(hears({1000}, {500, 1088, 2000}));
}

TEST_F(PulseMicrophoneTest, samplesArriveBitForBit) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> value(-30000, 30000);
    std::vector<qint16> played(24000);
    std::generate(played.begin(), played.end(), [&] { return static_cast<qint16>(value(random)); });
    std::vector<float> expected;
    expected.reserve(played.size());
    for (const qint16 sample : played) {
        expected.push_back(float(sample) / 32768.0F);
    }
    const auto stream = createMicrophone();
    prepare(*stream, u"mic"_s);
    ASSERT_EQ(start(*stream), QString());
    // No gap while the player is late, as it may be for long.
    const PulsePlayer player(pulse, played, u"player"_s, u"cable"_s, 2s);
    EXPECT_TRUE(waitUntil([&] {
        const std::vector<float> newest = heard.newest(3 * expected.size());
        return std::search(newest.begin(), newest.end(), expected.begin(), expected.end()) !=
               newest.end();
    })) << "half a second of noise, unchanged";
}

TEST_F(PulseMicrophoneTest, aDeviceThatCanIsSwitchedTo48kHz) {
    const auto stream = createMicrophone();
    const MicrophonePreparation found = prepare(*stream, u"slow.monitor"_s);
    EXPECT_EQ(found.rateSwitch, RateSwitch::Switched);
    EXPECT_EQ(found.rateBefore, 44100);
    EXPECT_EQ(found.initialFormat.sampleRate, 44100);
    EXPECT_EQ(found.format.sampleRate, 48000);
    ASSERT_EQ(start(*stream), QString());
    EXPECT_TRUE(hearsMore(1));
    EXPECT_TRUE(pulse.pactl({u"list"_s, u"short"_s, u"sources"_s})
                    .contains(u"slow.monitor\tmodule-null-sink.c\ts16le 2ch 48000Hz"_s));
}

TEST_F(PulseMicrophoneTest, aDeviceThatCannotKeepsItsRateAndIsDeliveredAtIt) {
    const auto stream = createMicrophone();
    const MicrophonePreparation found = prepare(*stream, u"mic44"_s);
    EXPECT_EQ(found.rateSwitch, RateSwitch::NotSupported);
    EXPECT_EQ(found.format.sampleRate, 44100);
    ASSERT_EQ(start(*stream), QString());
    const PulsePlayer player(pulse, toneSamples(1000), u"player"_s, u"cable"_s);
    EXPECT_TRUE(hears({1000}, {919, 1088}, 44100));
}

TEST_F(PulseMicrophoneTest, anUnknownDeviceGivesWayToTheDefaultWhoseRateIsLeftAlone) {
    pulse.pactl({u"set-default-source"_s, u"mic44"_s});
    const auto stream = createMicrophone();
    const MicrophonePreparation found = prepare(*stream, u"no-such-device"_s);
    EXPECT_EQ(found.failure, MicrophoneFailure::None);
    EXPECT_FALSE(found.deviceFound);
    EXPECT_EQ(found.rateSwitch, RateSwitch::NotTried);
    EXPECT_EQ(found.format.sampleRate, 44100);
    EXPECT_EQ(start(*stream), QString());
    EXPECT_TRUE(hearsMore(1));
}

TEST_F(PulseMicrophoneTest, noIdentifierMeansTheDefaultDevice) {
    const auto stream = createMicrophone();
    const MicrophonePreparation found = prepare(*stream, {});
    EXPECT_TRUE(found.deviceFound);
    EXPECT_EQ(found.rateSwitch, RateSwitch::NotTried);
    EXPECT_EQ(found.format.sampleRate, 48000);
    EXPECT_EQ(start(*stream), QString());
}

TEST_F(PulseMicrophoneTest, aDeviceThatIsUnpluggedEndsTheCaptureOnce) {
    const QString module =
        pulse.load(u"module-remap-source source_name=usb master=speakers.monitor"_s);
    const auto stream = createMicrophone();
    ASSERT_TRUE(prepare(*stream, u"usb"_s).deviceFound);
    ASSERT_EQ(start(*stream), QString());
    ASSERT_TRUE(hearsMore(1));
    pulse.unload(module);
    ASSERT_TRUE(waitUntil([&] { return !stops.isEmpty(); }));
    pulse.kill();
    capture->setListener(this);
    ASSERT_TRUE(waitUntil([&] { return !availability.isEmpty() && !availability.last(); }));
    EXPECT_THAT(stops, SizeIs(1));
}

TEST_F(PulseMicrophoneTest, aDeviceThatVanishesWhileItsRateIsReadBackIsAnsweredOnce) {
    ServicePeer gate(u"pulse_gate.py"_s, {pulse.folder() + u"/native"_s});
    options.server = "tcp:127.0.0.1:" + QByteArray::number(gate.port());
    capture = std::make_unique<PulseAudioCapture>(disk, PulseConnection::create(options),
                                                  RunningAppPlaces{});
    const QString module =
        pulse.load(u"module-remap-source source_name=usb master=cable.monitor rate=44100"_s);
    const auto stream = createMicrophone();
    stream->prepare(u"usb"_s);
    ASSERT_TRUE(waitUntil([&] { return gate.count(u"holding"_s) == 1; }));
    // Its end is told before any answer to what is held back.
    pulse.unload(module);
    gate.command({{u"release"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return preparation.has_value(); }));
    EXPECT_NE(preparation->selectError, QString());
    EXPECT_EQ(preparation->format.sampleRate, 48000) << "the default device's";
    inputDevices(); // Answered behind everything that was asked before.
    EXPECT_EQ(preparations, 1);
}

TEST_F(PulseMicrophoneTest, whatTheMachinePlaysIsNoMicrophone) {
    pulse.pactl({u"set-default-source"_s, u"speakers.monitor"_s});
    const auto stream = createMicrophone();
    EXPECT_EQ(prepare(*stream, {}).failure, MicrophoneFailure::None);
    ASSERT_EQ(start(*stream), QString());
    const PulsePlayer played(pulse, toneSamples(1000), u"player"_s, u"speakers"_s);
    const PulsePlayer spoken(pulse, toneSamples(2000), u"speaker"_s, u"cable"_s);
    EXPECT_TRUE(hears({2000}, {1000})) << "another microphone is listened to";
}

TEST_F(PulseMicrophoneTest, withoutAnyMicrophoneThereIsNoInput) {
    pulse.unload(u"module-remap-source"_s);
    const auto stream = createMicrophone();
    EXPECT_EQ(prepare(*stream, {}).failure, MicrophoneFailure::NoInput);
}

TEST_F(PulseMicrophoneTest, theOnlyMicrophoneThatIsUnpluggedIsNotReplacedByWhatTheMachinePlays) {
    const auto stream = createMicrophone();
    ASSERT_EQ(prepare(*stream, {}).failure, MicrophoneFailure::None);
    ASSERT_EQ(start(*stream), QString());
    ASSERT_TRUE(hearsMore(1));
    pulse.unload(u"module-remap-source"_s);
    EXPECT_TRUE(waitUntil([&] { return !stops.isEmpty(); }));
    inputDevices();
    EXPECT_THAT(stops, SizeIs(1));
}

TEST_F(PulseMicrophoneTest, aServerThatGoesAwayEndsTheCaptureOnce) {
    const auto stream = createMicrophone();
    prepare(*stream, u"mic"_s);
    ASSERT_EQ(start(*stream), QString());
    pulse.kill();
    ASSERT_TRUE(waitUntil([&] { return !stops.isEmpty(); }));
    capture->setListener(this);
    pulse.start();
    ASSERT_TRUE(waitUntil([&] { return isToldAvailable(); }));
    EXPECT_THAT(stops, SizeIs(1));
}

TEST_F(PulseMicrophoneTest, noBufferComesAfterTheStreamIsDestroyed) {
    auto stream = createMicrophone();
    prepare(*stream, u"mic"_s);
    ASSERT_EQ(start(*stream), QString());
    ASSERT_TRUE(hearsMore(1));
    stream.reset();
    const std::size_t before = heard.size();
    // The server, and with it the loop, has gone round several times when these are answered.
    EXPECT_THAT(inputDevices(), SizeIs(2));
    EXPECT_TRUE(waitUntil([&] {
        return pulse.pactl({u"list"_s, u"short"_s, u"source-outputs"_s}).split(u'\n').size() == 2;
    })) << "only the two remapped devices record";
    EXPECT_EQ(heard.size(), before);
}

TEST_F(PulseMicrophoneTest, aStreamDestroyedWhileItOpensLeavesNothingAtTheServer) {
    auto stream = createMicrophone();
    prepare(*stream, u"mic"_s);
    stream->start(4096);
    stream.reset();
    EXPECT_THAT(inputDevices(), SizeIs(2));
    EXPECT_TRUE(waitUntil([&] {
        return pulse.pactl({u"list"_s, u"short"_s, u"source-outputs"_s}).split(u'\n').size() == 2;
    }));
    EXPECT_FALSE(microphoneStart) << "destroyed before";
}

TEST_F(PulseMicrophoneTest, theUsersDefaultsAndVolumesAreLeftAlone) {
    const QStringList questions = {u"get-default-sink"_s, u"get-default-source"_s};
    const auto state = [&] {
        QStringList answers;
        for (const QString& question : questions) {
            answers.append(pulse.pactl({question}));
        }
        answers.append(pulse.pactl({u"get-source-volume"_s, u"mic"_s}));
        answers.append(pulse.pactl({u"get-sink-volume"_s, u"cable"_s}));
        return answers;
    };
    const QStringList before = state();
    const auto stream = createMicrophone();
    prepare(*stream, u"mic"_s);
    ASSERT_EQ(start(*stream), QString());
    ASSERT_TRUE(hearsMore(1));
    EXPECT_EQ(state(), before);
}

} // namespace
