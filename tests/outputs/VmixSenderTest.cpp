#include "VmixSender.h"

#include "LogCapture.h"
#include "NameServer.h"
#include "Ports.h"
#include "SerialQueue.h"
#include "ServicePeer.h"
#include "TranslationSettings.h"
#include "VmixTracking.h"
#include "WaitUntil.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class VmixSenderTest : public ::testing::Test {
  protected:
    /// For requests that get their answer, however long it takes.
    static constexpr VmixLimits patient{.request = 1min};

    VmixSenderTest() {
        settings.vmixEnabled.set(true);
        settings.vmixPort.set(vmix.port());
        replaceSender(patient);
    }

    void replaceSender(VmixLimits limits, LookUpHost lookUp = systemLookUp) {
        sender = std::make_unique<VmixSender>(settings, tracking, limits, std::move(lookUp));
    }

    void tell(const QString& mode) {
        const qsizetype before = vmix.count(u"told"_s);
        vmix.command({{u"mode"_s, mode}});
        ASSERT_TRUE(waitUntil([&] { return vmix.count(u"told"_s) > before; }));
    }

    bool waitForRequests(qsizetype count) {
        return waitUntil([&] { return vmix.count(u"request"_s) >= count; });
    }

    /// The decoded query of the request that put a text into this field.
    QList<QPair<QString, QString>> queryFor(const QString& field) {
        for (const QJsonObject& request : vmix.events(u"request"_s)) {
            QList<QPair<QString, QString>> query;
            for (const QJsonValue& item : request[u"query"_s].toArray()) {
                query.append({item[0].toString(), item[1].toString()});
            }
            if (query.value(2).second == field) {
                return query;
            }
        }
        return {};
    }

    qsizetype errors() const {
        return log.lines().filter(QRegularExpression(u"^❌ vMix: ."_s)).size();
    }

    void failTwice() {
        tracking.trackVmixFailure();
        tracking.trackVmixFailure();
    }

    /// Sends a translation alone and waits until its failure is logged and counted.
    void expectFailure() {
        settings.vmixFieldOriginal.set({});
        sender->sendToVmix({{}, u"Hello"_s});
        EXPECT_TRUE(waitUntil([this] { return tracking.failures().vmixFailureCount == 1; }));
        EXPECT_EQ(errors(), 1);
    }

    /// Sends a translation alone and waits until its success is logged.
    void expectSuccess() {
        failTwice();
        settings.vmixFieldOriginal.set({});
        sender->sendToVmix({{}, u"Hello"_s});
        EXPECT_TRUE(
            waitUntil([this] { return log.contains(u"✓ vMix title updated: Hello..."_s); }));
        EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
        EXPECT_EQ(errors(), 0);
    }

    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
    VmixTracking tracking{settings};
    ServicePeer vmix{u"vmix_service.py"_s};
    RefusingPort nobody;
    NameServer names;
    std::unique_ptr<VmixSender> sender;
};

TEST_F(VmixSenderTest, aResultIsTwoRequests) {
    sender->sendToVmix({u"Guten Morgen & so"_s, u"Good morning = 1+1\n🎉"_s});
    ASSERT_TRUE(waitForRequests(2));
    EXPECT_EQ(queryFor(u"Translation"_s),
              (QList<QPair<QString, QString>>{{u"Function"_s, u"SetText"_s},
                                              {u"Input"_s, u"1"_s},
                                              {u"SelectedName"_s, u"Translation"_s},
                                              {u"Value"_s, u"Good morning = 1+1\n🎉"_s}}));
    EXPECT_EQ(queryFor(u"Original"_s).value(3).second, u"Guten Morgen & so"_s);
    EXPECT_EQ(vmix.events(u"request"_s)[0][u"path"_s].toString(), u"/API/"_s);
}

TEST_F(VmixSenderTest, onlyTheTranslationIsLogged) {
    sender->sendToVmix({u"Guten Morgen"_s, u"Good morning"_s});
    ASSERT_TRUE(waitUntil([this] { return vmix.count(u"ended"_s) == 2; }));
    EXPECT_TRUE(
        waitUntil([this] { return log.contains(u"✓ vMix title updated: Good morning..."_s); }));
    EXPECT_EQ(log.lines().filter(u"vMix"_s).size(), 1);
}

TEST_F(VmixSenderTest, sendsNothingWhileItIsOff) {
    settings.vmixEnabled.set(false);
    sender->sendToVmix({u"a"_s, u"b"_s});
    settings.vmixEnabled.set(true);
    sender->sendToVmix({{}, u"c"_s});
    ASSERT_TRUE(waitForRequests(1));
    EXPECT_EQ(queryFor(u"Translation"_s).value(3).second, u"c"_s);
}

TEST_F(VmixSenderTest, withoutAFieldForTheSourceTextOnlyTheTranslationIsSent) {
    settings.vmixFieldOriginal.set({});
    sender->sendToVmix({u"Guten Morgen"_s, u"Good morning"_s});
    EXPECT_TRUE(waitUntil([this] { return log.containsStart(u"✓ vMix"_s); }));
    EXPECT_EQ(vmix.count(u"request"_s), 1);
}

TEST_F(VmixSenderTest, anEmptyTranslationSendsTheSourceTextAndCountsNothing) {
    failTwice();
    sender->sendToVmix({u"Guten Morgen"_s, {}});
    ASSERT_TRUE(waitUntil([this] { return vmix.count(u"ended"_s) == 1; }));
    EXPECT_EQ(queryFor(u"Original"_s).value(3).second, u"Guten Morgen"_s);
    EXPECT_EQ(tracking.failures().vmixFailureCount, 2);
    EXPECT_FALSE(log.containsStart(u"✓"_s));
    settings.vmixPort.set(nobody.port());
    sender->sendToVmix({u"Guten Morgen"_s, {}});
    settings.vmixPort.set(vmix.port());
    sender->sendToVmix({u"Guten Tag"_s, {}});
    ASSERT_TRUE(waitUntil([this] { return vmix.count(u"ended"_s) == 2; }));
    EXPECT_EQ(tracking.failures().vmixFailureCount, 2);
    EXPECT_EQ(errors(), 0);
}

TEST_F(VmixSenderTest, withoutAFieldForTheTranslationNothingIsCounted) {
    settings.vmixFieldTranslation.set({});
    tracking.trackVmixFailure();
    sender->sendToVmix({u"Guten Morgen"_s, u"Good morning"_s});
    ASSERT_TRUE(waitUntil([this] { return vmix.count(u"ended"_s) == 1; }));
    EXPECT_EQ(tracking.failures().vmixFailureCount, 1);
}

TEST_F(VmixSenderTest, anAddressThatCannotBeFormedIsSkippedInSilence) {
    for (const QString& host : {u"my host"_s, QString(), u"[::"_s}) {
        settings.vmixHost.set(host);
        sender->sendToVmix({u"a"_s, u"b"_s});
    }
    settings.vmixHost.set(u"127.0.0.1"_s);
    settings.vmixPort.set(70000);
    sender->sendToVmix({u"a"_s, u"b"_s});
    settings.vmixPort.set(vmix.port());
    expectSuccess();
    EXPECT_EQ(vmix.count(u"request"_s), 1);
    EXPECT_EQ(log.lines().filter(u"vMix"_s).size(), 1);
}

TEST_F(VmixSenderTest, refusedConnectionsRaiseTheBannerAtTheThird) {
    settings.vmixPort.set(nobody.port());
    for (int i = 1; i <= 3; ++i) {
        EXPECT_FALSE(tracking.failures().vmixShowWarningBanner);
        sender->sendToVmix({u"a"_s, u"b"_s});
        ASSERT_TRUE(waitUntil([&] { return tracking.failures().vmixFailureCount == i; }));
    }
    EXPECT_TRUE(tracking.failures().vmixShowWarningBanner);
    EXPECT_EQ(log.count(u"❌ vMix: Connection refused"_s), 3);
    settings.vmixPort.set(vmix.port());
    sender->sendToVmix({u"a"_s, u"b"_s});
    EXPECT_TRUE(waitUntil([this] { return !tracking.failures().vmixShowWarningBanner; }));
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
}

TEST_F(VmixSenderTest, anyWholeAnswerIsASuccess) {
    for (const QString& mode : {u"answer"_s, u"error"_s, u"chunked"_s, u"bare"_s, u"interim"_s}) {
        tell(mode);
        log.clear();
        SCOPED_TRACE(qPrintable(mode));
        expectSuccess();
    }
}

TEST_F(VmixSenderTest, aRedirectionIsAnAnswerAndIsNotFollowed) {
    ServicePeer elsewhere(u"vmix_service.py"_s);
    vmix.command({{u"mode"_s, u"redirect"_s}, {u"location"_s, elsewhere.url(u"http"_s)}});
    ASSERT_TRUE(waitUntil([this] { return vmix.count(u"told"_s) == 1; }));
    expectSuccess();
    EXPECT_EQ(elsewhere.count(u"request"_s), 0);
}

TEST_F(VmixSenderTest, aConnectionThatBreaksIsAFailure) {
    for (const QString& mode : {u"reset"_s, u"close"_s, u"cut"_s, u"garbage"_s, u"endlessHead"_s}) {
        tell(mode);
        log.clear();
        tracking.trackVmixSuccess();
        SCOPED_TRACE(qPrintable(mode));
        expectFailure();
    }
}

TEST_F(VmixSenderTest, whoeverNeverEndsAnAnswerIsGivenUpAfterTheLimit) {
    replaceSender({.request = 1s});
    for (const QString& mode : {u"hang"_s, u"drip"_s, u"endless"_s}) {
        tell(mode);
        log.clear();
        tracking.trackVmixSuccess();
        const qsizetype ended = vmix.count(u"ended"_s);
        SCOPED_TRACE(qPrintable(mode));
        expectFailure();
        EXPECT_TRUE(waitUntil([&] { return vmix.count(u"ended"_s) > ended; })) << "and cut off";
    }
}

TEST_F(VmixSenderTest, theRealLimitIsTwoSecondsForTheWholeRequest) {
    replaceSender({});
    tell(u"drip"_s);
    const auto start = std::chrono::steady_clock::now();
    expectFailure();
    EXPECT_GE(std::chrono::steady_clock::now() - start, 2000ms);
    EXPECT_EQ(VmixLimits{}.request, 2000ms);
    EXPECT_EQ(VmixLimits{}.connectionsPerHost, 2);
}

TEST_F(VmixSenderTest, aHostThatHangsGetsTwoConnectionsAndDelaysTheNextByNoMoreThanTheLimit) {
    replaceSender({.request = 3s});
    tell(u"hang"_s);
    for (int i = 0; i < 5; ++i) {
        sender->sendToVmix({u"alt"_s, u"old"_s});
    }
    ASSERT_TRUE(waitUntil([this] { return tracking.failures().vmixFailureCount == 5; }));
    for (const QJsonObject& request : vmix.events(u"request"_s)) {
        EXPECT_LE(request[u"open"_s].toInt(), 2);
    }
    tell(u"answer"_s);
    sender->sendToVmix({u"neu"_s, u"new"_s});
    EXPECT_TRUE(waitUntil([this] { return log.contains(u"✓ vMix title updated: new..."_s); }));
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
}

TEST_F(VmixSenderTest, aHostThatHangsDoesNotDelayAnother) {
    replaceSender({.request = 60s});
    ServicePeer other(u"vmix_service.py"_s);
    tell(u"hang"_s);
    for (int i = 0; i < 5; ++i) {
        sender->sendToVmix({u"a"_s, u"b"_s});
    }
    ASSERT_TRUE(waitForRequests(2));
    settings.vmixPort.set(other.port());
    sender->sendToVmix({u"c"_s, u"d"_s});
    EXPECT_TRUE(waitUntil([this] { return log.contains(u"✓ vMix title updated: d..."_s); }));
    EXPECT_EQ(vmix.count(u"request"_s), 2) << "the others still wait for a connection";
}

TEST_F(VmixSenderTest, aNameThatIsNeverFoundFailsAfterTheLimit) {
    replaceSender({.request = 100ms}, names.lookUp());
    settings.vmixHost.set(u"vmix"_s);
    expectFailure();
}

TEST_F(VmixSenderTest, aNameThatIsNotFoundFails) {
    names.answer({{}, u"Name or service not known"_s});
    replaceSender(patient, names.lookUp());
    settings.vmixHost.set(u"vmix"_s);
    expectFailure();
    EXPECT_TRUE(log.contains(u"❌ vMix: Name or service not known"_s));
}

TEST_F(VmixSenderTest, everyAddressOfANameIsTried) {
    names.answer(
        {{QHostAddress(u"127.0.0.2"_s), QHostAddress(u"::1"_s), QHostAddress(u"127.0.0.1"_s)}, {}});
    replaceSender(patient, names.lookUp());
    settings.vmixHost.set(u"vmix"_s);
    expectSuccess();
}

TEST_F(VmixSenderTest, theRequestNamesTheHostAsItWasGiven) {
    settings.vmixHost.set(u"localhost"_s);
    expectSuccess();
    const QJsonObject headers = vmix.events(u"request"_s)[0][u"headers"_s].toObject();
    EXPECT_EQ(headers[u"host"_s].toString(), u"localhost:"_s + QString::number(vmix.port()));
    EXPECT_FALSE(headers.contains(u"cookie"_s));
    EXPECT_FALSE(headers.contains(u"authorization"_s));
}

TEST_F(VmixSenderTest, aVeryLongTextArrivesWhole) {
    settings.vmixFieldOriginal.set({});
    const QString text = u"ä"_s.repeated(10000); // 60,000 bytes: what the peer takes as one line.
    sender->sendToVmix({{}, text});
    ASSERT_TRUE(waitForRequests(1));
    EXPECT_EQ(queryFor(u"Translation"_s).value(3).second, text);
}

TEST_F(VmixSenderTest, failuresAfterTheOutputWasGivenUpDoNotWarn) {
    replaceSender({.request = 200ms});
    tell(u"hang"_s);
    for (int i = 0; i < 5; ++i) {
        sender->sendToVmix({{}, u"b"_s});
    }
    tracking.disableVmix();
    ASSERT_TRUE(waitUntil([this] { return errors() == 5; }));
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
    EXPECT_FALSE(tracking.failures().vmixShowWarningBanner);
}

TEST_F(VmixSenderTest, aSuccessAfterTheOutputWasSwitchedOffStillHidesTheBanner) {
    failTwice();
    tracking.trackVmixFailure();
    ASSERT_TRUE(tracking.failures().vmixShowWarningBanner);
    sender->sendToVmix({{}, u"b"_s});
    settings.vmixEnabled.set(false);
    ASSERT_TRUE(waitUntil([this] { return log.contains(u"✓ vMix title updated: b..."_s); }));
    EXPECT_FALSE(tracking.failures().vmixShowWarningBanner);
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
}

TEST_F(VmixSenderTest, goesAtOnceWhileARequestIsUnderWay) {
    replaceSender({.request = 60s});
    tell(u"hang"_s);
    sender->sendToVmix({u"a"_s, u"b"_s});
    ASSERT_TRUE(waitForRequests(2));
    sender.reset();
    EXPECT_TRUE(waitUntil([this] { return vmix.count(u"ended"_s) == 2; }));
    drainEvents();
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
}

TEST_F(VmixSenderTest, tenThousandResultsWhileVmixHangsStayFewRequestsAndTwoConnections) {
    tell(u"hang"_s);
    const VmixLimits limits;
    VmixRequests session(limits);
    const auto alive = std::make_shared<int>();
    const QUrl url(vmix.url(u"http"_s) + u"/API/?Value=x"_s);
    int ended = 0;
    for (int i = 0; i < 10000; ++i) {
        session.get(url, [alive, &ended](const QString&) { ++ended; });
    }
    const auto atMost = static_cast<long>(limits.waiting) + limits.connectionsPerHost;
    EXPECT_LE(alive.use_count() - 1, atMost);
    // From the first whose time is up on, others take over the connections.
    ASSERT_TRUE(waitUntil([&] { return ended > 0; }));
    tell(u"answer"_s);
    int answered = 0;
    const VmixRequests::Done count = [&answered](const QString& error) {
        answered += error.isEmpty() ? 1 : 0;
    };
    const QUrl last(vmix.url(u"http"_s) + u"/API/?Value=last"_s);
    const auto inAMinute = std::chrono::steady_clock::now() + 1min;
    session.add(last, count, inAMinute);
    session.add(last, count, inAMinute);
    EXPECT_TRUE(waitUntil([&] { return answered == 2; }));
    EXPECT_TRUE(waitUntil([&] { return alive.use_count() == 1; })) << "all end with their limit";
    for (const QJsonObject& request : vmix.events(u"request"_s)) {
        EXPECT_LE(request[u"open"_s].toInt(), 2);
    }
}

TEST_F(VmixSenderTest, ofTooManyResultsTheNewestArrives) {
    settings.vmixFieldOriginal.set({});
    replaceSender({.request = 20s});
    for (int i = 0; i < 10000; ++i) {
        sender->sendToVmix({{}, QString::number(i)});
    }
    EXPECT_TRUE(waitUntil([this] { return log.contains(u"✓ vMix title updated: 9999..."_s); }));
    EXPECT_EQ(errors(), 0);
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
}

} // namespace

} // namespace orv::test
