#include "Pcm16.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using orv::appendPcm16;
using orv::pcm16;
using orv::pcm16Sample;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

TEST(Pcm16, mapsFullScaleToPlusAndMinus32767) {
    EXPECT_EQ(pcm16Sample(1.0F), 32767);
    EXPECT_EQ(pcm16Sample(-1.0F), -32767);
    EXPECT_EQ(pcm16Sample(1.5F), 32767);
    EXPECT_EQ(pcm16Sample(-7.0F), -32767);
    EXPECT_EQ(pcm16Sample(0.0F), 0);
}

TEST(Pcm16, truncatesTowardZeroOnBothSides) {
    EXPECT_EQ(pcm16Sample(0.5F), 16383);
    EXPECT_EQ(pcm16Sample(-0.5F), -16383);
    EXPECT_EQ(pcm16Sample(0.99F / 32767.0F), 0);
    EXPECT_EQ(pcm16Sample(-0.99F / 32767.0F), 0);
    EXPECT_EQ(pcm16Sample(std::nextafter(1.0F, 0.0F)), 32766);
}

TEST(Pcm16, givesEveryNonFiniteValueADefinedResult) {
    EXPECT_EQ(pcm16Sample(nan), 0);
    EXPECT_EQ(pcm16Sample(-nan), 0);
    EXPECT_EQ(pcm16Sample(infinity), 32767);
    EXPECT_EQ(pcm16Sample(-infinity), -32767);
    EXPECT_EQ(pcm16Sample(std::numeric_limits<float>::max()), 32767);
    EXPECT_EQ(pcm16Sample(std::numeric_limits<float>::denorm_min()), 0);
}

TEST(Pcm16, writesLittleEndianInOrderWithoutAHeader) {
    const std::array<float, 5> samples{0.0F, 1.0F, -1.0F, 0.5F, -0.25F};
    // 0, 32767, -32767, 16383, -8191
    EXPECT_EQ(pcm16(samples), QByteArray::fromHex("0000ff7f0180ff3f01e0"));
}

TEST(Pcm16, hasNothingToWriteForNoSamples) {
    EXPECT_TRUE(pcm16({}).isEmpty());
}

TEST(Pcm16, appendsBehindWhatIsThere) {
    QByteArray bytes("ab");
    appendPcm16(bytes, std::array{1.0F, -1.0F});
    EXPECT_EQ(bytes, QByteArray::fromHex("6162ff7f0180"));
}

TEST(Pcm16, agreesWithTheRuleForEveryLengthAndAlignment) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> sample(-1.2F, 1.2F);
    for (std::size_t count = 0; count < 70; ++count) {
        std::vector<float> samples(count);
        for (float& value : samples) {
            value = sample(random);
        }
        QByteArray bytes("x"); // An odd start: the values lie unaligned.
        appendPcm16(bytes, samples);
        ASSERT_EQ(bytes.size(), 1 + 2 * static_cast<qsizetype>(count));
        for (std::size_t i = 0; i < count; ++i) {
            const auto at = 1 + 2 * static_cast<qsizetype>(i);
            const int value = static_cast<int>(static_cast<signed char>(bytes[at + 1])) * 256 +
                              static_cast<int>(static_cast<unsigned char>(bytes[at]));
            const double exact =
                samples[i] >= 1.0F ? 32767.0 : std::trunc(std::fmax(samples[i], -1.0F) * 32767.0F);
            ASSERT_EQ(value, static_cast<int>(exact)) << "sample " << samples[i];
        }
    }
}

} // namespace
