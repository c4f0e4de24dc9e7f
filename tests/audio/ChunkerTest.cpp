#include "Chunker.h"

#include "LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using orv::Chunk;
using orv::Chunker;
using orv::ChunkRoute;
using orv::ProcessedBuffer;
using orv::test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr float loud = -20.0F;
constexpr float quiet = -45.0F;
const Chunker::TimePoint start{1000h};
/// Of a buffer of 4800 samples.
constexpr auto tenth = 100ms;

class ChunkerTest : public testing::Test {
  protected:
    /// Appends `count` samples, numbered through, of the given level.
    void add(std::size_t count, float levelDb, Chunker::TimePoint now) {
        std::vector<float> samples(count);
        std::generate(samples.begin(), samples.end(), [this] { return next_++; });
        ProcessedBuffer buffer;
        buffer.samples = samples;
        buffer.levelDb = levelDb;
        chunker.addSamples(buffer, now);
    }

    /// Appends buffers of a tenth of a second from `now_` until just before `end`.
    void addUntil(Chunker::TimePoint end, float levelDb) {
        for (; now_ < end; now_ += tenth) {
            add(4800, levelDb, now_);
        }
    }

    /// Lines but for the one per second of audio.
    QStringList lines() const {
        QStringList all = log.lines();
        all.removeIf([](const QString& line) { return line.startsWith(u"🎤 Buffer: "); });
        return all;
    }

    std::vector<std::size_t> chunkSizes() const {
        std::vector<std::size_t> sizes;
        for (const Chunk& chunk : chunks) {
            sizes.push_back(chunk.samples.size());
        }
        return sizes;
    }

    LogCapture log;
    std::vector<Chunk> chunks;
    Chunker chunker{[this](Chunk&& chunk) { chunks.push_back(std::move(chunk)); }, start, 48000};
    Chunker::TimePoint now_ = start;
    float next_ = 0;
};

TEST_F(ChunkerTest, hasTheDefaultsOfANewRun) {
    EXPECT_TRUE(chunker.vadEnabled());
    EXPECT_EQ(chunker.vadSilenceDuration(), 600.0);
    EXPECT_EQ(chunker.vadThreshold(), -35.0F);
    EXPECT_FALSE(chunker.isConnected());
    EXPECT_EQ(chunker.route(), ChunkRoute::Backend);
    EXPECT_EQ(chunker.currentSampleRate(), 48000.0);
    EXPECT_EQ(chunker.minChunkSamples, 20000);
    EXPECT_EQ(chunker.bufferedSamples(), 0U);
}

TEST_F(ChunkerTest, keepsExactly20000SamplesAndSaysSo) {
    chunker.setConnected(true);
    add(20000, quiet, start);
    EXPECT_FALSE(chunker.sendAudioChunk());
    EXPECT_EQ(lines(),
              QStringList(u"⏳ Zu wenig Audio: 20000 samples — Buffer bleibt, warte auf mehr"_s));
    EXPECT_EQ(chunker.bufferedSamples(), 20000U);
    EXPECT_THAT(chunks, IsEmpty());
}

TEST_F(ChunkerTest, sends20001Samples) {
    chunker.setConnected(true);
    add(20001, quiet, start);
    EXPECT_TRUE(chunker.sendAudioChunk());
    EXPECT_EQ(lines(), QStringList(u"🎵 Dispatche 20001 Samples @ 48000Hz an sendQueue (async)"_s));
    EXPECT_EQ(chunker.bufferedSamples(), 0U);
    ASSERT_EQ(chunks.size(), 1U);
    EXPECT_EQ(chunks[0].samples.size(), 20001U);
    EXPECT_EQ(chunks[0].samples.front(), 0.0F);
    EXPECT_EQ(chunks[0].samples.back(), 20000.0F);
    EXPECT_EQ(chunks[0].route, ChunkRoute::Backend);
    EXPECT_EQ(chunks[0].sampleRate, 48000.0);
}

TEST_F(ChunkerTest, anEmptyBufferIsRefusedWithoutALine) {
    chunker.setConnected(true);
    EXPECT_FALSE(chunker.sendAudioChunk());
    chunker.setRoute(ChunkRoute::DirectEngine);
    EXPECT_FALSE(chunker.sendAudioChunk());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ChunkerTest, withoutALinkEverythingStays) {
    add(30000, quiet, start);
    EXPECT_FALSE(chunker.sendAudioChunk());
    EXPECT_EQ(lines(), QStringList(u"🚫 sendAudioChunk: nicht verbunden"_s));
    EXPECT_EQ(chunker.bufferedSamples(), 30000U);
    chunker.setConnected(true);
    EXPECT_TRUE(chunker.sendAudioChunk());
    EXPECT_THAT(chunkSizes(), ElementsAre(30000U));
}

TEST_F(ChunkerTest, aDirectEngineHasTheSameBoundAndItsOwnLines) {
    chunker.setConnected(true);
    chunker.setRoute(ChunkRoute::DirectEngine);
    add(20000, quiet, start);
    EXPECT_FALSE(chunker.sendAudioChunk());
    add(1, quiet, start);
    EXPECT_TRUE(chunker.sendAudioChunk());
    EXPECT_EQ(lines(), QStringList({u"⏳ Direct Engine: Zu wenig Audio: 20000 samples — warte"_s,
                                    u"🎵 Direct Engine: Sende 20001 Samples"_s}));
    ASSERT_EQ(chunks.size(), 1U);
    EXPECT_EQ(chunks[0].route, ChunkRoute::DirectEngine);
    EXPECT_EQ(chunks[0].samples.size(), 20001U);
}

TEST_F(ChunkerTest, theSmallestChunkFieldOnlyDocuments) {
    chunker.setConnected(true);
    chunker.minChunkSamples = 10;
    add(20000, quiet, start);
    EXPECT_FALSE(chunker.sendAudioChunk());
    chunker.minChunkSamples = 1'000'000;
    add(1, quiet, start);
    EXPECT_TRUE(chunker.sendAudioChunk());
}

TEST_F(ChunkerTest, tellsItsStateWheneverASecondIsFull) {
    chunker.setVadEnabled(false);
    add(47999, -30.0F, start);
    EXPECT_THAT(log.lines(), IsEmpty());
    add(1, -30.0F, start);
    EXPECT_EQ(log.lines(),
              QStringList(u"🎤 Buffer: 48000 samples (~1s) | -30.0 dB | Gain: 1.00x | VAD=OFF"_s));
    log.clear();
    add(47000, -30.0F, start);
    EXPECT_THAT(log.lines(), IsEmpty()) << "the total is merely large";
    chunker.setVadEnabled(true);
    add(2000, -30.0F, start);
    EXPECT_EQ(log.lines().first(),
              u"🎤 Buffer: 97000 samples (~2s) | -30.0 dB | Gain: 1.00x | VAD=ON"_s);
}

TEST_F(ChunkerTest, aBufferLongerThanASecondAlwaysTellsTheState) {
    chunker.setVadEnabled(false);
    add(48001, -30.0F, start);
    add(50000, -30.0F, start);
    EXPECT_EQ(log.lines().size(), 2);
}

TEST_F(ChunkerTest, anEmptyBufferNeverTellsTheState) {
    chunker.setVadEnabled(false);
    add(0, -80.0F, start);
    add(48000, -30.0F, start);
    log.clear();
    add(0, -80.0F, start);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ChunkerTest, warnsOfVeryQuietSoundBelowMinus50) {
    chunker.setVadEnabled(false);
    add(48000, -50.0F, start);
    EXPECT_EQ(log.lines().size(), 1);
    add(48000, -50.1F, start);
    EXPECT_EQ(log.lines().size(), 3);
    EXPECT_EQ(log.lines().last(), u"⚠️ Audio sehr leise!"_s);
}

TEST_F(ChunkerTest, showsTheGainOfTheNextBuffer) {
    chunker.setVadEnabled(false);
    const std::vector<float> samples(48000);
    ProcessedBuffer buffer;
    buffer.samples = samples;
    buffer.gain = 1.826F;
    buffer.levelDb = -12.34F;
    chunker.addSamples(buffer, start);
    EXPECT_EQ(log.lines(),
              QStringList(u"🎤 Buffer: 48000 samples (~1s) | -12.3 dB | Gain: 1.83x | VAD=OFF"_s));
}

TEST_F(ChunkerTest, sendsAtAPauseWithAllItsLines) {
    chunker.setConnected(true);
    addUntil(start + 2s, loud);
    addUntil(start + 4s, quiet);
    EXPECT_EQ(lines(),
              QStringList({u"🗣 VAD: Sprache-Start (dB=-20.0 > thr=-35)"_s,
                           u"🤫 VAD: Stille-Start (dB=-45.0)"_s,
                           u"✂️ VAD: Pause-Grenze erreicht (600ms) → Send"_s,
                           u"🎵 Dispatche 129600 Samples @ 48000Hz an sendQueue (async)"_s}));
    EXPECT_THAT(chunkSizes(), ElementsAre(27U * 4800));
}

TEST_F(ChunkerTest, anEarlyPauseWaitsUntilASecondHasPassedSinceTheLastSend) {
    chunker.setConnected(true);
    chunker.setVadSilenceDuration(300.0);
    addUntil(start + 500ms, loud);
    addUntil(start + 1s, quiet); // Quiet from 0.5 s; 300 ms are over at 0.8 s.
    EXPECT_THAT(chunks, IsEmpty());
    addUntil(start + 1s + tenth, quiet);
    EXPECT_THAT(chunkSizes(), ElementsAre(11U * 4800));
}

TEST_F(ChunkerTest, aPauseOf600MillisecondsThatBeginsHalfASecondAfterASendWaitsForItsOwnEnd) {
    chunker.setConnected(true);
    addUntil(start + 500ms, loud);
    addUntil(start + 1100ms, quiet); // The last buffer is at 1.0 s, 500 ms into the pause.
    EXPECT_THAT(chunks, IsEmpty());
    addUntil(start + 1200ms, quiet);
    EXPECT_EQ(chunks.size(), 1U);
}

TEST_F(ChunkerTest, aPauseWithTooLittleSoundIsTriedAgainWithEachQuietBuffer) {
    chunker.setConnected(true);
    add(4800, loud, start + 2s);
    add(4800, quiet, start + 3s);
    add(4800, quiet, start + 4s);
    add(4800, quiet, start + 4100ms);
    const QStringList refusal{u"✂️ VAD: Pause-Grenze erreicht (600ms) → Send"_s,
                              u"⏳ Zu wenig Audio: 14400 samples — Buffer bleibt, warte auf mehr"_s,
                              u"⚠️ VAD wollte senden aber Buffer zu klein — warte weiter"_s};
    EXPECT_EQ(lines().mid(2, 3), refusal);
    EXPECT_EQ(lines().size(), 8);
    EXPECT_THAT(chunks, IsEmpty());
    add(4800, quiet, start + 4200ms);
    EXPECT_THAT(chunkSizes(), ElementsAre(24000U));
}

TEST_F(ChunkerTest, aLoudBufferInASilenceMakesItBeginAnew) {
    chunker.setConnected(true);
    addUntil(start + 2s, loud);
    addUntil(start + 2500ms, quiet);
    addUntil(start + 2600ms, loud);
    addUntil(start + 3200ms, quiet); // Up to 500 ms after the new beginning at 2.6 s.
    EXPECT_THAT(chunks, IsEmpty());
    addUntil(start + 3300ms, quiet);
    EXPECT_EQ(chunks.size(), 1U);
    EXPECT_EQ(log.count(u"🗣 VAD: Sprache-Start (dB=-20.0 > thr=-35)"_s), 1);
    EXPECT_EQ(log.count(u"🤫 VAD: Stille-Start (dB=-45.0)"_s), 2);
}

TEST_F(ChunkerTest, speechOf20SecondsLeavesAfter8And16SecondsAndAtThePause) {
    chunker.setConnected(true);
    std::vector<Chunker::TimePoint> sent;
    for (; now_ < start + 22s; now_ += tenth) {
        add(4800, now_ < start + 20s ? loud : quiet, now_);
        while (sent.size() < chunks.size()) {
            sent.push_back(now_);
        }
    }
    EXPECT_THAT(sent, ElementsAre(start + 8s, start + 16s, start + 20600ms));
    EXPECT_THAT(chunkSizes(), ElementsAre(81U * 4800, 80U * 4800, 46U * 4800));
    EXPECT_EQ(log.count(u"⏳ VAD: Max-Chunk (8s) erreicht → Send"_s), 2);
    EXPECT_EQ(log.count(u"🗣 VAD: Sprache-Start (dB=-20.0 > thr=-35)"_s), 1)
        << "a forced send does not end the utterance";
}

TEST_F(ChunkerTest, silenceLeavesEvery8SecondsToo) {
    chunker.setConnected(true);
    addUntil(start + 17s, quiet);
    EXPECT_THAT(chunkSizes(), ElementsAre(81U * 4800, 80U * 4800));
    EXPECT_EQ(log.count(u"⏳ VAD: Max-Chunk (8s) erreicht → Send"_s), 2);
}

TEST_F(ChunkerTest, aForcedSendThatFailsIsTriedWithEveryBuffer) {
    addUntil(start + 8s + 3 * tenth, quiet);
    EXPECT_EQ(
        lines(),
        QStringList(
            {u"⏳ VAD: Max-Chunk (8s) erreicht → Send"_s, u"🚫 sendAudioChunk: nicht verbunden"_s,
             u"⏳ VAD: Max-Chunk (8s) erreicht → Send"_s, u"🚫 sendAudioChunk: nicht verbunden"_s,
             u"⏳ VAD: Max-Chunk (8s) erreicht → Send"_s, u"🚫 sendAudioChunk: nicht verbunden"_s}));
    chunker.setConnected(true);
    addUntil(start + 8s + 4 * tenth, quiet);
    EXPECT_THAT(chunkSizes(), ElementsAre(84U * 4800));
}

TEST_F(ChunkerTest, aPauseSendAtTheForcedSecondIsFollowedByTheForcedLine) {
    chunker.setConnected(true);
    addUntil(start + 7500ms, loud);
    add(4800, quiet, start + 7500ms);
    add(4800, quiet, start + 8100ms);
    EXPECT_EQ(lines().last(), u"⏳ VAD: Max-Chunk (8s) erreicht → Send"_s);
    EXPECT_EQ(chunks.size(), 1U) << "the second send finds nothing left";
}

TEST_F(ChunkerTest, aLevelEqualToTheThresholdIsQuiet) {
    chunker.setConnected(true);
    add(4800, -35.0F, start);
    EXPECT_THAT(lines(), IsEmpty());
    chunker.setVadThreshold(-35.5F);
    add(4800, -35.0F, start + tenth);
    EXPECT_EQ(lines(), QStringList(u"🗣 VAD: Sprache-Start (dB=-35.0 > thr=-35)"_s));
}

TEST_F(ChunkerTest, settingsCountFromTheNextBuffer) {
    chunker.setConnected(true);
    addUntil(start + 2s, loud);
    addUntil(start + 2400ms, quiet);
    EXPECT_THAT(chunks, IsEmpty());
    chunker.setVadSilenceDuration(350.9);
    addUntil(start + 2500ms, quiet);
    EXPECT_EQ(chunks.size(), 1U);
    EXPECT_TRUE(log.contains(u"✂️ VAD: Pause-Grenze erreicht (350ms) → Send"_s));
}

TEST_F(ChunkerTest, withoutPauseDetectionNothingLeavesByItself) {
    chunker.setConnected(true);
    chunker.setVadEnabled(false);
    addUntil(start + 5s, loud);
    addUntil(start + 20s, quiet);
    EXPECT_THAT(chunks, IsEmpty());
    EXPECT_THAT(lines(), IsEmpty());
    EXPECT_TRUE(chunker.sendAudioChunk()) << "the timer's part";
    EXPECT_THAT(chunkSizes(), ElementsAre(200U * 4800));
}

TEST_F(ChunkerTest, switchingPauseDetectionOnBeginsAfresh) {
    chunker.setConnected(true);
    addUntil(start + 5s, loud);
    chunker.setVadEnabled(false);
    addUntil(start + 7s, quiet);
    chunker.setVadEnabled(true);
    chunker.reset(now_);
    log.clear();
    addUntil(start + 14900ms, quiet);
    EXPECT_THAT(lines(), IsEmpty()) << "neither the old utterance nor the old clock counts";
    addUntil(start + 15100ms, quiet);
    EXPECT_THAT(chunkSizes(), ElementsAre(151U * 4800));
}

TEST_F(ChunkerTest, anEmptyBufferStillDrivesPauseDetection) {
    chunker.setConnected(true);
    addUntil(start + 2s, loud);
    add(0, -80.0F, start + 2s);
    EXPECT_EQ(lines().last(), u"🤫 VAD: Stille-Start (dB=-80.0)"_s);
    add(0, -80.0F, start + 2600ms);
    EXPECT_THAT(chunkSizes(), ElementsAre(20U * 4800));
}

TEST_F(ChunkerTest, theEndOfARunTakesOrClearsTheRest) {
    add(1000, quiet, start);
    EXPECT_EQ(chunker.takeAll().size(), 1000U);
    add(500, quiet, start);
    chunker.clear();
    EXPECT_EQ(chunker.bufferedSamples(), 0U);
    EXPECT_THAT(chunks, IsEmpty());
}

TEST_F(ChunkerTest, aHandlerThatSendsAgainKeepsTheOrder) {
    std::vector<std::size_t> sizes;
    Chunker* inner = nullptr;
    Chunker nested(
        [&](Chunk&& chunk) {
            if (sizes.empty()) {
                const std::vector<float> more(30000);
                ProcessedBuffer buffer;
                buffer.samples = more;
                buffer.levelDb = quiet;
                inner->addSamples(buffer, start);
                EXPECT_TRUE(inner->sendAudioChunk());
                EXPECT_TRUE(sizes.empty()) << "the second chunk waits for the first";
            }
            sizes.push_back(chunk.samples.size());
        },
        start, 48000);
    inner = &nested;
    nested.setConnected(true);
    const std::vector<float> samples(25000);
    ProcessedBuffer buffer;
    buffer.samples = samples;
    nested.addSamples(buffer, start);
    EXPECT_TRUE(nested.sendAudioChunk());
    EXPECT_THAT(sizes, ElementsAre(25000U, 30000U));
}

// Whatever sizes, levels, gaps, modes and connections come: what went in comes out once, in order.
class ChunkerProperty : public testing::TestWithParam<unsigned> {};

TEST_P(ChunkerProperty, noSampleIsLostOrReordered) {
    const LogCapture log;
    std::mt19937 random(GetParam());
    const auto between = [&random](int low, int high) {
        return std::uniform_int_distribution(low, high)(random);
    };
    std::vector<float> out;
    std::vector<std::size_t> sizes;
    Chunker* self = nullptr;
    Chunker chunker(
        [&](Chunk&& chunk) {
            sizes.push_back(chunk.samples.size());
            out.insert(out.end(), chunk.samples.begin(), chunk.samples.end());
            self->recycle(std::move(chunk.samples));
        },
        start, 30000);
    self = &chunker;
    std::vector<float> in;
    std::vector<float> samples;
    Chunker::TimePoint now = start;
    for (int i = 0; i < 2000; ++i) {
        samples.resize(
            static_cast<std::size_t>(between(0, 40) == 0 ? between(0, 60000) : between(0, 5000)));
        for (float& sample : samples) {
            sample = static_cast<float>(in.size() % 16'000'000);
            in.push_back(sample);
        }
        ProcessedBuffer buffer;
        buffer.samples = samples;
        buffer.levelDb = static_cast<float>(between(-800, 0)) / 10.0F;
        chunker.addSamples(buffer, now);
        now += std::chrono::milliseconds(between(0, 400));
        switch (between(0, 60)) {
        case 0:
            chunker.setConnected(!chunker.isConnected());
            break;
        case 1:
            chunker.setVadEnabled(!chunker.vadEnabled());
            break;
        case 2:
            chunker.reset(now);
            break;
        case 3:
            chunker.sendAudioChunk();
            break;
        case 4:
            chunker.setVadSilenceDuration(between(0, 1000));
            break;
        default:
            break;
        }
    }
    EXPECT_FALSE(sizes.empty());
    EXPECT_TRUE(
        std::all_of(sizes.begin(), sizes.end(), [](std::size_t size) { return size > 20000; }));
    const std::vector<float> rest = chunker.takeAll();
    out.insert(out.end(), rest.begin(), rest.end());
    EXPECT_TRUE(out == in);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ChunkerProperty, testing::Range(0U, 8U));

} // namespace
