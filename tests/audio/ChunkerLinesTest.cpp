#include "ChunkerLines.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Qt::StringLiterals;
namespace lines = orv::chunkerLines;

TEST(ChunkerLines, saysHowTheBufferIs) {
    EXPECT_EQ(lines::buffer(48128, -23.456F, 1.0F, true),
              u"🎤 Buffer: 48128 samples (~1s) | -23.5 dB | Gain: 1.00x | VAD=ON"_s);
    EXPECT_EQ(lines::buffer(143'999, -80.0F, 0.505F, false),
              u"🎤 Buffer: 143999 samples (~2s) | -80.0 dB | Gain: 0.50x | VAD=OFF"_s);
    EXPECT_EQ(lines::veryQuiet(), u"⚠️ Audio sehr leise!"_s);
}

TEST(ChunkerLines, roundsLikePrintf) {
    EXPECT_EQ(lines::silenceStarted(-40.25F), u"🤫 VAD: Stille-Start (dB=-40.2)"_s);
    EXPECT_EQ(lines::silenceStarted(-40.75F), u"🤫 VAD: Stille-Start (dB=-40.8)"_s);
    EXPECT_EQ(lines::silenceStarted(-0.01F), u"🤫 VAD: Stille-Start (dB=-0.0)"_s);
}

TEST(ChunkerLines, showsIntegerPartsCutOffTowardZero) {
    EXPECT_EQ(lines::vadActive(600.9, -35.9F),
              u"⏱️ VAD Chunker aktiv (Pause: 600ms, Threshold: -35dB)"_s);
    EXPECT_EQ(lines::pauseReached(649.99), u"✂️ VAD: Pause-Grenze erreicht (649ms) → Send"_s);
    EXPECT_EQ(lines::speechStarted(-30.04F, -35.5F),
              u"🗣 VAD: Sprache-Start (dB=-30.0 > thr=-35)"_s);
    EXPECT_EQ(lines::dispatched(20001, 48000.7),
              u"🎵 Dispatche 20001 Samples @ 48000Hz an sendQueue (async)"_s);
}

TEST(ChunkerLines, survivesNumbersThatAreNone) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(lines::pauseReached(nan), u"✂️ VAD: Pause-Grenze erreicht (0ms) → Send"_s);
    EXPECT_EQ(lines::pauseReached(infinity),
              u"✂️ VAD: Pause-Grenze erreicht (2147483647ms) → Send"_s);
    EXPECT_EQ(lines::silenceStarted(-std::numeric_limits<float>::max()),
              u"🤫 VAD: Stille-Start (dB=-340282346638528859811704183484516925440.0)"_s);
}

TEST(ChunkerLines, saysWhatBecameOfAChunk) {
    EXPECT_EQ(lines::notConnected(), u"🚫 sendAudioChunk: nicht verbunden"_s);
    EXPECT_EQ(lines::tooLittle(20000),
              u"⏳ Zu wenig Audio: 20000 samples — Buffer bleibt, warte auf mehr"_s);
    EXPECT_EQ(lines::tooLittleForEngine(7),
              u"⏳ Direct Engine: Zu wenig Audio: 7 samples — warte"_s);
    EXPECT_EQ(lines::dispatchedToEngine(96000), u"🎵 Direct Engine: Sende 96000 Samples"_s);
    EXPECT_EQ(lines::conversionError(u"x"_s), u"❌ Konvertierungsfehler: x"_s);
}

TEST(ChunkerLines, saysHowChunksAreMade) {
    EXPECT_EQ(lines::timerFired(), u"⏰ 3s-Timer feuert → sendAudioChunk"_s);
    EXPECT_EQ(lines::timerStarted(), u"⏱️ Audio-Send-Timer gestartet (alle 3 Sekunden)"_s);
    EXPECT_EQ(lines::vadEnabledChanged(true, false, true),
              u"🎚 vadEnabled.didSet: true → false (isConnected=true)"_s);
    EXPECT_EQ(lines::vadEnabledChanged(false, true, false),
              u"🎚 vadEnabled.didSet: false → true (isConnected=false)"_s);
    EXPECT_EQ(lines::pauseTooSmall(),
              u"⚠️ VAD wollte senden aber Buffer zu klein — warte weiter"_s);
    EXPECT_EQ(lines::forced(), u"⏳ VAD: Max-Chunk (8s) erreicht → Send"_s);
}

} // namespace
