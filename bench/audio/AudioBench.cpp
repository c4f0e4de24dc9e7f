// What the capture path costs per buffer of 4096 frames, and an audio message of eight seconds;
// beside each, the bare work that cannot be avoided. bench/audio/run puts them in relation.

#include "HandFused.h"

#include "AllocationCount.h"
#include "AudioCapture.h"
#include "AudioIngest.h"
#include "BackendMessages.h"
#include "Log.h"
#include "Pcm16.h"
#include "SampleRateConverter.h"

#include <benchmark/benchmark.h>
#include <soxr.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using orv::AudioIngest;
using orv::Chunk;
using orv::Chunker;

constexpr std::size_t frames = 4096;
constexpr std::size_t messageSamples = std::size_t{8} * 48000;

std::vector<float> tone(std::size_t count, double rate) {
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double time = static_cast<double>(i) / rate;
        samples[i] = static_cast<float>(0.2 * std::sin(2 * std::numbers::pi * 440.0 * time));
    }
    return samples;
}

/// Everything between the capture callback and the PCM of a chunk, as a run has it: auto-gain,
/// meter, buffer, lines (formatted, not printed), pause detection, chunks every eight seconds and
/// their conversion.
class CapturePath {
  public:
    explicit CapturePath(double rate)
        : rate_(rate)
        , input_(tone(frames, rate)) {
        orv::setLogSink([this](const QString&) { ++lines_; });
        pcm_.reserve(960'000); // Ten seconds.
        chunker_.setConnected(true);
        ingest_.pipeline().setAutoGain(true);
        orv::SampleRateConverter::Creation creation = orv::SampleRateConverter::create(rate);
        if (!creation.error.isEmpty()) {
            throw std::runtime_error(creation.error.toStdString());
        }
        ingest_.setSampleRateConverter(std::move(creation.converter));
    }

    ~CapturePath() { orv::setLogSink({}); }

    CapturePath(const CapturePath&) = delete;
    CapturePath& operator=(const CapturePath&) = delete;

    void buffer() {
        ingest_.processAudioBufferWithConversion({input_.data(), frames, 1}, now_);
        now_ += std::chrono::nanoseconds(std::llround(1e9 * static_cast<double>(frames) / rate_));
    }

    /// Allocations per buffer over many buffers, among those that logged no line (and so sent no
    /// chunk), and among all.
    struct Allocations {
        double withoutLine = 0;
        double all = 0;
    };

    Allocations allocations() {
        constexpr int count = 2000;
        for (int i = 0; i < count / 4; ++i) {
            buffer();
        }
        std::size_t quiet = 0;
        std::size_t inQuiet = 0;
        std::size_t total = 0;
        for (int i = 0; i < count; ++i) {
            const std::size_t linesBefore = lines_;
            const std::size_t before = orv::test::allocationCount();
            buffer();
            const std::size_t made = orv::test::allocationCount() - before;
            total += made;
            if (lines_ == linesBefore) {
                ++quiet;
                inQuiet += made;
            }
        }
        return {static_cast<double>(inQuiet) / static_cast<double>(quiet),
                static_cast<double>(total) / count};
    }

  private:
    double rate_;
    std::vector<float> input_;
    QByteArray pcm_;
    std::size_t lines_ = 0;
    Chunker::TimePoint now_{1h};
    Chunker chunker_{[this](Chunk&& chunk) {
                         pcm_.resize(0);
                         orv::appendPcm16(pcm_, chunk.samples);
                         benchmark::DoNotOptimize(pcm_.data());
                         chunker_.recycle(std::move(chunk.samples));
                     },
                     now_};
    AudioIngest ingest_{chunker_};
};

void capturePath(benchmark::State& state, double rate) {
    CapturePath path(rate);
    const CapturePath::Allocations allocations = path.allocations();
    for (auto _ : state) {
        path.buffer();
    }
    state.counters["allocations"] = allocations.withoutLine;
    state.counters["allocationsWithLines"] = allocations.all;
}

void handFused(benchmark::State& state) {
    const std::vector<float> input = tone(frames, 48000);
    std::vector<std::int16_t> pcm(frames);
    float gain = 0.7F;
    for (auto _ : state) {
        benchmark::DoNotOptimize(gain);
        benchmark::DoNotOptimize(orv::bench::handFused(input.data(), frames, gain, pcm.data()));
        benchmark::ClobberMemory();
    }
}

void resamplerAlone(benchmark::State& state, double rate) {
    const std::vector<float> input = tone(frames, rate);
    std::vector<float> output(orv::SampleRateConverter::outputCapacity(rate, 2 * frames));
    const soxr_io_spec_t format = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
    const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    const std::unique_ptr<soxr, void (*)(soxr_t)> stream(
        soxr_create(rate, 48000, 1, nullptr, &format, &quality, &runtime), soxr_delete);
    for (auto _ : state) {
        std::size_t taken = 0;
        std::size_t given = 0;
        soxr_process(stream.get(), input.data(), frames, &taken, output.data(), output.size(),
                     &given);
        if (taken != frames) {
            state.SkipWithError("the resampler left input behind");
        }
        benchmark::DoNotOptimize(output.data());
    }
}

void audioMessage(benchmark::State& state) {
    const std::vector<float> samples = tone(messageSamples, 48000);
    for (auto _ : state) {
        const QByteArray message = orv::audioMessage(samples, 48000);
        benchmark::DoNotOptimize(message.constData());
    }
}

/// Base64 of PCM that is there already, and one append.
void base64AndAppend(benchmark::State& state) {
    const QByteArray pcm = orv::pcm16(tone(messageSamples, 48000));
    for (auto _ : state) {
        QByteArray message =
            QByteArrayLiteral(R"({"type":"audio","sample_rate":48000,"format":"int16","data":")");
        message.append(pcm.toBase64());
        message.append(R"("})");
        benchmark::DoNotOptimize(message.constData());
    }
}

BENCHMARK_CAPTURE(capturePath, at48000, 48000.0);
BENCHMARK(handFused);
BENCHMARK_CAPTURE(capturePath, at44100, 44100.0);
BENCHMARK_CAPTURE(resamplerAlone, at44100, 44100.0);
BENCHMARK(audioMessage);
BENCHMARK(base64AndAppend);

} // namespace

BENCHMARK_MAIN();
