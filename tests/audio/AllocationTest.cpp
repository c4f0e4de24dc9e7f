// The capture path allocates nothing and calls the system for nothing once it runs. A program of
// its own: the allocator of the whole process is counted.

#include "AllocationCount.h"

#include "AudioCapture.h"
#include "AudioIngest.h"
#include "AudioSender.h"
#include "LevelMeter.h"
#include "Log.h"
#include "LogWriter.h"
#include "SampleRateConverter.h"
#include "SystemCallCount.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using orv::AudioIngest;
using orv::Chunk;
using orv::Chunker;
using orv::test::allocationCount;
using orv::test::SystemCallCount;

constexpr int buffers = 5000;
constexpr std::size_t frames = 4096;
const Chunker::TimePoint start{1000h};

/// Counts lines instead of printing them.
class LineCount {
  public:
    LineCount() {
        orv::setLogSink([this](const QString&) { ++lines; });
    }

    ~LineCount() { orv::setLogSink({}); }

    LineCount(const LineCount&) = delete;
    LineCount& operator=(const LineCount&) = delete;

    int lines = 0;
};

/// What a buffer, or a number of them, asked of allocator and kernel.
struct Cost {
    std::size_t allocations = 0;
    std::size_t calls = 0; ///< Of the system; none that wakes another thread.
    std::size_t wakes = 0;

    Cost& operator+=(const Cost& other) {
        allocations += other.allocations;
        calls += other.calls;
        wakes += other.wakes;
        return *this;
    }
};

template <typename Work>
Cost costOf(Work work) {
    const std::size_t allocations = allocationCount();
    const SystemCallCount counting;
    work();
    return {allocationCount() - allocations, SystemCallCount::calls(), SystemCallCount::wakes()};
}

/// A direct engine's service that counts what it gets.
class Service : public orv::PcmSink {
  public:
    explicit Service(std::atomic<int>& received)
        : received_(received) {}

    void take(QByteArray /*pcm*/) override {
        ++received_;
        received_.notify_one();
    }

    void end() override {}

  private:
    std::atomic<int>& received_;
};

/// Where captured sound goes.
enum class Road { Chunks, Stream };

struct Outcome {
    Cost inSilentBuffers; ///< In buffers that logged nothing and sent no chunk.
    int silentBuffers = 0;
    int chunks = 0;
};

/// The capture path with everything that is behind it in a run, but for the services.
class CapturePath {
  public:
    CapturePath(double rate, Road road)
        : rate_(rate)
        , road_(road) {
        chunker_.setConnected(true);
        chunker_.setRoute(orv::ChunkRoute::DirectEngine);
        ingest_.pipeline().setAutoGain(true);
        ingest_.setSampleRateConverter(orv::SampleRateConverter::create(rate).converter);
        sender_.setPcmSink(std::make_shared<Service>(received_));
        if (road == Road::Stream) {
            ingest_.setStreamTap(
                [this](std::span<const float> samples) { sender_.streamBuffer(samples); });
        }
    }

    /// Plays sound with pauses, in two channels. The first tenth counts as warming up.
    Outcome play() {
        for (int i = 0; i < buffers; ++i) {
            fillInput(i % 60 < 40 ? 0.3 : 0.001);
            const int linesBefore = log_.lines;
            const Cost cost = costOf([this] {
                ingest_.processAudioBufferWithConversion({input_.data(), frames, 2}, now_);
            });
            if (i > buffers / 10 && log_.lines == linesBefore) {
                ++outcome_.silentBuffers;
                outcome_.inSilentBuffers += cost;
            }
            if (i % 3 == 0) {
                ingest_.drainMeter(meter_);
            }
            if (road_ == Road::Stream) {
                received_.wait(i); // As many are under way as in a run: one.
            }
            now_ += std::chrono::nanoseconds(static_cast<long>(1e9 * frames / rate_));
        }
        return outcome_;
    }

  private:
    void fillInput(double amplitude) {
        for (std::size_t j = 0; j < frames; ++j) {
            const double phase = 2 * std::numbers::pi * 440 * static_cast<double>(j) / rate_;
            input_[2 * j] = static_cast<float>(amplitude * std::sin(phase));
        }
    }

    const double rate_;
    const Road road_;
    LineCount log_;
    Outcome outcome_;
    std::vector<float> input_ = std::vector<float>(2 * frames);
    Chunker::TimePoint now_ = start;
    std::atomic<int> received_ = 0; ///< By the service.
    Chunker chunker_{[this](Chunk&& chunk) {
                         ++outcome_.chunks;
                         sender_.sendChunk(std::move(chunk));
                     },
                     start};
    AudioIngest ingest_{chunker_};
    orv::LevelMeter meter_;
    orv::AudioSender sender_{chunker_};
};

TEST(Allocation, theCounterCounts) {
    const std::size_t before = allocationCount();
    const auto number = std::make_unique<int>(1);
    EXPECT_EQ(*number, 1);
    EXPECT_EQ(allocationCount(), before + 1);
    if (orv::test::countsMalloc()) {
        const QByteArray bytes(1000, 'x');
        EXPECT_EQ(bytes.size(), 1000);
        EXPECT_EQ(allocationCount(), before + 2);
    }
}

TEST(Allocation, theCounterOfSystemCallsCountsWhereItCan) {
    long process = 0;
    const Cost cost = costOf([&process] {
        process = syscall(SYS_getpid);
        syscall(SYS_getppid);
    });
    EXPECT_EQ(process, getpid()) << "A call that is counted is made all the same.";
    EXPECT_EQ(cost.calls, SystemCallCount::isPossible() ? 2U : 0U);
    EXPECT_EQ(costOf([] {}).calls, 0U);
}

TEST(Allocation, buffersAt48kHzNeedNone) {
    const Outcome outcome = CapturePath(48000, Road::Chunks).play();
    EXPECT_GT(outcome.silentBuffers, buffers / 2);
    EXPECT_GT(outcome.chunks, 50);
    EXPECT_EQ(outcome.inSilentBuffers.allocations, 0U);
    EXPECT_EQ(outcome.inSilentBuffers.calls, 0U);
}

TEST(Allocation, convertedBuffersNeedNone) {
    const Outcome outcome = CapturePath(44100, Road::Chunks).play();
    EXPECT_GT(outcome.silentBuffers, buffers / 2);
    EXPECT_GT(outcome.chunks, 50);
    EXPECT_EQ(outcome.inSilentBuffers.allocations, 0U);
    EXPECT_EQ(outcome.inSilentBuffers.calls, 0U);
}

TEST(Allocation, buffersForAStreamingEngineNeedNothingButTheHandOver) {
    const Outcome outcome = CapturePath(48000, Road::Stream).play();
    EXPECT_GT(outcome.silentBuffers, buffers * 8 / 10);
    EXPECT_EQ(outcome.chunks, 0);
    EXPECT_EQ(outcome.inSilentBuffers.allocations, 0U);
    EXPECT_EQ(outcome.inSilentBuffers.calls, 0U);
}

// The capture thread logs once a second: the line itself, and its bytes for the output.
TEST(Allocation, aLineNeedsTwoWithAWriterToo) {
    const orv::LogWriter writer;
    orv::logLine(u"first");
    const std::size_t before = allocationCount();
    orv::logLine(u"second");
    EXPECT_LE(allocationCount() - before, 2U);
}

TEST(Allocation, takingAndRecyclingChunksNeedsNone) {
    orv::SampleBuffer buffer;
    const std::vector<float> samples(frames, 0.1F);
    const std::size_t before = allocationCount();
    for (int chunk = 0; chunk < 50; ++chunk) {
        for (int i = 0; i < 90; ++i) {
            buffer.append(samples);
        }
        buffer.recycle(buffer.takeIfMoreThan(20000).samples);
    }
    EXPECT_EQ(allocationCount(), before);
}

} // namespace
