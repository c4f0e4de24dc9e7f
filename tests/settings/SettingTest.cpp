// Watching one setting.

#include "Setting.h"
#include "SettingsList.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace orv::test {

namespace {

class SettingTest : public ::testing::Test {
  protected:
    void watchAs(const QString& name, QObject* watcher) {
        port.watch(watcher, [this, name](std::int64_t value) { note(name, value); });
    }

    void note(const QString& name, std::int64_t value) {
        told.append(u"%1 %2"_s.arg(name).arg(value));
    }

    std::vector<AnySetting*> list;
    Setting<std::int64_t> port{list, {.initial = 1, .keeping = Keeping::Never}};
    QStringList told;
    QObject context;
};

TEST_F(SettingTest, tellsTheValueInTheOrderOfWatchingAlsoWhenItIsTheSame) {
    watchAs(u"first"_s, &context);
    QObject other;
    watchAs(u"second"_s, &other);
    watchAs(u"third"_s, &context);
    EXPECT_TRUE(told.isEmpty());
    port.set(5);
    port.set(5);
    EXPECT_EQ(told, (QStringList{u"first 5"_s, u"second 5"_s, u"third 5"_s, u"first 5"_s,
                                 u"second 5"_s, u"third 5"_s}));
    EXPECT_EQ(port.get(), 5);
    EXPECT_EQ(port.initial(), 1);
}

TEST_F(SettingTest, endsWithTheContext) {
    auto shortLived = std::make_unique<QObject>();
    watchAs(u"short"_s, shortLived.get());
    watchAs(u"long"_s, &context);
    port.set(2);
    shortLived.reset();
    port.set(3);
    EXPECT_EQ(told, (QStringList{u"short 2"_s, u"long 2"_s, u"long 3"_s}));
}

TEST_F(SettingTest, aWatcherMayGoWhileOthersAreTold) {
    auto next = std::make_unique<QObject>();
    auto self = std::make_unique<QObject>();
    port.watch(self.get(), [&](std::int64_t value) {
        note(u"self"_s, value);
        next.reset();
        self.reset();
    });
    watchAs(u"next"_s, next.get());
    watchAs(u"last"_s, &context);
    port.set(2);
    port.set(3);
    EXPECT_EQ(told, (QStringList{u"self 2"_s, u"last 2"_s, u"last 3"_s}));
}

TEST_F(SettingTest, aWatcherThatComesMeanwhileIsToldOfTheNextAssignment) {
    bool added = false;
    port.watch(&context, [&](std::int64_t value) {
        note(u"old"_s, value);
        if (!added) {
            added = true;
            watchAs(u"new"_s, &context);
        }
    });
    port.set(2);
    port.set(3);
    EXPECT_EQ(told, (QStringList{u"old 2"_s, u"old 3"_s, u"new 3"_s}));
}

TEST_F(SettingTest, anAssignmentMeanwhileIsTheLastThatEveryoneHears) {
    port.watch(&context, [&](std::int64_t value) {
        if (value > 100) {
            port.set(100);
        }
        note(u"limit"_s, value);
    });
    watchAs(u"after"_s, &context);
    port.set(500);
    EXPECT_EQ(port.get(), 100);
    EXPECT_EQ(told, (QStringList{u"limit 100"_s, u"after 100"_s, u"limit 500"_s, u"after 100"_s}));
}

TEST_F(SettingTest, severalAreWatchedTogether) {
    Setting<bool> enabled{list, {.keeping = Keeping::Never}};
    int shown = 0;
    {
        QObject view;
        watchAll({&port, &enabled}, &view, [&] { ++shown; });
        EXPECT_EQ(shown, 0);
        port.set(2);
        enabled.set(true);
        EXPECT_EQ(shown, 2);
    }
    enabled.set(false);
    EXPECT_EQ(shown, 2);
}

TEST_F(SettingTest, aListPutsItsSettingsInTheirOrderAndKeepsNothing) {
    SettingsList settings;
    ASSERT_FALSE(settings.all().empty());
    EXPECT_EQ(settings.all().front(), &settings.uiLanguage);
    EXPECT_EQ(settings.all().back(), &settings.voskPort);
    settings.voskPort.set(1);
    EXPECT_FALSE(settings.voskPort.takeStored());
    EXPECT_EQ(settings.voskPort.get(), 1);
}

} // namespace

} // namespace orv::test
