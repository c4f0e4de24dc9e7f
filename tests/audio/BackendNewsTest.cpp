// What of the speech server's word still holds.

#include "BackendNews.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

StatusMessage told(const QString& status, const QString& code, const QString& message = {}) {
    return {.status = status, .message = message, .version = {}, .notice = {.code = code}};
}

QStringList codes(const BackendNews& news) {
    QStringList found;
    for (const StatusMessage& each : news.disturbances) {
        found.append(each.notice.code);
    }
    return found;
}

TEST(BackendNews, keepsEveryDisturbanceUntilWhoServesIsToldAnew) {
    BackendNews news;
    news.take(told(u"engine"_s, u"engine.serving"_s));
    for (const QString& status : {u"error"_s, u"warning"_s, u"overloaded"_s}) {
        news.take(told(status, u"of "_s + status));
    }
    for (const QString& status : {u"engine_loading"_s, u"model_loading"_s, u"model_loaded"_s}) {
        news.take(told(status, status));
    }
    EXPECT_EQ(codes(news), (QStringList{u"of error"_s, u"of warning"_s, u"of overloaded"_s}));
    EXPECT_EQ(news.latest.status, u"model_loaded"_s);
    news.take(told(u"engine"_s, u"engine.serving"_s, u"again"_s));
    EXPECT_TRUE(news.disturbances.isEmpty());
    EXPECT_EQ(news.serving->message, u"again"_s);
}

TEST(BackendNews, takesTheLatestOfEachCode) {
    BackendNews news;
    news.take(told(u"overloaded"_s, u"session.behind"_s, u"1 s"_s));
    news.take(told(u"warning"_s, u"other"_s));
    news.take(told(u"overloaded"_s, u"session.behind"_s, u"2 s"_s));
    EXPECT_EQ(codes(news), (QStringList{u"session.behind"_s, u"other"_s}));
    EXPECT_EQ(news.disturbances.first().message, u"2 s"_s);
}

TEST(BackendNews, tellsMessagesWithoutACodeApart) {
    BackendNews news;
    for (const QString& message : {u"a"_s, u"b"_s, u"a"_s}) {
        news.take(told(u"warning"_s, {}, message));
    }
    EXPECT_EQ(news.disturbances.size(), 2);
}

TEST(BackendNews, countsHowOftenAServiceHasFailedInTheSameWay) {
    BackendNews news;
    const auto times = [&] {
        return news.disturbances.first().notice.parameters.value(u"times"_s);
    };
    news.take(told(u"warning"_s, u"service.network"_s));
    EXPECT_EQ(times(), QString());
    news.take(told(u"warning"_s, u"service.network"_s));
    EXPECT_EQ(times(), u"2"_s);
    news.take(told(u"warning"_s, u"service.network"_s));
    EXPECT_EQ(times(), u"3"_s);
    EXPECT_EQ(news.disturbances.size(), 1);
}

StatusMessage ofTranslation(StatusMessage status) {
    status.notice.parameters = {{u"engine"_s, u"Azure Translator"_s},
                                {u"part"_s, u"translation"_s}};
    return status;
}

TEST(BackendNews, aServicesFaultIsOverWithItsNextResultAndThatOfATranslationWithATranslation) {
    BackendNews news;
    news.take(told(u"warning"_s, u"service.network"_s));
    news.take(ofTranslation(told(u"warning"_s, u"service.network"_s)));
    news.take(told(u"warning"_s, u"session.behind"_s));
    const QStringList withoutTranslation = {u"service.network"_s, u"session.behind"_s};
    news.serviceServes({u"one"_s, u"one"_s});
    EXPECT_EQ(codes(news), withoutTranslation);
    news.serviceServes({u"one"_s, u""_s});
    EXPECT_EQ(codes(news), withoutTranslation);
    news.serviceServes({u"one"_s, u"uno"_s});
    EXPECT_EQ(codes(news), QStringList(u"session.behind"_s));
}

TEST(BackendNews, whatWasLeftOutIsNotMadeGoodByAResult) {
    BackendNews news;
    news.take(told(u"warning"_s, u"service.too_slow"_s));
    news.serviceServes({u"one"_s, u"uno"_s});
    EXPECT_EQ(codes(news), QStringList(u"service.too_slow"_s));
}

TEST(BackendNews, twoServicesMayFailInTheSameWay) {
    BackendNews news;
    news.take(told(u"warning"_s, u"service.network"_s));
    news.take(ofTranslation(told(u"warning"_s, u"service.network"_s)));
    EXPECT_EQ(news.disturbances.size(), 2);
    EXPECT_FALSE(news.disturbances.first().notice.parameters.contains(u"times"_s));
}

TEST(BackendNews, whyAServiceDoesNotServeHoldsWhileTheServerServesInItsPlace) {
    BackendNews news;
    news.take(told(u"error"_s, u"service.region_missing"_s));
    news.take(told(u"warning"_s, u"session.behind"_s));
    news.take(told(u"engine"_s, u"engine.serving"_s));
    EXPECT_EQ(codes(news), QStringList(u"service.region_missing"_s));
    news.beginRun();
    EXPECT_TRUE(news.disturbances.isEmpty());
}

TEST(BackendNews, growsNotForEver) {
    BackendNews news;
    for (int i = 0; i < 1000; ++i) {
        news.take(told(u"warning"_s, QString::number(i)));
    }
    EXPECT_EQ(news.disturbances.size(), mostNotices);
}

TEST(BackendNews, knowsTheLatestError) {
    BackendNews news;
    EXPECT_EQ(news.error(), nullptr);
    news.take(told(u"error"_s, u"first"_s));
    news.take(told(u"error"_s, u"second"_s));
    news.take(told(u"warning"_s, u"third"_s));
    ASSERT_NE(news.error(), nullptr);
    EXPECT_EQ(news.error()->notice.code, u"second"_s);
}

TEST(BackendNews, startsAnewWithEachRun) {
    BackendNews news;
    news.take(told(u"engine"_s, u"engine.serving"_s));
    news.take(told(u"error"_s, u"e"_s, u"last word"_s));
    news.beginRun();
    EXPECT_TRUE(news.disturbances.isEmpty());
    EXPECT_FALSE(news.serving);
    EXPECT_EQ(news.latest.message, u"last word"_s);
}

} // namespace
} // namespace orv
