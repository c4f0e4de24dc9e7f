#include "MeterMailbox.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using orv::MeterMailbox;

std::vector<float> drained(MeterMailbox& mailbox) {
    std::vector<float> levels;
    mailbox.drain([&](float level) { levels.push_back(level); });
    return levels;
}

TEST(MeterMailbox, givesEveryLevelOnceInOrder) {
    MeterMailbox mailbox;
    EXPECT_FALSE(mailbox.drain([](float) {}));
    EXPECT_TRUE(mailbox.post(0.1F));
    EXPECT_TRUE(mailbox.post(0.2F));
    EXPECT_EQ(drained(mailbox), (std::vector<float>{0.1F, 0.2F}));
    EXPECT_TRUE(drained(mailbox).empty());
    EXPECT_TRUE(mailbox.post(0.3F));
    EXPECT_TRUE(mailbox.drain([](float) {}));
}

TEST(MeterMailbox, dropsWhatDoesNotFitAndKeepsWhatWasThere) {
    MeterMailbox mailbox;
    for (std::size_t i = 0; i < MeterMailbox::capacity; ++i) {
        ASSERT_TRUE(mailbox.post(static_cast<float>(i)));
    }
    EXPECT_FALSE(mailbox.post(-1.0F));
    const std::vector<float> levels = drained(mailbox);
    ASSERT_EQ(levels.size(), MeterMailbox::capacity);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        ASSERT_EQ(levels[i], static_cast<float>(i));
    }
    EXPECT_TRUE(mailbox.post(1.0F));
    EXPECT_EQ(drained(mailbox), std::vector<float>{1.0F});
}

TEST(MeterMailbox, twoThreadsSeeTheSameLevelsInTheSameOrder) {
    MeterMailbox mailbox;
    constexpr int count = 100'000;
    std::thread capture([&] {
        for (int i = 0; i < count;) {
            if (mailbox.post(static_cast<float>(i))) {
                ++i;
            } else {
                std::this_thread::yield();
            }
        }
    });
    int expected = 0;
    bool inOrder = true;
    while (expected < count) {
        if (!mailbox.drain([&](float level) {
                inOrder = inOrder && level == static_cast<float>(expected);
                ++expected;
            })) {
            std::this_thread::yield();
        }
    }
    capture.join();
    EXPECT_TRUE(inOrder);
    EXPECT_EQ(expected, count);
}

} // namespace
