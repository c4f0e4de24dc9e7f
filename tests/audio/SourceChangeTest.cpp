// Another source, chosen while a run lasts.

#include "AudioManagerFixture.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using test::waitUntil;

class SourceChangeTest : public test::AudioManagerFixture {};

TEST_F(SourceChangeTest, anotherSourceInARunLosesNothingAndKeepsTheLink) {
    startRun();
    deliver(2000, 0.25F);
    capture.answers().preparation.initialFormat = {44100, 1};
    manager->changeSource(AudioSourceType::Microphone, u"other"_s, {});
    ASSERT_TRUE(waitUntil([&] { return capture.asked().preparations == 2; }));
    EXPECT_EQ(capture.asked().deviceId, u"other"_s);
    ASSERT_TRUE(waitUntil([&] { return capture.isMicrophoneRunning(); }));
    deliver(3000, 0.5F);
    stopAndWait();
    EXPECT_EQ(backend.count(u"open"_s), 1);
    ASSERT_EQ(receivedAudio().size(), 1);
    EXPECT_EQ(receivedAudio().first().size(), 5000 * 2);
}

TEST_F(SourceChangeTest, aSourceChosenBeforeTheLinkIsReadyIsTheOneThatIsOpened) {
    timings.linkReady = 100ms;
    makeManager();
    manager->startCapture(AudioSourceType::Microphone, u"first"_s, {});
    manager->changeSource(AudioSourceType::Microphone, u"second"_s, {});
    ASSERT_TRUE(waitUntil([&] { return capture.asked().preparations > 0; }));
    EXPECT_EQ(capture.asked().preparations, 1);
    EXPECT_EQ(capture.asked().deviceId, u"second"_s);
}

TEST_F(SourceChangeTest, noSourceIsOpenedWithoutARun) {
    makeManager();
    manager->changeSource(AudioSourceType::Microphone, {}, {});
    EXPECT_EQ(capture.asked().preparations, 0);
    startRun();
    manager->stopCapture();
    manager->changeSource(AudioSourceType::Microphone, u"other"_s, {});
    EXPECT_EQ(capture.asked().preparations, 1);
}

TEST_F(SourceChangeTest, aNewSourceThatCannotBeOpenedIsSaid) {
    startRun();
    capture.answers().preparation.failure = MicrophoneFailure::NoInput;
    manager->changeSource(AudioSourceType::Microphone, u"other"_s, {});
    EXPECT_TRUE(
        waitUntil([&] { return manager->progress().trouble == RunTrouble::CaptureFailed; }));
    EXPECT_EQ(manager->progress().captureProblem, CaptureProblem::NoDevice);
}

} // namespace
} // namespace orv
