#include "SerialQueue.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <pthread.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv {

TEST(SerialQueue, runsJobsInTheOrderOfPosting) {
    std::vector<int> order;
    {
        SerialQueue queue(u"test"_s);
        for (int job = 0; job < 1000; ++job) {
            queue.post([&order, job] { order.push_back(job); });
        }
    }
    ASSERT_EQ(order.size(), 1000U);
    for (int job = 0; job < 1000; ++job) {
        EXPECT_EQ(order[static_cast<std::size_t>(job)], job);
    }
}

TEST(SerialQueue, keepsTheOrderOfEachOfSeveralPosters) {
    std::vector<std::pair<int, int>> order;
    {
        SerialQueue queue(u"test"_s);
        std::vector<std::thread> posters;
        posters.reserve(4);
        for (int poster = 0; poster < 4; ++poster) {
            posters.emplace_back([&queue, &order, poster] {
                for (int job = 0; job < 500; ++job) {
                    queue.post([&order, poster, job] { order.emplace_back(poster, job); });
                }
            });
        }
        for (std::thread& poster : posters) {
            poster.join();
        }
    }
    std::array<int, 4> next = {};
    for (const auto& [poster, job] : order) {
        EXPECT_EQ(job, next.at(static_cast<std::size_t>(poster))++);
    }
    EXPECT_EQ(next, (std::array<int, 4>{500, 500, 500, 500}));
}

TEST(SerialQueue, syncWaitsForEverythingPostedBefore) {
    SerialQueue queue(u"test"_s);
    int sum = 0;
    for (int round = 0; round < 200; ++round) {
        queue.post([&] { ++sum; });
        queue.post([&] { ++sum; });
        int seen = 0;
        queue.sync([&] { seen = sum; });
        ASSERT_EQ(seen, 2 * (round + 1));
        ASSERT_EQ(sum, seen);
    }
}

TEST(SerialQueue, destroyingItRunsWhatWasPostedAlsoByJobs) {
    int ran = 0;
    {
        SerialQueue queue(u"test"_s);
        queue.post([&] {
            ++ran;
            queue.post([&] {
                ++ran;
                queue.post([&] { ++ran; });
            });
        });
    }
    EXPECT_EQ(ran, 3);
}

TEST(SerialQueue, knowsItsOwnThread) {
    SerialQueue queue(u"test"_s);
    EXPECT_FALSE(queue.isCurrent());
    bool inside = false;
    queue.sync([&] { inside = queue.isCurrent(); });
    EXPECT_TRUE(inside);
}

TEST(SerialQueue, aJobIsDestroyedOnTheQueueBeforeTheNextOneRuns) {
    SerialQueue queue(u"test"_s);
    std::weak_ptr<int> held;
    {
        auto value = std::make_shared<int>(1);
        held = value;
        queue.post([value = std::move(value)] { EXPECT_EQ(*value, 1); });
    }
    bool expired = false;
    queue.sync([&] { expired = held.expired(); });
    EXPECT_TRUE(expired);
}

TEST(SerialQueue, namesItsThreadByTheLabelsEnd) {
    SerialQueue queue(u"io.tavrin.orv.audio-send"_s);
    EXPECT_EQ(queue.label(), u"io.tavrin.orv.audio-send"_s);
    std::array<char, 16> name = {};
    queue.sync([&] { pthread_getname_np(pthread_self(), name.data(), name.size()); });
    EXPECT_EQ(std::string(name.data()), ".orv.audio-send");
}

} // namespace orv
