#include "AssemblyAITurns.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

AssemblyAITurn turn(int order, bool isOver, bool isFormatted, const QString& text) {
    return {.order = order, .isOver = isOver, .isFormatted = isFormatted, .text = text};
}

TEST(AssemblyAITurns, sayAFinishedTurnOnceAndAsItIsFormatted) {
    AssemblyAITurns turns(true);
    EXPECT_TRUE(turns.take(turn(0, false, false, u"hel"_s)).isEmpty());
    EXPECT_TRUE(turns.take(turn(0, true, false, u"hello there"_s)).isEmpty());
    EXPECT_EQ(turns.take(turn(0, true, true, u"Hello there."_s)), QStringList(u"Hello there."_s));
    EXPECT_TRUE(turns.take(turn(0, true, true, u"Hello there."_s)).isEmpty()) << "said already";
    EXPECT_TRUE(turns.finish().isEmpty());
}

TEST(AssemblyAITurns, sayATurnAsItWasHeardWhenItsSecondFormDoesNotCome) {
    AssemblyAITurns turns(true);
    turns.take(turn(0, true, false, u"one"_s));
    EXPECT_EQ(turns.take(turn(1, false, false, u"t"_s)), QStringList(u"one"_s));
    EXPECT_TRUE(turns.take(turn(0, true, true, u"One."_s)).isEmpty()) << "too late";
    turns.take(turn(1, true, false, u"two"_s));
    EXPECT_EQ(turns.finish(), QStringList(u"two"_s));
    EXPECT_TRUE(turns.finish().isEmpty());
}

TEST(AssemblyAITurns, ofAModelThatSaysThemOnceGoAtOnce) {
    AssemblyAITurns turns(false);
    EXPECT_EQ(turns.take(turn(0, true, false, u"Eins."_s)), QStringList(u"Eins."_s));
    EXPECT_TRUE(turns.take(turn(0, true, true, u"Eins."_s)).isEmpty());
    EXPECT_TRUE(turns.take(turn(1, true, true, QString())).isEmpty());
    EXPECT_EQ(turns.take(turn(2, true, true, u"Zwei."_s)), QStringList(u"Zwei."_s));
}

TEST(AssemblyAITurns, ofTagsAreNoSpeech) {
    const auto linesOf = [](const QString& text) {
        return AssemblyAITurns(false).take(turn(0, true, true, text));
    };
    for (const QString& tag : {u"[Silence]"_s, u"[Music] [Applause]."_s, u" "_s}) {
        EXPECT_TRUE(linesOf(tag).isEmpty()) << tag.toStdString();
    }
    for (const QString& spoken : {u"[Music] Hello"_s, u"Hello [there]"_s, u"[there"_s}) {
        EXPECT_EQ(linesOf(spoken), QStringList(spoken));
    }
}

} // namespace
} // namespace orv
