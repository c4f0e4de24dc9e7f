#include "UpdateChecker.h"

#include "DesktopOpener.h"
#include "LogCapture.h"
#include "ManifestFetcher.h"
#include "ServicePeer.h"
#include "TrustedCertificate.h"
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

const QString manifest41 =
    uR"({"version": "4.10", "url": "https://example.org/orv", "notes": "Better."})"_s;

class RecordedOpener : public DesktopOpener {
  public:
    bool openAddress(const QString& url) override {
        addresses.append(url);
        return true;
    }

    bool revealFolder(const QString& /*path*/) override { return true; }

    QStringList addresses;
};

class UpdateCheckerTest : public ::testing::Test {
  protected:
    ServicePeer& server() {
        if (!server_) {
            server_ = std::make_unique<ServicePeer>(u"manifest_service.py"_s);
        }
        return *server_;
    }

    QString at(const QString& path) { return server().url(u"http"_s) + path; }

    void tell(ServicePeer& peer, const QJsonObject& answer) {
        const auto before = peer.count(u"told"_s);
        peer.command(answer);
        ASSERT_TRUE(waitUntil([&] { return peer.count(u"told"_s) > before; }));
    }

    void serve(const QString& path, const QString& body) {
        tell(server(), {{u"path"_s, path}, {u"body"_s, body}});
    }

    UpdateChecker& checker(const QStringList& addresses, UpdateTimings timings = {.answer = 10s}) {
        checker_ = std::make_unique<UpdateChecker>(UpdateEnvironment{.currentVersion = u"4.9"_s,
                                                                     .updateURLs = addresses,
                                                                     .opener = opener,
                                                                     .timings = timings});
        QObject::connect(checker_.get(), &UpdateChecker::updateAvailableChanged, checker_.get(),
                         [this](bool available) { published.append(available); });
        return *checker_;
    }

    /// The outcome of the check that the checker began by itself.
    UpdateOutcome firstOutcome() {
        std::optional<UpdateOutcome> outcome;
        checker_->checkForUpdate([&](UpdateOutcome found) { outcome = found; });
        EXPECT_TRUE(waitUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(UpdateOutcome::Failed);
    }

    /// The one failure line; empty when there is another number of them.
    QString failure(const QString& address) const {
        QStringList found = log.lines();
        found.removeIf([&](const QString& line) {
            return !line.startsWith(u"Update: "_s + address + u" failed: "_s);
        });
        return found.size() == 1 ? found.first() : QString();
    }

    /// Lets `address` fail, and the fallback answer.
    void expectFailureAndFallback(const QString& address, UpdateTimings timings = {.answer = 10s}) {
        serve(u"/fallback"_s, manifest41);
        checker({address, at(u"/fallback"_s)}, timings);
        EXPECT_EQ(firstOutcome(), UpdateOutcome::Available);
        EXPECT_NE(failure(address), QString()) << qPrintable(log.lines().join(u'\n'));
        EXPECT_EQ(checker_->latestVersion(), u"4.10"_s);
    }

    LogCapture log;
    RecordedOpener opener;
    QList<bool> published;

    std::unique_ptr<ServicePeer> server_;
    std::unique_ptr<UpdateChecker> checker_;
};

TEST_F(UpdateCheckerTest, checksByItselfAndPublishesANewerRelease) {
    serve(u"/a"_s, manifest41);
    checker({at(u"/a"_s), at(u"/b"_s)});
    EXPECT_FALSE(checker_->updateAvailable());
    ASSERT_TRUE(waitUntil([this] { return checker_->updateAvailable(); }));
    EXPECT_EQ(checker_->latestVersion(), u"4.10"_s);
    EXPECT_EQ(checker_->downloadURL(), u"https://example.org/orv"_s);
    EXPECT_EQ(checker_->releaseNotes(), u"Better."_s);
    EXPECT_EQ(published, QList<bool>{true});
    EXPECT_EQ(log.lines(), QStringList{u"Update: 4.10 available (current: 4.9)"_s});
    EXPECT_EQ(server().count(u"request"_s), 1) << "the fallback is for failures only";
}

TEST_F(UpdateCheckerTest, asksForAFreshCopyAndSaysWhoAsks) {
    serve(u"/a"_s, manifest41);
    checker({at(u"/a"_s)});
    firstOutcome();
    const QJsonObject request = server().events(u"request"_s).value(0);
    const QJsonObject headers = request[u"headers"_s].toObject();
    EXPECT_EQ(request[u"method"_s].toString(), u"GET"_s);
    EXPECT_EQ(headers[u"cache-control"_s].toString(), u"no-cache"_s);
    EXPECT_EQ(headers[u"user-agent"_s].toString(), u"Orvane/4.9"_s);
}

TEST_F(UpdateCheckerTest, saysThatTheProgramIsUpToDateAndPublishesNothing) {
    serve(u"/a"_s, uR"({"version": "4.9.0", "url": "https://example.org/orv"})"_s);
    checker({at(u"/a"_s)});
    EXPECT_EQ(firstOutcome(), UpdateOutcome::UpToDate);
    EXPECT_EQ(log.lines(), QStringList{u"Update: up to date (4.9)"_s});
    EXPECT_FALSE(checker_->updateAvailable());
    EXPECT_EQ(checker_->latestVersion(), QString());
    EXPECT_EQ(checker_->downloadURL(), QString());
}

TEST_F(UpdateCheckerTest, aManifestWithoutNotesLeavesThemEmpty) {
    serve(u"/a"_s, uR"({"version": "5", "url": "https://example.org/orv"})"_s);
    checker({at(u"/a"_s)});
    EXPECT_EQ(firstOutcome(), UpdateOutcome::Available);
    EXPECT_EQ(checker_->releaseNotes(), QString());
}

TEST_F(UpdateCheckerTest, anUpdateStaysAvailable) {
    serve(u"/a"_s, manifest41);
    checker({at(u"/a"_s)});
    firstOutcome();
    serve(u"/a"_s, uR"({"version": "4.9", "url": "https://example.org/old"})"_s);
    EXPECT_EQ(firstOutcome(), UpdateOutcome::UpToDate);
    EXPECT_TRUE(checker_->updateAvailable());
    EXPECT_EQ(checker_->latestVersion(), u"4.10"_s);
    tell(server(), {{u"path"_s, u"/a"_s}, {u"status"_s, 500}});
    EXPECT_EQ(firstOutcome(), UpdateOutcome::Failed);
    EXPECT_TRUE(checker_->updateAvailable());
    EXPECT_EQ(published, QList<bool>{true}) << "it became true once";
}

TEST_F(UpdateCheckerTest, asksTheFallbackWhenThePrimaryIsNotFound) {
    expectFailureAndFallback(at(u"/nothing"_s));
    EXPECT_EQ(failure(at(u"/nothing"_s)),
              u"Update: "_s + at(u"/nothing"_s) + u" failed: HTTP-Status 404"_s);
}

TEST_F(UpdateCheckerTest, asksTheFallbackWhenNobodyListens) {
    expectFailureAndFallback(u"http://127.0.0.1:1/updates/orv.json"_s);
}

TEST_F(UpdateCheckerTest, asksTheFallbackWhenThePrimarySaysNothingInTime) {
    tell(server(), {{u"path"_s, u"/slow"_s}, {u"raw"_s, QString()}, {u"after"_s, u"hold"_s}});
    QElapsedTimer clock;
    clock.start();
    // The fallback has to answer within the same limit.
    expectFailureAndFallback(at(u"/slow"_s), {.answer = 5s});
    EXPECT_GE(clock.elapsed(), 4900);
    EXPECT_TRUE(waitUntil([this] { return server().count(u"gone"_s) == 1; }))
        << "the connection is given up";
}

TEST_F(UpdateCheckerTest, theLimitIsForTheWholeAnswerHoweverItDrips) {
    tell(server(), {{u"path"_s, u"/drip"_s},
                    {u"raw"_s, u"HTTP/1.1 200 OK\r\nContent-Length: 10000\r\n\r\n"_s},
                    {u"after"_s, u"drip"_s}});
    expectFailureAndFallback(at(u"/drip"_s), {.answer = 5s});
}

TEST_F(UpdateCheckerTest, theRealTimesAreThreeSecondsAndADay) {
    const UpdateTimings timings;
    EXPECT_EQ(timings.answer, 3000ms);
    EXPECT_EQ(timings.interval, 86400s);
}

TEST_F(UpdateCheckerTest, givesASilentServerUpAfterThreeSeconds) {
    tell(server(), {{u"path"_s, u"/slow"_s}, {u"raw"_s, QString()}, {u"after"_s, u"hold"_s}});
    checker({at(u"/slow"_s)}, {});
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(firstOutcome(), UpdateOutcome::Failed);
    EXPECT_GE(clock.elapsed(), 2900);
    EXPECT_LT(clock.elapsed(), 10000);
}

TEST_F(UpdateCheckerTest, takesGarbageForAFailure) {
    serve(u"/garbage"_s, u"<html>Welcome to the hotel's network</html>"_s);
    expectFailureAndFallback(at(u"/garbage"_s));
}

TEST_F(UpdateCheckerTest, takesAnAnswerThatIsNotHttpForAFailure) {
    tell(server(),
         {{u"path"_s, u"/smtp"_s}, {u"raw"_s, QString(u"220 mail ready\r\n"_s + manifest41)}});
    expectFailureAndFallback(at(u"/smtp"_s));
}

TEST_F(UpdateCheckerTest, takesAConnectionThatClosesForAFailure) {
    tell(server(), {{u"path"_s, u"/close"_s}, {u"raw"_s, QString()}});
    expectFailureAndFallback(at(u"/close"_s));
}

TEST_F(UpdateCheckerTest, takesAnAnswerThatBreaksOffForAFailure) {
    tell(server(),
         {{u"path"_s, u"/half"_s},
          {u"raw"_s, QString(u"HTTP/1.1 200 OK\r\nContent-Length: 5000\r\n\r\n"_s + manifest41)}});
    expectFailureAndFallback(at(u"/half"_s));
}

TEST_F(UpdateCheckerTest, doesNotReadAnAnswerThatSaysItIsHuge) {
    tell(server(), {{u"path"_s, u"/huge"_s}, {u"body"_s, manifest41}, {u"fill"_s, 400'000'000}});
    expectFailureAndFallback(at(u"/huge"_s));
}

TEST_F(UpdateCheckerTest, doesNotReadAnAnswerThatTurnsOutToBeHuge) {
    tell(server(), {{u"path"_s, u"/endless"_s},
                    {u"raw"_s, u"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n"_s},
                    {u"fill"_s, 400'000'000}});
    expectFailureAndFallback(at(u"/endless"_s));
    EXPECT_TRUE(failure(at(u"/endless"_s)).endsWith(u"Antwort zu groß"));
}

TEST_F(UpdateCheckerTest, readsTheLargestManifest) {
    tell(server(), {{u"path"_s, u"/large"_s},
                    {u"body"_s, manifest41},
                    {u"fill"_s, largestManifest - manifest41.size()}});
    checker({at(u"/large"_s)});
    EXPECT_EQ(firstOutcome(), UpdateOutcome::Available);
}

TEST_F(UpdateCheckerTest, followsARedirection) {
    serve(u"/there"_s, manifest41);
    tell(server(), {{u"path"_s, u"/here"_s},
                    {u"status"_s, 302},
                    {u"headers"_s, QJsonObject{{u"Location"_s, u"/there"_s}}}});
    checker({at(u"/here"_s)});
    EXPECT_EQ(firstOutcome(), UpdateOutcome::Available);
    QStringList paths;
    for (const QJsonObject& request : server().events(u"request"_s)) {
        paths.append(request[u"path"_s].toString());
    }
    EXPECT_EQ(paths.value(0), u"/here"_s);
    EXPECT_TRUE(paths.contains(u"/there"_s));
    // A request on a connection that closes at that moment is sent again.
    EXPECT_LE(paths.size(), 4);
}

TEST_F(UpdateCheckerTest, leavesACircleOfRedirections) {
    tell(server(), {{u"path"_s, u"/round"_s},
                    {u"status"_s, 302},
                    {u"headers"_s, QJsonObject{{u"Location"_s, u"/round"_s}}}});
    expectFailureAndFallback(at(u"/round"_s));
    // A request on a connection that closes at that moment is sent again.
    EXPECT_LE(server().count(u"request"_s), 3 * mostRedirections);
}

class UpdateCheckerLedAway : public UpdateCheckerTest,
                             public ::testing::WithParamInterface<const char*> {};

TEST_P(UpdateCheckerLedAway, doesNotFollow) {
    tell(server(), {{u"path"_s, u"/away"_s},
                    {u"status"_s, 301},
                    {u"headers"_s, QJsonObject{{u"Location"_s, QString::fromUtf8(GetParam())}}}});
    expectFailureAndFallback(at(u"/away"_s));
}

INSTANTIATE_TEST_SUITE_P(Targets, UpdateCheckerLedAway,
                         ::testing::Values("file:///etc/hostname", "ftp://127.0.0.1/orv.json",
                                           "data:application/json,{}", "javascript:alert(1)"));

TEST_F(UpdateCheckerTest, doesNotTrustACertificateThatNobodyVouchesFor) {
    ServicePeer secure(u"manifest_service.py"_s, {u"--tls"_s});
    tell(secure, {{u"path"_s, u"/a"_s}, {u"body"_s, manifest41}});
    expectFailureAndFallback(secure.url(u"https"_s) + u"/a"_s);
    EXPECT_EQ(secure.count(u"request"_s), 0);
}

TEST_F(UpdateCheckerTest, isNotLedFromAnEncryptedPlaceToAnOpenOne) {
    serve(u"/open"_s, manifest41);
    ServicePeer secure(u"manifest_service.py"_s, {u"--tls"_s});
    tell(secure, {{u"path"_s, u"/a"_s},
                  {u"status"_s, 302},
                  {u"headers"_s, QJsonObject{{u"Location"_s, at(u"/open"_s)}}}});
    tell(secure, {{u"path"_s, u"/b"_s}, {u"body"_s, manifest41}});
    const TrustedCertificate trusted(secure.certificate());
    checker({secure.url(u"https"_s) + u"/a"_s, secure.url(u"https"_s) + u"/b"_s});
    EXPECT_EQ(firstOutcome(), UpdateOutcome::Available);
    EXPECT_FALSE(failure(secure.url(u"https"_s) + u"/a"_s).isEmpty());
    EXPECT_EQ(server().count(u"request"_s), 0);
}

TEST_F(UpdateCheckerTest, aServerWithoutTlsBehindAnHttpsAddressIsAFailure) {
    expectFailureAndFallback(server().url(u"https"_s) + u"/a"_s, {.answer = 5s});
}

TEST_F(UpdateCheckerTest, asksNobodyForNamesThatLeadNowhere) {
    const QStringList addresses = {u"https://updates.orvane.invalid/updates/orv.json"_s,
                                   u"https://updates-fallback.orvane.INVALID./updates/orv.json"_s};
    checker(addresses);
    EXPECT_EQ(firstOutcome(), UpdateOutcome::NoSource);
    // In the checker's own words: the network was not asked.
    EXPECT_EQ(log.lines(),
              (QStringList{u"Update: "_s + addresses.at(0) + u" failed: Host nicht gefunden"_s,
                           u"Update: "_s + addresses.at(1) + u" failed: Host nicht gefunden"_s}));
    EXPECT_TRUE(published.isEmpty());
}

TEST_F(UpdateCheckerTest, asksOnlyTheWeb) {
    for (const QString& address : {u"file:///etc/hostname"_s, u"qrc:/a"_s, u""_s, u"orv.json"_s}) {
        log.clear();
        checker({address});
        EXPECT_EQ(firstOutcome(), UpdateOutcome::Failed);
        EXPECT_EQ(failure(address), u"Update: "_s + address + u" failed: keine Webadresse"_s);
    }
}

TEST_F(UpdateCheckerTest, checksAgainAsOftenAsItIsToldTo) {
    serve(u"/a"_s, uR"({"version": "4.9", "url": "https://example.org/orv"})"_s);
    checker({at(u"/a"_s)}, {.answer = 10s, .interval = 20ms});
    EXPECT_TRUE(waitUntil([this] { return server().count(u"request"_s) >= 3; }));
    serve(u"/a"_s, manifest41);
    EXPECT_TRUE(waitUntil([this] { return checker_->updateAvailable(); }));
}

TEST_F(UpdateCheckerTest, oneCheckServesEverybodyWhoAsksMeanwhile) {
    serve(u"/a"_s, manifest41);
    checker({at(u"/a"_s)});
    int answers = 0;
    for (int i = 0; i < 3; ++i) {
        checker_->checkForUpdate([&](UpdateOutcome) { ++answers; });
    }
    EXPECT_EQ(answers, 0) << "never from inside the call";
    ASSERT_TRUE(waitUntil([&] { return answers == 3; }));
    EXPECT_EQ(server().count(u"request"_s), 1);
}

TEST_F(UpdateCheckerTest, endsInTheMiddleOfACheckWithoutAWord) {
    tell(server(), {{u"path"_s, u"/slow"_s}, {u"raw"_s, QString()}, {u"after"_s, u"hold"_s}});
    checker({at(u"/slow"_s)});
    ASSERT_TRUE(waitUntil([this] { return server().count(u"request"_s) == 1; }));
    checker_.reset();
    drainEvents();
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_TRUE(waitUntil([this] { return server().count(u"gone"_s) == 1; }));
}

TEST_F(UpdateCheckerTest, opensTheDownloadOnlyWhenItIsAWebAddress) {
    checker({});
    checker_->openDownload();
    EXPECT_TRUE(opener.addresses.isEmpty()) << "nothing is known yet";
    serve(u"/a"_s, manifest41);
    checker({at(u"/a"_s)});
    firstOutcome();
    checker_->openDownload();
    EXPECT_EQ(opener.addresses, QStringList{u"https://example.org/orv"_s});
    for (const QString& url : {u"file:///bin/sh"_s, u"javascript:1"_s, u"no address"_s, u""_s}) {
        serve(u"/a"_s, uR"({"version": "5", "url": "%1"})"_s.arg(url));
        firstOutcome();
        EXPECT_EQ(checker_->downloadURL(), url);
        checker_->openDownload();
        EXPECT_EQ(opener.addresses.size(), 1);
    }
}

TEST(UpdateCheckerShared, isTheOneThereIs) {
    const LogCapture log;
    RecordedOpener opener;
    const UpdateChecker checker(
        UpdateEnvironment{.currentVersion = u"1"_s, .updateURLs = {}, .opener = opener});
    EXPECT_EQ(&UpdateChecker::shared(), &checker);
}

} // namespace

} // namespace orv::test
