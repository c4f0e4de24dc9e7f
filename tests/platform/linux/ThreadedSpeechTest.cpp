#include "ThreadedSpeech.h"

#include "LogCapture.h"
#include "NullSpeechSynthesizer.h"
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QStringList>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

const QString complaint =
    u"⚠️ Keine Sprachausgabe verfügbar - Übersetzungen werden nicht vorgelesen"_s;

/// What the engines of a test share with it: what they were asked, and a gate they wait at.
class Stage {
  public:
    void note(const QString& call) {
        std::unique_lock lock(mutex_);
        calls_.append(call);
        ++inside_;
        gate_.wait(lock, [this] { return open_; });
        --inside_;
    }

    void close() {
        const std::lock_guard lock(mutex_);
        open_ = false;
    }

    void open() {
        const std::lock_guard lock(mutex_);
        open_ = true;
        gate_.notify_all();
    }

    QStringList calls() const {
        const std::lock_guard lock(mutex_);
        // A list of its own: that another thread no longer shares one is told to this one without
        // an order in memory.
        QStringList calls = calls_;
        calls.detach();
        return calls;
    }

    bool hangs() const {
        const std::lock_guard lock(mutex_);
        return inside_ > 0 && !open_;
    }

    bool has(const QString& call) const { return calls().contains(call); }

    std::atomic<bool> works = true;    ///< Whether engines can be made.
    std::atomic<int> failingSays = 0;  ///< So many calls of `say` fail.
    std::atomic<int> onMainThread = 0; ///< Calls on the wrong thread.
    const std::thread::id mainThread = std::this_thread::get_id();

  private:
    mutable std::mutex mutex_;
    std::condition_variable gate_;
    QStringList calls_;
    bool open_ = true;
    int inside_ = 0;
};

class StagedEngine : public SpeechEngine {
  public:
    explicit StagedEngine(std::shared_ptr<Stage> stage)
        : stage_(std::move(stage)) {
        note(u"made"_s);
    }

    ~StagedEngine() override { note(u"gone"_s); }

    bool say(const QString& text) override {
        note(u"say "_s + text);
        return stage_->failingSays-- <= 0;
    }

    void stop() override { note(u"stop"_s); }

  private:
    void note(const QString& call) {
        stage_->onMainThread += std::this_thread::get_id() == stage_->mainThread ? 1 : 0;
        stage_->note(call);
    }

    std::shared_ptr<Stage> stage_;
};

class ThreadedSpeechTest : public ::testing::Test {
  protected:
    ~ThreadedSpeechTest() override { stage->open(); }

    /// The end waits for the engine unless a test is about one that hangs.
    void make(SpeechTimings timings = {.farewell = 1h}) {
        speech = std::make_unique<ThreadedSpeech>(
            [stage = stage]() -> std::unique_ptr<SpeechEngine> {
                if (!stage->works) {
                    stage->note(u"failed"_s);
                    return nullptr;
                }
                return std::make_unique<StagedEngine>(stage);
            },
            timings);
    }

    bool waitForCall(const QString& call) {
        return waitUntil([this, call] { return stage->has(call); });
    }

    LogCapture log;
    std::shared_ptr<Stage> stage = std::make_shared<Stage>();
    std::unique_ptr<ThreadedSpeech> speech;
};

TEST_F(ThreadedSpeechTest, costsNothingUntilItIsUsed) {
    make();
    speech->stop();
    speech.reset();
    EXPECT_TRUE(stage->calls().isEmpty());
}

TEST_F(ThreadedSpeechTest, stopsTheUtteranceBeforeItSpeaksTheNext) {
    make();
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitForCall(u"say one"_s));
    speech->speak(u"two"_s);
    ASSERT_TRUE(waitForCall(u"say two"_s));
    EXPECT_EQ(stage->calls(),
              (QStringList{u"made"_s, u"stop"_s, u"say one"_s, u"stop"_s, u"say two"_s}));
    EXPECT_EQ(stage->onMainThread, 0);
}

TEST_F(ThreadedSpeechTest, stopsAtOnce) {
    make();
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitForCall(u"say one"_s));
    speech->stop();
    ASSERT_TRUE(waitUntil([this] { return stage->calls().count(u"stop"_s) == 2; }));
    EXPECT_EQ(stage->calls().last(), u"stop"_s);
}

TEST_F(ThreadedSpeechTest, isReadyOncePrepared) {
    make();
    speech->prepare();
    ASSERT_TRUE(waitForCall(u"made"_s));
    speech->prepare();
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitForCall(u"say one"_s));
    EXPECT_EQ(stage->calls().count(u"made"_s), 1);
}

TEST_F(ThreadedSpeechTest, neverMakesTheCallerWaitForAnEngineThatHangs) {
    make();
    stage->close();
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitUntil([this] { return stage->hangs(); }));
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 100'000; ++i) {
        speech->speak(u"another"_s);
    }
    speech->stop();
    speech->speak(u"last"_s);
    EXPECT_LT(clock.elapsed(), 5000) << "a hundred thousand calls that wait for nobody";
    stage->open();
    ASSERT_TRUE(waitForCall(u"say last"_s));
    EXPECT_FALSE(stage->has(u"say another"_s)) << "only the latest waits";
}

TEST_F(ThreadedSpeechTest, forgetsWhatWaitsWhenItIsStopped) {
    make();
    stage->close();
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitUntil([this] { return stage->hangs(); }));
    speech->speak(u"two"_s);
    speech->stop();
    stage->open();
    speech.reset();
    EXPECT_FALSE(stage->has(u"say two"_s));
    EXPECT_TRUE(stage->has(u"stop"_s));
}

TEST_F(ThreadedSpeechTest, preparingDoesNotTakeThePlaceOfWhatIsToBeSpoken) {
    make();
    stage->close();
    speech->prepare();
    ASSERT_TRUE(waitUntil([this] { return stage->hangs(); }));
    speech->speak(u"one"_s);
    speech->prepare();
    stage->open();
    EXPECT_TRUE(waitForCall(u"say one"_s));
}

TEST_F(ThreadedSpeechTest, preparesAlsoWhenItHasJustBeenStopped) {
    stage->works = false;
    make();
    speech->prepare();
    ASSERT_TRUE(waitForCall(u"failed"_s));
    stage->works = true;
    speech->stop();
    speech->prepare();
    EXPECT_TRUE(waitForCall(u"made"_s));
}

TEST_F(ThreadedSpeechTest, endsTheUtteranceAndTheEngineWithItself) {
    make();
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitForCall(u"say one"_s));
    speech.reset();
    EXPECT_EQ(stage->calls().mid(3), (QStringList{u"stop"_s, u"gone"_s}));
}

TEST_F(ThreadedSpeechTest, doesNotWaitLongForAnEngineThatHangsAtTheEnd) {
    make({.farewell = 20ms});
    stage->close();
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitUntil([this] { return stage->hangs(); }));
    speech.reset();
    EXPECT_TRUE(log.contains(u"⚠️ Sprachausgabe antwortet nicht - wird nicht abgewartet"_s));
    EXPECT_FALSE(stage->has(u"gone"_s));
    stage->open();
    EXPECT_TRUE(waitForCall(u"gone"_s)) << "what was left to itself ends when it comes back";
    EXPECT_TRUE(waitUntil([this] { return stage.use_count() == 1; }));
    drainEvents();
}

TEST_F(ThreadedSpeechTest, saysOnceThatThereIsNoEngine) {
    stage->works = false;
    make();
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitUntil([this] { return log.contains(complaint); }));
    speech->speak(u"two"_s);
    speech->stop();
    speech->prepare();
    ASSERT_TRUE(waitUntil([this] { return stage->calls().count(u"failed"_s) == 2; }))
        << "the next run tries again";
    speech.reset();
    EXPECT_EQ(log.lines().count(complaint), 1);
}

TEST_F(ThreadedSpeechTest, speaksOnceAnEngineIsThere) {
    stage->works = false;
    make();
    speech->prepare();
    ASSERT_TRUE(waitForCall(u"failed"_s));
    stage->works = true;
    speech->prepare();
    ASSERT_TRUE(waitForCall(u"made"_s));
    speech->speak(u"one"_s);
    EXPECT_TRUE(waitForCall(u"say one"_s));
}

TEST_F(ThreadedSpeechTest, makesAnotherEngineForOneThatWentAway) {
    make();
    speech->prepare();
    ASSERT_TRUE(waitForCall(u"made"_s));
    stage->failingSays = 1;
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitUntil([this] { return stage->calls().count(u"say one"_s) == 2; }));
    EXPECT_EQ(stage->calls().count(u"made"_s), 2);
}

TEST_F(ThreadedSpeechTest, saysThatThereIsNoSpeechWhenTheOtherEngineFailsAsWell) {
    make();
    stage->failingSays = 2;
    speech->speak(u"one"_s);
    ASSERT_TRUE(waitUntil([this] { return stage->calls().count(u"gone"_s) == 2; }));
    speech->speak(u"two"_s);
    speech->prepare();
    ASSERT_TRUE(waitUntil([this] { return stage->calls().count(u"made"_s) == 3; }))
        << "the next run tries again";
    speech->speak(u"three"_s);
    ASSERT_TRUE(waitForCall(u"say three"_s));
    speech.reset();
    EXPECT_EQ(log.lines().count(complaint), 1);
}

TEST(NullSpeechSynthesizer, takesEverythingAndSaysNothing) {
    const LogCapture log;
    NullSpeechSynthesizer speech;
    SpeechSynthesizer& synthesizer = speech;
    synthesizer.prepare();
    synthesizer.speak(u"text"_s);
    synthesizer.stop();
    EXPECT_TRUE(log.lines().isEmpty());
}

} // namespace

} // namespace orv::test
