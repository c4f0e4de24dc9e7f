#include "ThreadedPortProbe.h"
#include "WaitUntil.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <optional>

namespace orv::test {

namespace {

/// Answers once it is let to.
class HeldProbe : public PortProbe {
  public:
    std::optional<bool> isPortInUse(quint16 port) override {
        askedOn = QThread::currentThreadId();
        asked = port;
        released.wait();
        return answer;
    }

    void release() { hold.set_value(); }

    std::promise<void> hold;
    std::shared_future<void> released = hold.get_future().share();
    std::optional<bool> answer = true;
    std::atomic<quint16> asked = 0;
    std::atomic<Qt::HANDLE> askedOn = nullptr;
};

class ThreadedPortProbeTest : public ::testing::Test {
  protected:
    ThreadedPortProbeTest() {
        auto owned = std::make_unique<HeldProbe>();
        held = owned.get();
        probe = std::make_unique<ThreadedPortProbe>(std::move(owned));
    }

    void look(quint16 port) {
        probe->look(port, [this](std::optional<bool> inUse) {
            answeredOn = QThread::currentThreadId();
            answers.append(inUse);
        });
    }

    HeldProbe* held = nullptr;
    std::unique_ptr<ThreadedPortProbe> probe;
    QList<std::optional<bool>> answers;
    Qt::HANDLE answeredOn = nullptr;
};

} // namespace

TEST_F(ThreadedPortProbeTest, aLookHoldsNobodyUpAndIsAnsweredHere) {
    look(4711);
    ASSERT_TRUE(waitUntil([this] { return held->asked == 4711; }));
    EXPECT_NE(held->askedOn, QThread::currentThreadId());
    EXPECT_TRUE(answers.isEmpty());
    held->release();
    ASSERT_TRUE(waitUntil([this] { return !answers.isEmpty(); }));
    EXPECT_EQ(answers, QList{std::optional(true)});
    EXPECT_EQ(answeredOn, QThread::currentThreadId());
}

TEST_F(ThreadedPortProbeTest, aLookThatFindsNothingOutSaysSo) {
    held->answer = std::nullopt;
    held->release();
    look(1);
    ASSERT_TRUE(waitUntil([this] { return !answers.isEmpty(); }));
    EXPECT_EQ(answers, QList{std::optional<bool>()});
}

TEST_F(ThreadedPortProbeTest, whoCannotGoOnWithoutTheAnswerGetsItAtOnce) {
    held->release();
    EXPECT_EQ(probe->isPortInUse(7), true);
    EXPECT_EQ(held->askedOn, QThread::currentThreadId());
}

TEST_F(ThreadedPortProbeTest, nobodyIsAnsweredOnceTheProbeIsGone) {
    held->release();
    look(1);
    probe.reset();
    QCoreApplication::processEvents();
    EXPECT_TRUE(answers.isEmpty());
}

} // namespace orv::test
