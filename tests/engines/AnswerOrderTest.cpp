#include "AnswerOrder.h"

#include <QCoroTask>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace orv {
namespace {

using Answer = Completion<char>;

/// What an engine does with an answer, once it has come: nothing with a blank.
QCoro::Task<> hear(AnswerOrder::Place place, Answer answer, std::string& heard) {
    const char text = co_await answer;
    if (text != ' ') {
        co_await place.turn();
        heard += text;
    }
}

struct AnswerOrderTest : testing::Test {
    void ask(const Answer& answer) { hear(order->take(), answer, heard); }

    std::optional<AnswerOrder> order{std::in_place};
    std::string heard;
    Answer first;
    Answer second;
    Answer third;
};

TEST_F(AnswerOrderTest, whatComesInOrderIsHeardAtOnce) {
    ask(first);
    ask(second);
    first.complete('a');
    EXPECT_EQ(heard, "a");
    second.complete('b');
    EXPECT_EQ(heard, "ab");
}

TEST_F(AnswerOrderTest, whatOvertakesWaits) {
    ask(first);
    ask(second);
    ask(third);
    third.complete('c');
    second.complete('b');
    EXPECT_EQ(heard, "");
    first.complete('a');
    EXPECT_EQ(heard, "abc");
}

TEST_F(AnswerOrderTest, whatBringsNothingHoldsNothingUp) {
    ask(first);
    ask(second);
    ask(third);
    second.complete(' ');
    third.complete('c');
    EXPECT_EQ(heard, "");
    first.complete(' ');
    EXPECT_EQ(heard, "c");
}

TEST_F(AnswerOrderTest, beginsAnewOnceAllIsHeard) {
    ask(first);
    first.complete('a');
    ask(second);
    second.complete('b');
    EXPECT_EQ(heard, "ab");
}

TEST_F(AnswerOrderTest, placesOutliveTheOrder) {
    ask(first);
    ask(second);
    order.reset();
    second.complete('b');
    first.complete('a');
    EXPECT_EQ(heard, "ab");
}

} // namespace
} // namespace orv
