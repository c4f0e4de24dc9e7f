#include "ResultHub.h"

#include "Output.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// Writes down what it takes, in a list that several outputs share.
class NotingOutput : public Output {
  public:
    NotingOutput(QString name, QStringList& notes)
        : name_(std::move(name))
        , notes_(notes) {}

    void take(const Result& result) override {
        notes_.append(u"%1 '%2' '%3'"_s.arg(name_, result.original, result.translation));
    }

  private:
    QString name_;
    QStringList& notes_;
};

class ResultHubTest : public ::testing::Test {
  protected:
    QStringList taken;
    NotingOutput window{u"window"_s, taken};
    NotingOutput page{u"page"_s, taken};
    NotingOutput another{u"another"_s, taken};
    ResultHub hub;
};

TEST_F(ResultHubTest, aResultReachesEveryOutputOnceInTheOrderInWhichTheyWereAdded) {
    hub.add(window);
    hub.add(another);
    hub.add(page);
    hub.ShowTranslation({u"hello"_s, u"hola"_s});
    EXPECT_EQ(taken, (QStringList{u"window 'hello' 'hola'"_s, u"another 'hello' 'hola'"_s,
                                  u"page 'hello' 'hola'"_s}));
}

TEST_F(ResultHubTest, anOutputThatBelongsToItTakesItsTurnLikeTheOthers) {
    hub.add(window);
    hub.add(std::make_unique<NotingOutput>(u"own"_s, taken));
    hub.add(page);
    hub.ShowTranslation({{}, u"one"_s});
    EXPECT_EQ(taken, (QStringList{u"window '' 'one'"_s, u"own '' 'one'"_s, u"page '' 'one'"_s}));
}

TEST_F(ResultHubTest, oneResultIsTakenByAllBeforeTheNext) {
    hub.add(window);
    hub.add(page);
    hub.ShowTranslation({{}, u"one"_s});
    hub.ShowTranslation({{}, u"two"_s});
    EXPECT_EQ(taken, (QStringList{u"window '' 'one'"_s, u"page '' 'one'"_s, u"window '' 'two'"_s,
                                  u"page '' 'two'"_s}));
}

TEST_F(ResultHubTest, aResultWithoutTextsGoesOutEmpty) {
    hub.add(window);
    hub.add(page);
    hub.ShowTranslation({});
    EXPECT_EQ(taken, (QStringList{u"window '' ''"_s, u"page '' ''"_s}));
}

TEST_F(ResultHubTest, withoutOutputsAResultIsNobodysBusiness) {
    hub.ShowTranslation({u"hello"_s, u"hola"_s});
    EXPECT_TRUE(taken.isEmpty());
}

TEST(Result, isEqualWhenBothTextsAre) {
    EXPECT_EQ((Result{u"a"_s, u"b"_s}), (Result{u"a"_s, u"b"_s}));
    EXPECT_NE((Result{u"a"_s, u"b"_s}), (Result{u"b"_s, u"a"_s}));
    EXPECT_NE((Result{u"a"_s, u"b"_s}), (Result{u"a"_s, {}}));
}

} // namespace

} // namespace orv::test
