#include "DesktopNotifications.h"
#include "NullUserNotifications.h"
#include "ServicePeer.h"
#include "WaitUntil.h"

#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class DesktopNotificationsTest : public ::testing::Test {
  protected:
    ~DesktopNotificationsTest() override { QDBusConnection::disconnectFromBus(connection); }

    std::optional<NotificationAuthorization> answerOn(const QStringList& arguments) {
        bus_.emplace(u"message_bus.py"_s, arguments);
        const QString address = bus_->events(u"listening"_s).value(0)[u"address"_s].toString();
        notifications_.emplace(QDBusConnection::connectToBus(address, connection));
        notifications_->requestAuthorization(
            NotificationOption::Alert,
            [this](const NotificationAuthorization& authorization) { answer_ = authorization; });
        EXPECT_FALSE(answer_.has_value()) << "asking returns at once";
        EXPECT_TRUE(waitUntil([this] { return answer_.has_value(); }));
        return answer_;
    }

    ServicePeer& bus() { return *bus_; }

    DesktopNotifications& notifications() { return *notifications_; }

  private:
    const QString connection = u"user-notifications-test"_s;
    std::optional<ServicePeer> bus_;
    std::optional<DesktopNotifications> notifications_;
    std::optional<NotificationAuthorization> answer_;
};

TEST_F(DesktopNotificationsTest, areGrantedWhereTheServiceAnswers) {
    const auto answer = answerOn({u"--notifications"_s});
    ASSERT_TRUE(answer);
    EXPECT_TRUE(answer->granted);
    EXPECT_EQ(answer->error, QString());
    EXPECT_EQ(bus().count(u"asked"_s), 1);
}

TEST_F(DesktopNotificationsTest, showATitleAndPlainText) {
    answerOn({u"--notifications"_s});
    notifications().notify(u"Interrupted"_s, u"No <b>sound</b> & no answer"_s);
    ASSERT_TRUE(waitUntil([this] { return bus().count(u"notified"_s) == 1; }));
    const QJsonObject notified = bus().events(u"notified"_s).value(0);
    EXPECT_EQ(notified[u"name"_s], u"Orvane"_s);
    EXPECT_EQ(notified[u"title"_s], u"Interrupted"_s);
    EXPECT_EQ(notified[u"body"_s], u"No &lt;b&gt;sound&lt;/b&gt; &amp; no answer"_s);
}

TEST_F(DesktopNotificationsTest, areNotGrantedWithoutAService) {
    const auto answer = answerOn({});
    ASSERT_TRUE(answer);
    EXPECT_FALSE(answer->granted);
    EXPECT_TRUE(answer->error.contains(u"org.freedesktop.Notifications"))
        << qPrintable(answer->error);
}

TEST_F(DesktopNotificationsTest, areNotGrantedWhenTheServiceRefuses) {
    const auto answer = answerOn({u"--notifications"_s, u"--refuse"_s});
    ASSERT_TRUE(answer);
    EXPECT_FALSE(answer->granted);
    EXPECT_EQ(answer->error, u"nobody may notify"_s);
}

TEST(DesktopNotifications, areNotGrantedWithoutABus) {
    DesktopNotifications notifications(QDBusConnection(u"no such connection"_s));
    std::optional<NotificationAuthorization> answer;
    notifications.requestAuthorization(
        {}, [&](const NotificationAuthorization& authorization) { answer = authorization; });
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_FALSE(answer->granted);
    EXPECT_NE(answer->error, QString());
}

TEST(NullUserNotifications, areNeverGranted) {
    NullUserNotifications notifications;
    std::optional<NotificationAuthorization> answer;
    notifications.requestAuthorization(
        {}, [&](const NotificationAuthorization& authorization) { answer = authorization; });
    EXPECT_FALSE(answer.has_value());
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_FALSE(answer->granted);
}

} // namespace

} // namespace orv::test
