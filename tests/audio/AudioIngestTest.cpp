#include "AudioIngest.h"

#include "AudioCapture.h"
#include "LevelMeter.h"
#include "LogCapture.h"
#include "Pcm16.h"
#include "SampleRateConverter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using orv::AudioIngest;
using orv::Chunk;
using orv::Chunker;
using orv::LevelMeter;
using orv::SampleRateConverter;
using orv::test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

const Chunker::TimePoint start{1000h};

/// Gives what it is told to, and remembers what it was asked.
class ScriptedConverter : public SampleRateConverter {
  public:
    Conversion convert(const float* channel0, std::size_t frames, std::size_t stride) override {
        ++calls;
        lastFirst = channel0[0];
        lastFrames = frames;
        lastStride = stride;
        return {output, error};
    }

    Conversion finish() override { return {rest, error}; }

    std::vector<float> output;
    std::vector<float> rest;
    QString error;
    int calls = 0;
    float lastFirst = 0;
    std::size_t lastFrames = 0;
    std::size_t lastStride = 0;
};

class AudioIngestTest : public testing::Test {
  protected:
    AudioIngestTest() { chunker.setVadEnabled(false); }

    ScriptedConverter& useScriptedConverter() {
        auto converter = std::make_unique<ScriptedConverter>();
        ScriptedConverter& reference = *converter;
        ingest.setSampleRateConverter(std::move(converter));
        return reference;
    }

    /// Whether a buffer was metered since the last call.
    bool metered() { return ingest.drainMeter(meter).has_value(); }

    LogCapture log;
    std::vector<Chunk> chunks;
    Chunker chunker{[this](Chunk&& chunk) { chunks.push_back(std::move(chunk)); }, start, 48000};
    AudioIngest ingest{chunker};
    LevelMeter meter;
};

TEST_F(AudioIngestTest, withoutAConverterTakesChannelZeroAsItIs) {
    const std::array<float, 6> interleaved{0.1F, 0.9F, 0.2F, 0.9F, 0.3F, 0.9F};
    ingest.processAudioBufferWithConversion({interleaved.data(), 3, 2}, start);
    ingest.processAudioBufferWithConversion({interleaved.data(), 2, 1}, start);
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.1F, 0.2F, 0.3F, 0.1F, 0.9F));
}

TEST_F(AudioIngestTest, dropsEmptyBuffersAndThoseWithoutFloatData) {
    const float sample = 0.5F;
    ScriptedConverter* converter = nullptr;
    for (const bool converting : {false, true}) {
        if (converting) {
            converter = &useScriptedConverter();
        }
        ingest.processAudioBufferWithConversion({&sample, 0, 1}, start);
        ingest.processAudioBufferWithConversion({nullptr, 4096, 1}, start);
        EXPECT_EQ(chunker.bufferedSamples(), 0U);
        EXPECT_FALSE(metered());
    }
    EXPECT_EQ(converter->calls, 0);
}

TEST_F(AudioIngestTest, withAConverterItsOutputGoesOn) {
    ScriptedConverter& converter = useScriptedConverter();
    converter.output = {0.5F, -0.5F};
    const std::array<float, 8> input{0.7F};
    ingest.processAudioBufferWithConversion({input.data(), 4, 2}, start);
    EXPECT_EQ(converter.lastFirst, 0.7F);
    EXPECT_EQ(converter.lastFrames, 4U);
    EXPECT_EQ(converter.lastStride, 2U);
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.5F, -0.5F));
}

TEST_F(AudioIngestTest, aConversionWithoutFramesIsDropped) {
    useScriptedConverter();
    const float sample = 0.5F;
    ingest.processAudioBufferWithConversion({&sample, 1, 1}, start);
    EXPECT_FALSE(metered());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AudioIngestTest, aConversionErrorIsLoggedTheBufferLostAndTheConverterKept) {
    ScriptedConverter& converter = useScriptedConverter();
    converter.output = {0.5F};
    converter.error = u"out of order"_s;
    const float sample = 0.5F;
    ingest.processAudioBufferWithConversion({&sample, 1, 1}, start);
    EXPECT_EQ(log.lines(), QStringList(u"❌ Konvertierungsfehler: out of order"_s));
    EXPECT_EQ(chunker.bufferedSamples(), 0U);
    EXPECT_FALSE(metered());

    converter.error.clear();
    ingest.processAudioBufferWithConversion({&sample, 1, 1}, start);
    EXPECT_EQ(converter.calls, 2);
    EXPECT_EQ(chunker.bufferedSamples(), 1U);
}

TEST_F(AudioIngestTest, aMicrophoneAt44100ArrivesAt48000) {
    SampleRateConverter::Creation creation = SampleRateConverter::create(44100);
    ASSERT_NE(creation.converter, nullptr);
    ingest.setSampleRateConverter(std::move(creation.converter));
    const std::vector<float> input(4096, 0.25F);
    for (int i = 0; i < 100; ++i) {
        ingest.processAudioBufferWithConversion({input.data(), input.size(), 1}, start);
    }
    const std::vector<float> output = chunker.takeAll();
    EXPECT_NEAR(static_cast<double>(output.size()), 100 * 4096 * 48000.0 / 44100.0, 1200);
    EXPECT_NEAR(output[output.size() / 2], 0.25F, 1e-5);
}

TEST_F(AudioIngestTest, theEndOfTheSourceBringsWhatTheConverterHeldBack) {
    ingest.finishConversion(start); // Without a converter there is nothing.
    EXPECT_EQ(chunker.bufferedSamples(), 0U);
    ScriptedConverter& converter = useScriptedConverter();
    converter.rest = {0.25F, 0.5F};
    ingest.finishConversion(start);
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.25F, 0.5F));
    converter.error = QStringLiteral("broken");
    ingest.finishConversion(start);
    EXPECT_EQ(chunker.bufferedSamples(), 0U);
    EXPECT_EQ(log.lines().last(), QStringLiteral("❌ Konvertierungsfehler: broken"));
}

TEST_F(AudioIngestTest, takesAScreenBlockAsItLies) {
    // Left channel first, then right, and two bytes too many, at an odd address.
    const std::array<float, 4> planar{0.1F, 0.2F, -0.1F, -0.2F};
    std::array<std::byte, 1 + sizeof planar + 2> bytes{};
    std::memcpy(bytes.data() + 1, planar.data(), sizeof planar);
    ingest.addScreenCaptureBlock(std::span(bytes).subspan(1), start);
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.1F, 0.2F, -0.1F, -0.2F));
}

TEST_F(AudioIngestTest, fewerThanFourBytesAreAnEmptyBuffer) {
    const std::array<std::byte, 3> bytes{};
    meter.apply(1.0F);
    ingest.addScreenCaptureBlock(bytes, start);
    ingest.addScreenCaptureBlock({}, start);
    EXPECT_EQ(chunker.bufferedSamples(), 0U);
    EXPECT_TRUE(metered()) << "an empty buffer is a buffer of silence to the meter";
    EXPECT_FLOAT_EQ(meter.audioLevel(), 0.3F * 0.7F * 0.7F);
}

TEST_F(AudioIngestTest, theMeterSeesEveryBufferInOrder) {
    const std::vector<float> full(480, 1.0F);
    const std::vector<float> silence(480, 0.0F);
    ingest.addSamplesToBuffer(full, start);
    ingest.addSamplesToBuffer(silence, start);
    ingest.addSamplesToBuffer(silence, start);
    EXPECT_EQ(meter.audioLevel(), 0.0F) << "nothing before main looks";
    EXPECT_TRUE(metered());
    EXPECT_FLOAT_EQ(meter.audioLevel(), 0.3F * 0.7F * 0.7F);
    EXPECT_FLOAT_EQ(meter.peakLevel(), 0.95F * 0.95F);
    EXPECT_FALSE(metered());
}

TEST_F(AudioIngestTest, scaledAndClampedSamplesAreBuffered) {
    ingest.pipeline().setGain(3.0F);
    ingest.addSamplesToBuffer(std::array{0.5F, -1.0F, 0.1F}, start);
    const std::vector<float> samples = chunker.takeAll();
    EXPECT_THAT(samples, ElementsAre(1.0F, -1.0F, 0.1F * 3.0F));
    EXPECT_EQ(orv::pcm16(std::span(samples).first(2)), QByteArray::fromHex("ff7f0180"));
}

TEST_F(AudioIngestTest, aStreamTapReceivesTheSamplesAndNeitherBufferNorLinesNorPausesHappen) {
    chunker.setVadEnabled(true);
    chunker.setConnected(true);
    ingest.pipeline().setGain(2.0F);
    std::vector<float> tapped;
    ingest.setStreamTap([&](std::span<const float> samples) {
        tapped.insert(tapped.end(), samples.begin(), samples.end());
    });
    const std::vector<float> samples(48000, 0.4F);
    for (int i = 0; i < 20; ++i) {
        ingest.addSamplesToBuffer(samples, start + i * 1s);
    }
    EXPECT_EQ(tapped, std::vector<float>(std::size_t{20} * 48000, 0.8F));
    EXPECT_EQ(chunker.bufferedSamples(), 0U);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(chunks, IsEmpty());
    EXPECT_TRUE(metered());
    EXPECT_GT(meter.audioLevel(), 0.9F);

    ingest.setStreamTap({});
    ingest.addSamplesToBuffer(samples, start + 20s);
    EXPECT_EQ(chunker.bufferedSamples() + (chunks.empty() ? 0 : chunks[0].samples.size()), 48000U);
    EXPECT_TRUE(log.containsStart(u"🎤 Buffer: 48000 samples (~1s)"_s));
}

TEST_F(AudioIngestTest, whenStreamingEndsDuringARunTheChunkerGetsTheSamples) {
    int tapped = 0;
    ingest.setStreamTap([&](std::span<const float>) { ++tapped; });
    const std::vector<float> samples(480, 0.1F);
    ingest.addSamplesToBuffer(samples, start);
    ingest.endStreaming();
    ingest.addSamplesToBuffer(samples, start);
    EXPECT_EQ(tapped, 1);
    EXPECT_EQ(chunker.bufferedSamples(), 480U);
}

TEST_F(AudioIngestTest, pausesAreFoundFromTheLevelOfTheGainedSamples) {
    chunker.setVadEnabled(true);
    chunker.setConnected(true);
    const std::vector<float> whisper(4800, 0.012F); // -38.4 dB; with the gain -34.9 dB.
    ingest.addSamplesToBuffer(whisper, start);
    EXPECT_THAT(log.lines(), IsEmpty());
    ingest.pipeline().setGain(1.5F);
    ingest.addSamplesToBuffer(whisper, start);
    EXPECT_EQ(log.lines(), QStringList(u"🗣 VAD: Sprache-Start (dB=-34.9 > thr=-35)"_s));
}

TEST_F(AudioIngestTest, theStateLineShowsTheAdaptedGain) {
    ingest.pipeline().setAutoGain(true);
    ingest.addSamplesToBuffer(std::vector<float>(48000, 1.0F), start);
    EXPECT_EQ(log.lines(),
              QStringList(u"🎤 Buffer: 48000 samples (~1s) | 0.0 dB | Gain: 0.91x | VAD=OFF"_s));
}

TEST_F(AudioIngestTest, noValueOutsideTheRangeEverReachesTheBuffer) {
    ingest.pipeline().setGain(3.0F);
    constexpr float infinity = std::numeric_limits<float>::infinity();
    ingest.addSamplesToBuffer(std::array{std::numeric_limits<float>::quiet_NaN(), infinity,
                                         -infinity, 1e30F, -1e30F, 0.2F},
                              start);
    EXPECT_THAT(chunker.takeAll(), ElementsAre(0.0F, 0.0F, 0.0F, 1.0F, -1.0F, 0.2F * 3.0F));
}

} // namespace
