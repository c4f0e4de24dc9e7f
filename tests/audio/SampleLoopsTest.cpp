// Every kind of four floats gives the same as the others, so that a processor without the special
// instructions hears and sends the same sound.

#include "SampleLoops.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

namespace loops = orv::sampleLoops;

std::vector<float> noise(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> sample(-1.2F, 1.2F);
    std::vector<float> samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return sample(random); });
    return samples;
}

TEST(SampleLoops, allKindsWriteTheSamePcm) {
    for (std::size_t count = 0; count < 100; ++count) {
        std::vector<float> samples = noise(count, static_cast<unsigned>(count));
        const std::array odd{std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity(),
                             -std::numeric_limits<float>::infinity(),
                             1.0F,
                             -1.0F,
                             -0.0F};
        for (std::size_t i = 0; i < count; i += 3) {
            samples[i] = odd[i % odd.size()];
        }
        std::vector<char> fast(2 * count);
        std::vector<char> plain(2 * count);
        loops::writePcm16<orv::FourFloats>(samples, fast.data());
        loops::writePcm16<orv::PlainFourFloats>(samples, plain.data());
        ASSERT_EQ(fast, plain);
        for (std::size_t i = 0; i < count; ++i) {
            const int value = static_cast<signed char>(plain[2 * i + 1]) * 256 +
                              static_cast<unsigned char>(plain[2 * i]);
            ASSERT_EQ(value, orv::pcm16Sample(samples[i])) << samples[i];
        }
    }
}

TEST(SampleLoops, allKindsScaleMeasureAndClampTheSame) {
    for (std::size_t count = 0; count < 5000; count += count < 100 ? 1 : 331) {
        const std::vector<float> samples = noise(count, static_cast<unsigned>(count));
        std::vector<float> fast(count);
        std::vector<float> plain(count);
        const double fastSum = loops::scaleAndClamp<orv::FourFloats>(samples, 1.3F, fast.data());
        const double plainSum =
            loops::scaleAndClamp<orv::PlainFourFloats>(samples, 1.3F, plain.data());
        ASSERT_EQ(fast, plain);
        ASSERT_NEAR(fastSum, plainSum, 1e-6 * plainSum);
    }
}

TEST(SampleLoops, allKindsBetrayASampleThatIsNotFinite) {
    for (std::size_t at = 0; at < 37; ++at) {
        for (const float bad :
             {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::infinity()}) {
            std::vector<float> samples(37, 0.5F);
            samples[at] = bad;
            std::vector<float> out(37);
            EXPECT_FALSE(
                std::isfinite(loops::scaleAndClamp<orv::FourFloats>(samples, 1.0F, out.data())));
            EXPECT_FALSE(std::isfinite(
                loops::scaleAndClamp<orv::PlainFourFloats>(samples, 1.0F, out.data())));
        }
    }
}

} // namespace
