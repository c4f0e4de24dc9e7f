#include "TerminationSignals.h"

#include "WaitUntil.h"

#include <gtest/gtest.h>

#include <csignal>

namespace orv::test {

namespace {

class TerminationSignalsTest : public ::testing::TestWithParam<int> {};

TEST_P(TerminationSignalsTest, askForAnEndInsteadOfEnding) {
    int requests = 0;
    const TerminationSignals signals;
    const QObject here;
    QObject::connect(&signals, &TerminationSignals::requested, &here, [&] { ++requests; });
    ASSERT_EQ(::raise(GetParam()), 0);
    EXPECT_EQ(requests, 0) << "the request comes through the event loop";
    EXPECT_TRUE(waitUntil([&] { return requests == 1; }));
    ASSERT_EQ(::raise(GetParam()), 0);
    EXPECT_TRUE(waitUntil([&] { return requests == 2; })) << "an impatient second one is harmless";
}

INSTANTIATE_TEST_SUITE_P(Handled, TerminationSignalsTest,
                         ::testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST(TerminationSignals, haveTheirDefaultMeaningAfterwards) {
    EXPECT_EXIT(
        {
            { const TerminationSignals signals; }
            ::raise(SIGTERM);
        },
        ::testing::KilledBySignal(SIGTERM), "");
}

} // namespace

} // namespace orv::test
