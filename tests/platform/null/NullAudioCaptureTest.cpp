#include "NullAudioCapture.h"
#include "WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace {

using namespace Qt::StringLiterals;
using orv::MicrophoneFailure;
using orv::MicrophonePreparation;
using orv::MicrophoneStream;
using orv::NullAudioCapture;
using orv::ScreenCaptureStart;
using orv::ScreenCaptureStream;
using orv::test::drainEvents;
using orv::test::waitUntil;
using testing::ElementsAre;

/// Keeps what a microphone tells.
struct MicrophoneUser : MicrophoneStream::Listener {
    void microphonePrepared(const MicrophonePreparation& found) override { prepared = found; }

    void microphoneStarted(const QString& error) override { started = error; }

    void microphoneBuffer(const orv::MicrophoneBuffer& buffer) override {
        heard.push_back(*buffer.firstChannel);
    }

    void microphoneStopped(const QString& error) override { stops.append(error); }

    std::optional<MicrophonePreparation> prepared;
    std::optional<QString> started;
    std::vector<float> heard; ///< The first sample of each buffer.
    QStringList stops;
};

/// Keeps what a screen capture tells.
struct ScreenUser : ScreenCaptureStream::Listener {
    void screenCaptureStarted(const ScreenCaptureStart& outcome) override { started = outcome; }

    void screenCaptureBlock(std::span<const std::byte> /*block*/) override { ++blocks; }

    void screenCaptureStopped(const QString& error) override { stops.append(error); }

    std::optional<ScreenCaptureStart> started;
    int blocks = 0;
    QStringList stops;
};

/// Keeps what the services tell.
struct ServicesUser : orv::AudioCapture::Listener {
    void captureListsChanged() override { ++listChanges; }

    void captureAvailabilityChanged(bool is) override { available = is; }

    int listChanges = 0;
    std::optional<bool> available;
};

TEST(NullAudioCapture, isAMachineWithoutSoundUnlessToldOtherwise) {
    NullAudioCapture capture;
    bool answered = false;
    capture.listInputDevices([&](const auto& devices) {
        EXPECT_TRUE(devices.isEmpty());
        answered = true;
    });
    EXPECT_FALSE(answered) << "answers come later";
    ASSERT_TRUE(waitUntil([&] { return answered; }));

    MicrophoneUser microphoneUser;
    const auto microphone = capture.createMicrophoneStream(microphoneUser);
    microphone->prepare({});
    ScreenUser screenUser;
    const auto screen = capture.createScreenCaptureStream(screenUser);
    screen->start({});
    ASSERT_TRUE(waitUntil([&] { return microphoneUser.prepared && screenUser.started; }));
    EXPECT_FALSE(screenUser.started->error.isEmpty());
    EXPECT_EQ(microphoneUser.prepared->failure, MicrophoneFailure::NoInput);
    EXPECT_FALSE(capture.isScreenCaptureRunning());
    EXPECT_FALSE(capture.deliverBlock({}));
}

TEST(NullAudioCapture, deliversWhatIsPutInUntilTheStreamIsDestroyed) {
    NullAudioCapture capture;
    MicrophoneUser user;
    auto stream = capture.createMicrophoneStream(user);
    stream->start(4096);
    EXPECT_FALSE(capture.isMicrophoneRunning());
    ASSERT_TRUE(waitUntil([&] { return capture.isMicrophoneRunning(); }));
    EXPECT_EQ(capture.asked().framesPerBuffer, 4096U);
    const float sample = 0.5F;
    EXPECT_TRUE(capture.deliver({.firstChannel = &sample, .frames = 1, .stride = 1}));
    stream.reset();
    EXPECT_FALSE(capture.deliver({.firstChannel = &sample, .frames = 1, .stride = 1}));
    EXPECT_THAT(user.heard, ElementsAre(0.5F));
}

TEST(NullAudioCapture, aStreamThatEndsByItselfSaysSoOnce) {
    NullAudioCapture capture;
    capture.answers().screenCapture = {};
    ScreenUser user;
    const auto stream = capture.createScreenCaptureStream(user);
    stream->start({});
    ASSERT_TRUE(waitUntil([&] { return capture.isScreenCaptureRunning(); }));
    EXPECT_TRUE(capture.endScreenCapture(u"gone"_s));
    EXPECT_FALSE(capture.endScreenCapture(u"gone"_s));
    drainEvents();
    EXPECT_EQ(user.stops, QStringList{u"gone"_s});
}

TEST(NullAudioCapture, nothingComesFromADestroyedStream) {
    NullAudioCapture capture;
    MicrophoneUser user;
    auto stream = capture.createMicrophoneStream(user);
    stream->prepare({});
    stream.reset();
    drainEvents();
    EXPECT_FALSE(user.prepared);
}

TEST(NullAudioCapture, aStreamMayBeDestroyedByWhatItTells) {
    struct FleetingUser : MicrophoneUser {
        void microphonePrepared(const MicrophonePreparation& found) override {
            stream.reset();
            MicrophoneUser::microphonePrepared(found);
        }

        std::unique_ptr<MicrophoneStream> stream;
    };

    NullAudioCapture capture;
    capture.answers().preparation.deviceNumber = u"3"_s;
    FleetingUser user;
    user.stream = capture.createMicrophoneStream(user);
    user.stream->prepare({});
    ASSERT_TRUE(waitUntil([&] { return user.prepared.has_value(); }));
    EXPECT_EQ(user.prepared->deviceNumber, u"3"_s) << "what is told stays valid";
}

TEST(NullAudioCapture, tellsOfNewsUntilTheListenerIsTakenAway) {
    NullAudioCapture capture;
    ServicesUser user;
    capture.setListener(&user);
    capture.tellListsChanged();
    capture.tellAvailability(true);
    EXPECT_EQ(user.listChanges, 0) << "news come later";
    ASSERT_TRUE(waitUntil([&] { return user.available.has_value(); }));
    EXPECT_EQ(user.listChanges, 1);
    EXPECT_TRUE(*user.available);
    capture.tellListsChanged();
    capture.tellAvailability(false);
    capture.setListener(nullptr);
    drainEvents();
    EXPECT_EQ(user.listChanges, 1);
    EXPECT_TRUE(*user.available);
}

TEST(NullAudioCapture, aStopIsAnsweredAndEndsTheBlocks) {
    NullAudioCapture capture;
    capture.answers().screenCapture = {};
    capture.answers().screenCaptureStopError = u"stuck"_s;
    ScreenUser user;
    const auto stream = capture.createScreenCaptureStream(user);
    stream->start({});
    ASSERT_TRUE(waitUntil([&] { return capture.isScreenCaptureRunning(); }));
    QString answer;
    stream->stop([&](const QString& error) { answer = error; });
    EXPECT_FALSE(capture.deliverBlock({}));
    ASSERT_TRUE(waitUntil([&] { return !answer.isEmpty(); }));
    EXPECT_EQ(answer, u"stuck"_s);
}

TEST(NullAudioCapture, aStopDuringTheStartIsFinal) {
    NullAudioCapture capture;
    capture.answers().screenCapture = {};
    ScreenUser user;
    const auto stream = capture.createScreenCaptureStream(user);
    stream->start({});
    bool stopped = false;
    stream->stop([&](const QString&) { stopped = true; });
    ASSERT_TRUE(waitUntil([&] { return stopped; }));
    EXPECT_FALSE(user.started);
    EXPECT_FALSE(capture.isScreenCaptureRunning());
}

} // namespace
