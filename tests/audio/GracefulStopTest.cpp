#include "GracefulStop.h"

#include "LogCapture.h"
#include "WaitUntil.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using test::waitUntil;

/// Long enough that no test is decided by it unless it says so.
constexpr GracefulStop::Timings patient{.lastBuffer = 1h, .flush = 1h, .stop = 1h};

class GracefulStopTest : public testing::Test, public GracefulStop::Steps {
  protected:
    void begin(std::size_t samples, GracefulStop::Timings timings = patient) {
        stop = std::make_unique<GracefulStop>(*this, timings);
        stop->begin(std::vector<float>(samples));
    }

    void sendLastBuffer(std::vector<float>&& samples, BackendLink::Sent sent) override {
        steps.append(u"last"_s);
        lastBuffer = std::move(samples);
        lastSent = std::move(sent);
    }

    void sendFlush() override { steps.append(u"flush"_s); }

    void sendStop(BackendLink::Sent sent) override {
        steps.append(u"stop"_s);
        stopSent = std::move(sent);
    }

    void stepsDone() override { steps.append(u"done"_s); }

    test::LogCapture log;
    QStringList steps;
    std::vector<float> lastBuffer;
    BackendLink::Sent lastSent;
    BackendLink::Sent stopSent;
    std::unique_ptr<GracefulStop> stop;
};

TEST_F(GracefulStopTest, sendsNoLastBufferOf1000Samples) {
    begin(1000);
    EXPECT_EQ(steps, QStringList{u"flush"_s});
    EXPECT_FALSE(log.containsStart(u"📤"_s));
}

TEST_F(GracefulStopTest, sendsALastBufferOf1001Samples) {
    begin(1001);
    EXPECT_EQ(steps, QStringList{u"last"_s});
    EXPECT_EQ(lastBuffer.size(), 1001U);
    EXPECT_TRUE(log.contains(u"📤 Sende letzten Buffer: 1001 samples"_s));
}

TEST_F(GracefulStopTest, goesStepByStepAsEachIsConfirmed) {
    begin(48000);
    lastSent({});
    ASSERT_TRUE(waitUntil([&] { return steps.size() == 2; }));
    EXPECT_EQ(log.lines().last(), u"⏳ Warte auf Backend-Verarbeitung..."_s);
    stop->flushed();
    EXPECT_EQ(log.lines().last(), u"✓ Backend-Verarbeitung abgeschlossen"_s);
    stopSent({});
    ASSERT_TRUE(waitUntil([&] { return steps.size() == 4; }));
    EXPECT_EQ(steps, (QStringList{u"last"_s, u"flush"_s, u"stop"_s, u"done"_s}));
}

TEST_F(GracefulStopTest, goesOnWhenTheLastBuffersSendHangs) {
    begin(48000, {.lastBuffer = 1ms, .flush = 1h, .stop = 1h});
    ASSERT_TRUE(waitUntil([&] { return steps.contains(u"flush"_s); }));
}

TEST_F(GracefulStopTest, goesOnWhenTheConfirmationNeverComes) {
    begin(0, {.lastBuffer = 1h, .flush = 1ms, .stop = 1h});
    ASSERT_TRUE(waitUntil([&] { return steps.contains(u"stop"_s); }));
    EXPECT_TRUE(log.contains(u"✓ Backend-Verarbeitung abgeschlossen"_s));
}

TEST_F(GracefulStopTest, goesOnWhenTheStopMessagesSendHangs) {
    begin(0, {.lastBuffer = 1h, .flush = 1h, .stop = 1ms});
    stop->flushed();
    ASSERT_TRUE(waitUntil([&] { return steps.contains(u"done"_s); }));
}

TEST_F(GracefulStopTest, ignoresALateSendCompletion) {
    begin(48000, {.lastBuffer = 1ms, .flush = 1h, .stop = 1h});
    ASSERT_TRUE(waitUntil([&] { return steps.contains(u"flush"_s); }));
    lastSent({});
    test::drainEvents();
    EXPECT_EQ(steps, (QStringList{u"last"_s, u"flush"_s}));
}

TEST_F(GracefulStopTest, doesNotWaitForAConfirmationOverABrokenLink) {
    begin(0);
    stop->linkFailed();
    EXPECT_EQ(steps, (QStringList{u"flush"_s, u"stop"_s}));
}

TEST_F(GracefulStopTest, remembersALinkThatBrokeDuringTheLastBuffer) {
    begin(48000);
    stop->linkFailed();
    EXPECT_EQ(steps, QStringList{u"last"_s});
    lastSent({});
    ASSERT_TRUE(waitUntil([&] { return steps.size() == 3; }));
    EXPECT_EQ(steps, (QStringList{u"last"_s, u"flush"_s, u"stop"_s}));
}

TEST_F(GracefulStopTest, isQuietOnceDestroyed) {
    begin(48000);
    stop.reset();
    lastSent({});
    test::drainEvents();
    EXPECT_EQ(steps, QStringList{u"last"_s});
}

} // namespace
} // namespace orv
