#include "RecoveryFixture.h"

#include <QFile>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

using RunRecoveryTest = RecoveryFixture;

TEST(RecoveryTimings, areTheProgramsOwn) {
    const RecoveryTimings timings;
    EXPECT_EQ(timings.pauses, (std::vector<std::chrono::milliseconds>{1s, 2s, 5s, 10s, 30s}));
}

TEST_F(RunRecoveryTest, nothingIsInterruptedWhileAllIsWell) {
    startRun();
    EXPECT_FALSE(recovery->isInterrupted());
    recovery->continueRun();
    drainEvents();
    EXPECT_EQ(server.count(u"open"_s), 1);
}

TEST_F(RunRecoveryTest, aLostLinkIsToldOnceAndContinuedByOnePress) {
    startRun();
    breakLink();
    EXPECT_EQ(told, QList{RunTrouble::LinkLost});
    EXPECT_EQ(recovery->interruption().trouble, RunTrouble::LinkLost);
    EXPECT_TRUE(controller.isTranslating());
    recovery->continueRun();
    EXPECT_TRUE(recovery->isContinuing());
    listenTo(2);
    EXPECT_TRUE(waitUntil([this] { return !recovery->isInterrupted(); }));
    EXPECT_FALSE(recovery->isContinuing());
    EXPECT_EQ(told.size(), 1);
}

TEST_F(RunRecoveryTest, soundOfTheGapIsNotSentAfterwards) {
    settings.vadEnabled.set(false);
    startRun();
    breakLink();
    ASSERT_TRUE(play());
    recovery->continueRun();
    ASSERT_TRUE(waitUntil([&] { return server.messages(u"config"_s).size() == 2; }));
    bool stopped = false;
    audio.stopCapture([&stopped] { stopped = true; });
    ASSERT_TRUE(waitUntil([&] { return stopped; }));
    EXPECT_TRUE(server.messages(u"audio"_s).isEmpty());
}

TEST_F(RunRecoveryTest, byItselfNothingIsContinuedUnlessTheUserWantsIt) {
    startRun();
    breakLink();
    EXPECT_FALSE(settings.continueAfterInterruption.get());
    drainEvents();
    EXPECT_FALSE(recovery->isContinuing());
    settings.continueAfterInterruption.set(true);
    listenTo(2);
    EXPECT_TRUE(waitUntil([this] { return !recovery->isInterrupted(); }));
}

TEST_F(RunRecoveryTest, goesOnTryingByItselfAndTellsOfItOnce) {
    settings.continueAfterInterruption.set(true);
    startRun();
    breakLink();
    for (qsizetype open = 2; open < 6; ++open) {
        ASSERT_TRUE(waitUntil([&] { return server.count(u"open"_s) >= open; }));
        server.command({{u"abort"_s, true}});
    }
    EXPECT_EQ(told.size(), 1);
    EXPECT_TRUE(recovery->isInterrupted());
}

TEST_F(RunRecoveryTest, pausesBetweenAttempts) {
    settings.continueAfterInterruption.set(true);
    make({1ms, 1h});
    startRun();
    breakLink();
    ASSERT_TRUE(waitUntil([&] { return server.count(u"open"_s) == 2; }));
    server.command({{u"abort"_s, true}});
    ASSERT_TRUE(waitUntil([this] { return !recovery->isContinuing(); }));
    drainEvents();
    EXPECT_EQ(server.count(u"open"_s), 2) << "the second pause lasts an hour";
    recovery->continueRun();
    EXPECT_TRUE(waitUntil([&] { return server.count(u"open"_s) == 3; })) << "a press does not wait";
}

TEST_F(RunRecoveryTest, aServerThatIsGoneIsStartedFirst) {
    startRun();
    probe.inUse = false;
    breakLink();
    ASSERT_TRUE(waitUntil([this] { return !backend.isRunning(); }));
    probe.inUse = true; // Somebody has started one, which is adopted.
    recovery->continueRun();
    EXPECT_TRUE(backend.isRunning());
    listenTo(2);
    EXPECT_TRUE(waitUntil([this] { return !recovery->isInterrupted(); }));
}

TEST_F(RunRecoveryTest, aServerThatIsStartedForItIsWaitedFor) {
    for (const QString& name : {u"python3"_s, u"server.py"_s}) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nexec sleep 1000\n");
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    startRun();
    probe.inUse = false;
    breakLink();
    ASSERT_TRUE(waitUntil([this] { return !backend.isRunning(); }));
    recovery->continueRun();
    const auto before = audio.progress().soundArrived;
    ASSERT_TRUE(play());
    ASSERT_TRUE(waitUntil([&] { return audio.progress().soundArrived != before; }));
    EXPECT_TRUE(recovery->isContinuing());
    EXPECT_EQ(server.count(u"open"_s), 1);
    probe.inUse = true;
    listenTo(2);
    EXPECT_TRUE(waitUntil([this] { return !recovery->isInterrupted(); }));
}

TEST_F(RunRecoveryTest, aServerThatCannotBeStartedLeavesTheWayOutOpen) {
    startRun();
    probe.inUse = false;
    breakLink();
    ASSERT_TRUE(waitUntil([this] { return !backend.isRunning(); }));
    recovery->continueRun(); // None is installed.
    EXPECT_TRUE(recovery->isInterrupted());
    EXPECT_FALSE(recovery->isContinuing());
    EXPECT_EQ(dialogs.alerts.size(), 1) << "which offers to install one";
    EXPECT_EQ(server.count(u"open"_s), 1);
}

TEST_F(RunRecoveryTest, aRunThatGoesOnWithoutSoundIsNotInterruptedAnyMore) {
    startRun();
    breakLink();
    recovery->continueRun();
    EXPECT_TRUE(waitUntil([this] { return !recovery->isInterrupted(); }));
    EXPECT_EQ(audio.progress().trouble, RunTrouble::NoSound);
}

TEST_F(RunRecoveryTest, theUsersStopEndsAnInterruption) {
    startRun();
    breakLink();
    controller.stopTranslation();
    EXPECT_FALSE(recovery->isInterrupted());
    recovery->continueRun();
    drainEvents();
    EXPECT_FALSE(controller.isTranslating());
    EXPECT_EQ(server.count(u"open"_s), 1);
}

TEST_F(RunRecoveryTest, aSourceThatEndsIsToldAndTakenUpAgain) {
    startRun();
    ASSERT_TRUE(sound.endMicrophone(u"unplugged"_s));
    ASSERT_TRUE(waitUntil([this] { return recovery->isInterrupted(); }));
    EXPECT_EQ(recovery->interruption().trouble, RunTrouble::CaptureEnded);
    EXPECT_EQ(recovery->interruption().reason, u"unplugged"_s);
    sound.tellAvailability(true);
    EXPECT_TRUE(waitUntil([this] { return !recovery->isInterrupted(); }));
    EXPECT_EQ(server.count(u"open"_s), 1) << "the run was not started again for it";
}

TEST_F(RunRecoveryTest, aSourceThatNeverStartsIsContinuedByOnePress) {
    sound.answers().preparation.failure = MicrophoneFailure::NoInput;
    controller.startTranslation();
    ASSERT_TRUE(waitUntil([this] { return recovery->isInterrupted(); }));
    EXPECT_EQ(recovery->interruption().trouble, RunTrouble::CaptureFailed);
    EXPECT_EQ(recovery->interruption().captureProblem, CaptureProblem::NoDevice);
    ASSERT_TRUE(waitUntil([this] { return server.messages(u"config"_s).size() == 1; }));
    sound.answers().preparation.failure = MicrophoneFailure::None;
    recovery->continueRun();
    listenTo(2);
    EXPECT_TRUE(waitUntil([this] { return !recovery->isInterrupted(); }));
}

} // namespace

} // namespace orv::test
