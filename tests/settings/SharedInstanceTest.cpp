#include "SharedInstance.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace orv {

namespace {

/// A class with a `shared()`, the way the program's own are written.
class Lamp {
  public:
    static Lamp& shared() { return SharedInstance<Lamp>::get(); }

    int number = 0;

  private:
    SharedInstance<Lamp> sharedInstance_{*this};
};

TEST(SharedInstance, isTheObjectThereIs) {
    Lamp lamp;
    EXPECT_EQ(&Lamp::shared(), &lamp);
}

TEST(SharedInstance, isTheNewestOfSeveralAndThenTheOneBefore) {
    Lamp first;
    {
        Lamp second;
        EXPECT_EQ(&Lamp::shared(), &second);
    }
    EXPECT_EQ(&Lamp::shared(), &first);
}

TEST(SharedInstance, anOlderOneThatGoesChangesNothing) {
    auto first = std::make_unique<Lamp>();
    Lamp second;
    first.reset();
    EXPECT_EQ(&Lamp::shared(), &second);
}

TEST(SharedInstance, differentClassesKnowNothingOfEachOther) {
    class Bell {
        SharedInstance<Bell> sharedInstance_{*this};
    };

    Lamp lamp;
    const Bell bell;
    EXPECT_EQ(&Lamp::shared(), &lamp);
    EXPECT_EQ(&SharedInstance<Bell>::get(), &bell);
}

TEST(SharedInstance, isFoundFromManyThreadsWhileOthersComeAndGo) {
    Lamp lamp;
    lamp.number = 7;
    std::atomic<int> found = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&found] {
            for (int turn = 0; turn < 1000; ++turn) {
                // Only the object that outlives the threads may be looked into.
                found += &Lamp::shared() != nullptr ? 1 : 0;
            }
        });
        threads.emplace_back([] {
            for (int turn = 0; turn < 1000; ++turn) {
                const Lamp brief;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(found, 4000);
    EXPECT_EQ(Lamp::shared().number, 7);
}

TEST(SharedInstanceDeathTest, endsTheProgramBeforeThereIsOne) {
    EXPECT_DEATH(Lamp::shared(), "while there is none");
}

TEST(SharedInstanceDeathTest, endsTheProgramWhenTheLastOneIsGone) {
    { const Lamp lamp; }
    EXPECT_DEATH(Lamp::shared(), "while there is none");
}

} // namespace

} // namespace orv
