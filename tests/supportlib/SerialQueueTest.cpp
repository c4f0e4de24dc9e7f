#include "SerialQueue.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <future>
#include <memory>
#include <pthread.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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

TEST(SerialQueue, anUrgentJobComesBeforeAllThatWait) {
    std::vector<QString> order;
    {
        std::promise<void> begun;
        std::promise<void> posted;
        SerialQueue queue(u"test"_s); // Its last jobs run while it ends, and use the two.
        queue.post([&] {
            begun.set_value();
            posted.get_future().wait();
            order.push_back(u"under way"_s);
        });
        begun.get_future().wait();
        queue.post([&] {
            order.push_back(u"first"_s);
            queue.postUrgent([&] { order.push_back(u"urgent by a job"_s); });
        });
        queue.post([&] { order.push_back(u"second"_s); });
        queue.postUrgent([&] { order.push_back(u"urgent"_s); });
        queue.postUrgent([&] { order.push_back(u"urgent, too"_s); });
        posted.set_value();
    }
    EXPECT_EQ(order, (std::vector<QString>{u"under way"_s, u"urgent"_s, u"urgent, too"_s,
                                           u"first"_s, u"urgent by a job"_s, u"second"_s}));
}

TEST(SerialQueue, anUrgentJobNeedsNoOther) {
    SerialQueue queue(u"test"_s);
    std::promise<void> ran;
    queue.postUrgent([&] { ran.set_value(); });
    ran.get_future().wait();
}

TEST(SerialQueue, aLaterJobRunsNotBeforeItsTime) {
    using Clock = std::chrono::steady_clock;
    SerialQueue queue(u"test"_s);
    std::promise<Clock::time_point> ran;
    const Clock::time_point before = Clock::now();
    queue.postAfter(20ms, [&] { ran.set_value(Clock::now()); });
    EXPECT_GE(ran.get_future().get() - before, 20ms);
}

TEST(SerialQueue, laterJobsRunInTheOrderOfTheirTimes) {
    SerialQueue queue(u"test"_s);
    std::vector<int> order;
    std::promise<void> done;
    queue.sync([&] { // So that both are there before either is looked at.
        queue.postAfter(2ms, [&] {
            order.push_back(2);
            done.set_value();
        });
        queue.postAfter(1ms, [&] { order.push_back(1); });
    });
    done.get_future().wait();
    queue.sync([] {});
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(SerialQueue, destroyingItForgetsJobsWhoseTimeHasNotCome) {
    bool ran = false;
    {
        SerialQueue queue(u"test"_s);
        queue.postAfter(1h, [&] { ran = true; });
    }
    EXPECT_FALSE(ran);
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
