#include "NullAudioCapture.h"
#include "WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace {

using namespace Qt::StringLiterals;
using orv::MicrophoneFailure;
using orv::MicrophonePreparation;
using orv::NullAudioCapture;
using orv::ScreenCaptureStart;
using orv::test::drainEvents;
using orv::test::waitUntil;
using testing::ElementsAre;

TEST(NullAudioCapture, isAMachineWithoutSoundUnlessToldOtherwise) {
    NullAudioCapture capture;
    bool answered = false;
    capture.listInputDevices([&](const auto& devices) {
        EXPECT_TRUE(devices.isEmpty());
        answered = true;
    });
    EXPECT_FALSE(answered) << "answers come later";
    ASSERT_TRUE(waitUntil([&] { return answered; }));

    MicrophoneFailure failure = MicrophoneFailure::None;
    const auto microphone = capture.createMicrophoneStream();
    microphone->prepare({}, [&](const MicrophonePreparation& found) { failure = found.failure; });
    QString error;
    const auto screen = capture.createScreenCaptureStream();
    screen->start({}, {}, {}, [&](const ScreenCaptureStart& start) { error = start.error; });
    ASSERT_TRUE(waitUntil([&] { return !error.isEmpty(); }));
    EXPECT_EQ(failure, MicrophoneFailure::NoInput);
    EXPECT_FALSE(capture.isScreenCaptureRunning());
    EXPECT_FALSE(capture.deliverBlock({}));
}

TEST(NullAudioCapture, deliversWhatIsPutInUntilTheStreamIsDestroyed) {
    NullAudioCapture capture;
    auto stream = capture.createMicrophoneStream();
    std::vector<float> heard;
    stream->start(
        4096, [&](const orv::MicrophoneBuffer& buffer) { heard.push_back(*buffer.firstChannel); },
        {}, [](const QString&) {});
    EXPECT_FALSE(capture.isMicrophoneRunning());
    ASSERT_TRUE(waitUntil([&] { return capture.isMicrophoneRunning(); }));
    EXPECT_EQ(capture.asked().framesPerBuffer, 4096U);
    const float sample = 0.5F;
    EXPECT_TRUE(capture.deliver({.firstChannel = &sample, .frames = 1, .stride = 1}));
    stream.reset();
    EXPECT_FALSE(capture.deliver({.firstChannel = &sample, .frames = 1, .stride = 1}));
    EXPECT_THAT(heard, ElementsAre(0.5F));
}

TEST(NullAudioCapture, aStreamThatEndsByItselfSaysSoOnce) {
    NullAudioCapture capture;
    capture.answers().screenCapture = {};
    const auto stream = capture.createScreenCaptureStream();
    QStringList errors;
    stream->start(
        {}, {}, [&](const QString& error) { errors.append(error); },
        [](const ScreenCaptureStart&) {});
    ASSERT_TRUE(waitUntil([&] { return capture.isScreenCaptureRunning(); }));
    EXPECT_TRUE(capture.endScreenCapture(u"gone"_s));
    EXPECT_FALSE(capture.endScreenCapture(u"gone"_s));
    drainEvents();
    EXPECT_EQ(errors, QStringList{u"gone"_s});
}

TEST(NullAudioCapture, nothingComesFromADestroyedStream) {
    NullAudioCapture capture;
    auto stream = capture.createMicrophoneStream();
    bool called = false;
    stream->prepare({}, [&](const MicrophonePreparation&) { called = true; });
    stream.reset();
    drainEvents();
    EXPECT_FALSE(called);
}

TEST(NullAudioCapture, aStopIsAnsweredAndEndsTheBlocks) {
    NullAudioCapture capture;
    capture.answers().screenCapture = {};
    capture.answers().screenCaptureStopError = u"stuck"_s;
    const auto stream = capture.createScreenCaptureStream();
    stream->start({}, {}, {}, [](const ScreenCaptureStart&) {});
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
    const auto stream = capture.createScreenCaptureStream();
    bool started = false;
    stream->start({}, {}, {}, [&](const ScreenCaptureStart&) { started = true; });
    bool stopped = false;
    stream->stop([&](const QString&) { stopped = true; });
    ASSERT_TRUE(waitUntil([&] { return stopped; }));
    EXPECT_FALSE(started);
    EXPECT_FALSE(capture.isScreenCaptureRunning());
}

} // namespace
