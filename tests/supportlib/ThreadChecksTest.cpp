#include "ThreadChecks.h"

#include "SerialQueue.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {

TEST(ThreadChecks, theMainThreadIsTheApplications) {
    EXPECT_TRUE(threadChecks::isMain());
    SerialQueue queue(u"test"_s);
    bool isMain = true;
    queue.sync([&isMain] { isMain = threadChecks::isMain(); });
    EXPECT_FALSE(isMain);
}

TEST(ThreadChecks, theRightThreadPasses) {
    SerialQueue queue(u"test"_s);
    ORV_ON_MAIN();
    queue.sync([&queue] { ORV_ON(queue); });
    threadChecks::demand(true, "anything");
}

TEST(ThreadChecksDeathTest, aWrongThreadEndsTheProcessWithTheFunctionsName) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(threadChecks::demand(false, "void take()"),
                 "called on the wrong thread: void take\\(\\)");
}

#ifndef NDEBUG
TEST(ThreadChecksDeathTest, aWrongThreadIsFound) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto callOnMain = [] {
        SerialQueue queue(u"test"_s);
        ORV_ON(queue);
    };
    EXPECT_DEATH(callOnMain(), "called on the wrong thread");
    const auto callOnQueue = [] {
        SerialQueue queue(u"test"_s);
        queue.sync([] { ORV_ON_MAIN(); });
    };
    EXPECT_DEATH(callOnQueue(), "called on the wrong thread");
}
#endif

} // namespace orv
