#include "FrameCollector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace {

using orv::FrameCollector;
using testing::ElementsAre;
using testing::IsEmpty;

class FrameCollectorTest : public testing::Test {
  protected:
    void push(FrameCollector& collector, const float* samples, std::size_t frames,
              std::size_t bufferSize) {
        collector.push(samples, frames,
                       [&](const float* full) { buffers.emplace_back(full, full + bufferSize); });
    }

    std::vector<std::vector<float>> buffers;
};

TEST_F(FrameCollectorTest, takesTheFirstChannelInBuffersOfOneSize) {
    FrameCollector collector(2, 3);
    const std::array<float, 15> samples{1, 9, 9, 2, 9, 9, 3, 9, 9, 4, 9, 9, 5, 9, 9};
    push(collector, samples.data(), 1, 2);
    EXPECT_THAT(buffers, IsEmpty());
    push(collector, samples.data() + 3, 4, 2);
    EXPECT_THAT(buffers, ElementsAre(ElementsAre(1, 2), ElementsAre(3, 4)));
}

TEST_F(FrameCollectorTest, fillsAHoleWithSilence) {
    FrameCollector collector(4, 1);
    const std::array<float, 2> samples{1, 2};
    push(collector, samples.data(), 2, 4);
    push(collector, nullptr, 6, 4);
    EXPECT_THAT(buffers, ElementsAre(ElementsAre(1, 2, 0, 0), ElementsAre(0, 0, 0, 0)));
}

TEST_F(FrameCollectorTest, handsOutWhatHasGatheredAtTheEndOnce) {
    FrameCollector collector(4, 2);
    const std::array<float, 12> samples{1, 9, 2, 9, 3, 9, 4, 9, 5, 9, 6, 9};
    push(collector, samples.data(), 6, 4);
    for (int flush = 0; flush < 2; ++flush) {
        collector.flush([&](const float* rest, std::size_t frames) {
            buffers.emplace_back(rest, rest + frames);
        });
    }
    EXPECT_THAT(buffers, ElementsAre(ElementsAre(1, 2, 3, 4), ElementsAre(5, 6)));
}

} // namespace
