#include "SharedInstance.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace orv {

namespace {

TEST(SharedInstance, isMadeOnFirstUseAndOnlyOnce) {
    int made = 0;
    SharedInstance<int> shared;
    shared.install([&] { return std::make_unique<int>(++made); });
    EXPECT_EQ(made, 0);
    int& first = shared.get();
    EXPECT_EQ(&shared.get(), &first);
    EXPECT_EQ(made, 1);
}

TEST(SharedInstance, isMadeOnceAlsoWhenManyThreadsAskAtTheSameTime) {
    std::atomic<int> made = 0;
    SharedInstance<int> shared;
    shared.install([&] { return std::make_unique<int>(++made); });
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&shared] { EXPECT_EQ(shared.get(), 1); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(made, 1);
}

TEST(SharedInstance, isDestroyedAndMadeAnewAfterAnotherFactoryIsInstalled) {
    const auto alive = std::make_shared<int>(0);
    SharedInstance<std::shared_ptr<int>> shared;
    shared.install([alive] { return std::make_unique<std::shared_ptr<int>>(alive); });
    shared.get();
    EXPECT_EQ(alive.use_count(), 3); // Here, in the factory, in the instance.
    shared.install({});
    EXPECT_EQ(alive.use_count(), 1);
}

TEST(SharedInstanceDeathTest, endsTheProgramWhenNothingIsInstalled) {
    SharedInstance<int> shared;
    EXPECT_DEATH(shared.get(), "before it was installed");
}

} // namespace

} // namespace orv
