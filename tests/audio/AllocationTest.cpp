// The capture path allocates nothing once it runs. A program of its own: the allocator of the whole
// process is counted.

#include "AllocationCount.h"

#include "AudioCapture.h"
#include "AudioIngest.h"
#include "LevelMeter.h"
#include "Log.h"
#include "LogWriter.h"
#include "Pcm16.h"
#include "SampleRateConverter.h"

#include <gtest/gtest.h>

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

/// What the allocator was asked for in a run.
struct Outcome {
    std::size_t inSilentBuffers = 0; ///< In buffers that logged nothing and sent nothing.
    int silentBuffers = 0;
    int chunks = 0;
};

/// A run of sound with pauses, in two channels, of which the first tenth counts as warming up.
Outcome run(double rate, bool tapped) {
    LineCount log;
    Outcome outcome;
    QByteArray pcm;
    pcm.reserve(static_cast<qsizetype>(4 * 8 * 48000));
    Chunker* self = nullptr;
    Chunker chunker(
        [&](Chunk&& chunk) {
            ++outcome.chunks;
            pcm.resize(0);
            orv::appendPcm16(pcm, chunk.samples);
            self->recycle(std::move(chunk.samples));
        },
        start);
    self = &chunker;
    chunker.setConnected(true);
    AudioIngest ingest(chunker);
    ingest.pipeline().setAutoGain(true);
    ingest.setSampleRateConverter(orv::SampleRateConverter::create(rate).converter);
    if (tapped) {
        ingest.setStreamTap([&](std::span<const float> samples) {
            pcm.resize(0);
            orv::appendPcm16(pcm, samples);
        });
    }
    orv::LevelMeter meter;
    std::vector<float> input(2 * frames);
    Chunker::TimePoint now = start;
    for (int i = 0; i < buffers; ++i) {
        const double amplitude = i % 60 < 40 ? 0.3 : 0.001;
        for (std::size_t j = 0; j < frames; ++j) {
            const double phase = 2 * std::numbers::pi * 440 * static_cast<double>(j) / rate;
            input[2 * j] = static_cast<float>(amplitude * std::sin(phase));
        }
        const int linesBefore = log.lines;
        const std::size_t before = allocationCount();
        ingest.processAudioBufferWithConversion({input.data(), frames, 2}, now);
        if (i % 3 == 0) {
            ingest.drainMeter(meter);
        }
        if (i > buffers / 10 && log.lines == linesBefore) {
            ++outcome.silentBuffers;
            outcome.inSilentBuffers += allocationCount() - before;
        }
        now += std::chrono::nanoseconds(static_cast<long>(1e9 * frames / rate));
    }
    return outcome;
}

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

TEST(Allocation, buffersAt48kHzNeedNone) {
    const Outcome outcome = run(48000, false);
    EXPECT_GT(outcome.silentBuffers, buffers / 2);
    EXPECT_GT(outcome.chunks, 50);
    EXPECT_EQ(outcome.inSilentBuffers, 0U);
}

TEST(Allocation, convertedBuffersNeedNone) {
    const Outcome outcome = run(44100, false);
    EXPECT_GT(outcome.silentBuffers, buffers / 2);
    EXPECT_GT(outcome.chunks, 50);
    EXPECT_EQ(outcome.inSilentBuffers, 0U);
}

TEST(Allocation, buffersForAStreamingEngineNeedNone) {
    const Outcome outcome = run(48000, true);
    EXPECT_GT(outcome.silentBuffers, buffers * 8 / 10);
    EXPECT_EQ(outcome.chunks, 0);
    EXPECT_EQ(outcome.inSilentBuffers, 0U);
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
