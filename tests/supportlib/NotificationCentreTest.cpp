#include "NotificationCentre.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

TEST(NotificationCentre, hasTheNamesThatCrossFolders) {
    EXPECT_EQ(notifications::backendStatusChanged, u"BackendStatusChanged"_s);
    EXPECT_EQ(notifications::translationStatusChanged, u"TranslationStatusChanged"_s);
    EXPECT_EQ(notifications::showTranslation, u"ShowTranslation"_s);
}

TEST(NotificationCentre, tellsOnlyTheObserversOfTheNameAtOnceAndInOrder) {
    NotificationCentre centre;
    QObject context;
    QStringList told;
    centre.observe(u"a"_s, &context, [&](const QVariantMap&) { told.append(u"first a"_s); });
    centre.observe(u"b"_s, &context, [&](const QVariantMap&) { told.append(u"b"_s); });
    centre.observe(u"a"_s, &context, [&](const QVariantMap&) { told.append(u"second a"_s); });
    centre.post(u"a"_s);
    EXPECT_EQ(told, (QStringList{u"first a"_s, u"second a"_s}));
}

TEST(NotificationCentre, handsTheUserInfoOver) {
    NotificationCentre centre;
    QObject context;
    QVariantMap received;
    centre.observe(u"a"_s, &context, [&](const QVariantMap& info) { received = info; });
    centre.post(u"a"_s, {{u"isRunning"_s, true}});
    EXPECT_EQ(received, (QVariantMap{{u"isRunning"_s, true}}));
}

TEST(NotificationCentre, doesNotTellAnObserverThatIsGone) {
    NotificationCentre centre;
    auto context = std::make_unique<QObject>();
    int told = 0;
    centre.observe(u"a"_s, context.get(), [&](const QVariantMap&) { ++told; });
    centre.post(u"a"_s);
    context.reset();
    centre.post(u"a"_s);
    EXPECT_EQ(told, 1);
}

TEST(NotificationCentre, anObserverMayPostAndGoAwayInItsHandler) {
    NotificationCentre centre;
    QObject other;
    auto* context = new QObject;
    QStringList told;
    centre.observe(u"a"_s, context, [&](const QVariantMap&) {
        told.append(u"a"_s);
        centre.post(u"b"_s);
        context->deleteLater();
    });
    centre.observe(u"b"_s, &other, [&](const QVariantMap&) { told.append(u"b"_s); });
    centre.post(u"a"_s);
    EXPECT_EQ(told, (QStringList{u"a"_s, u"b"_s}));
    delete context;
}

TEST(NotificationCentre, whoStartsToObserveDuringAPostIsToldOfLaterOnes) {
    NotificationCentre centre;
    QObject context;
    int late = 0;
    bool added = false;
    centre.observe(u"a"_s, &context, [&](const QVariantMap&) {
        if (!std::exchange(added, true)) {
            centre.observe(u"a"_s, &context, [&](const QVariantMap&) { ++late; });
        }
    });
    centre.post(u"a"_s);
    EXPECT_EQ(late, 0);
    centre.post(u"a"_s);
    EXPECT_EQ(late, 1);
}

} // namespace orv
