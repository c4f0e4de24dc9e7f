#include "HostLookups.h"

#include "NameServer.h"
#include "WaitUntil.h"

#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

const HostAnswer someAnswer{{QHostAddress(u"192.0.2.1"_s)}, {}};

TEST(HostLookups, numericAddressesNeedNobody) {
    const NameServer names;
    HostLookups lookups(names.lookUp());
    for (const QString& host : {u"127.0.0.1"_s, u"::1"_s, u"fe80::1"_s, u"255.255.255.255"_s}) {
        std::optional<HostAnswer> found;
        lookups.resolve(host, [&](const HostAnswer& answer) { found = answer; });
        ASSERT_TRUE(found) << qPrintable(host);
        EXPECT_EQ(found->addresses, QList{QHostAddress(host)});
        EXPECT_TRUE(found->error.isEmpty());
    }
    EXPECT_TRUE(names.asked().isEmpty());
}

TEST(HostLookups, theSystemKnowsThisHost) {
    HostLookups lookups;
    std::optional<HostAnswer> found;
    lookups.resolve(u"localhost"_s, [&](const HostAnswer& answer) { found = answer; });
    EXPECT_FALSE(found) << "nobody waits for a name";
    ASSERT_TRUE(waitUntil([&] { return found.has_value(); }));
    ASSERT_FALSE(found->addresses.isEmpty()) << qPrintable(found->error);
    EXPECT_TRUE(found->addresses.first().isLoopback());
}

TEST(HostLookups, aNameThatCannotExistIsAnError) {
    HostLookups lookups;
    for (const QString& host : {QString(), u"no such.host"_s, u"orvane.invalid"_s,
                                QString(u"127.0.0.1"_s + QChar(QChar::Null) + u"x"_s)}) {
        std::optional<HostAnswer> found;
        lookups.resolve(host, [&](const HostAnswer& answer) { found = answer; });
        // The system may ask others, and wait long for those that are silent.
        ASSERT_TRUE(waitUntil([&] { return found.has_value(); }, 100s)) << qPrintable(host);
        EXPECT_TRUE(found->addresses.isEmpty()) << qPrintable(host);
        EXPECT_FALSE(found->error.isEmpty()) << qPrintable(host);
    }
}

TEST(HostLookups, oneQuestionServesAllWhoWaitForThatName) {
    NameServer names;
    HostLookups lookups(names.lookUp());
    QList<int> told;
    for (int i = 0; i < 5; ++i) {
        lookups.resolve(u"vmix"_s, [&told, i](const HostAnswer&) { told.append(i); });
    }
    ASSERT_TRUE(waitUntil([&] { return names.asked().size() == 1; }));
    names.answer(someAnswer);
    ASSERT_TRUE(waitUntil([&] { return told.size() == 5; }));
    EXPECT_EQ(told, (QList<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(names.asked().size(), 1);
}

TEST(HostLookups, anAnswerIsNotKept) {
    NameServer names;
    names.answer(someAnswer);
    HostLookups lookups(names.lookUp());
    for (int i = 1; i <= 3; ++i) {
        bool told = false;
        lookups.resolve(u"vmix"_s, [&](const HostAnswer&) { told = true; });
        ASSERT_TRUE(waitUntil([&] { return told; }));
        EXPECT_EQ(names.asked().size(), i);
    }
}

TEST(HostLookups, ofTooManyThatWaitTheOldestAreForgotten) {
    NameServer names;
    HostLookups lookups(names.lookUp());
    const auto alive = std::make_shared<int>();
    QList<int> told;
    for (int i = 0; i < 10000; ++i) {
        lookups.resolve(u"vmix"_s, [&told, i, alive](const HostAnswer&) { told.append(i); });
    }
    EXPECT_EQ(alive.use_count() - 1, long(HostLookups::maximumWaiting));
    names.answer(someAnswer);
    ASSERT_TRUE(waitUntil([&] { return !told.isEmpty(); }));
    EXPECT_EQ(told.size(), qsizetype(HostLookups::maximumWaiting));
    EXPECT_EQ(told.last(), 9999);
}

TEST(HostLookups, ofTooManyNamesTheNextIsRefusedAtOnce) {
    NameServer names;
    HostLookups lookups(names.lookUp());
    for (std::size_t i = 0; i < HostLookups::maximumThreads; ++i) {
        lookups.resolve(QString(u"name"_s + QString::number(i)), [](const HostAnswer&) {});
    }
    QString error;
    lookups.resolve(u"another"_s, [&](const HostAnswer& answer) { error = answer.error; });
    EXPECT_FALSE(error.isEmpty());
    bool told = false;
    lookups.resolve(u"name0"_s, [&](const HostAnswer&) { told = true; });
    names.answer(someAnswer);
    EXPECT_TRUE(waitUntil([&] { return told; })) << "a name that is asked for can be waited for";
}

TEST(HostLookups, doesNotWaitForAnAnswerWhenItGoes) {
    NameServer names;
    bool told = false;
    {
        HostLookups lookups(names.lookUp());
        lookups.resolve(u"vmix"_s, [&](const HostAnswer&) { told = true; });
        ASSERT_TRUE(waitUntil([&] { return names.asked().size() == 1; }));
    }
    names.answer(someAnswer);
    drainEvents();
    EXPECT_FALSE(told);
}

} // namespace

} // namespace orv::test
