#include "HttpClient.h"

#include "NameServer.h"
#include "Ports.h"
#include "ServicePeer.h"
#include "TrustedCertificate.h"
#include "WaitUntil.h"

#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

const QByteArray plainAnswer = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nHello";

/// Answers every request that has come whole, on the test's own thread.
class Server {
  public:
    Server() {
        EXPECT_TRUE(server_.listen(QHostAddress(QHostAddress::LocalHost)));
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] { accept(); });
    }

    QUrl url(const QString& host = u"127.0.0.1"_s) const {
        return QUrl(u"http://%1:%2/x"_s.arg(host).arg(server_.serverPort()));
    }

    QByteArray answer = plainAnswer; ///< Null: none.
    qsizetype hangsUpAt = 0;         ///< The number of a request that it answers by closing.
    int connections = 0;
    int gone = 0; ///< Connections that are over.
    QByteArrayList requests;

  private:
    void accept() {
        while (QTcpSocket* socket = server_.nextPendingConnection()) {
            ++connections;
            QObject::connect(socket, &QTcpSocket::disconnected, &server_, [this] { ++gone; });
            QObject::connect(socket, &QTcpSocket::readyRead, &server_, [this, socket] {
                requests.append(socket->readAll());
                if (requests.size() == hangsUpAt) {
                    socket->disconnectFromHost();
                } else {
                    socket->write(answer);
                }
            });
        }
    }

    QTcpServer server_;
};

class HttpClientTest : public ::testing::Test {
  protected:
    std::unique_ptr<HttpExchange> send(HttpCall call,
                                       const HttpLimits& limits = {.largestBody = 1000}) {
        auto exchange = client->send(std::move(call), limits);
        QObject::connect(exchange.get(), &HttpExchange::ended, exchange.get(),
                         [this](const HttpOutcome& outcome) { outcomes.append(outcome); });
        return exchange;
    }

    /// The outcome of one request.
    HttpOutcome fetch(const QUrl& url, const HttpLimits& limits = {.largestBody = 1000}) {
        outcomes.clear();
        const auto exchange = send({.url = url}, limits);
        EXPECT_TRUE(outcomes.isEmpty()) << "never within the call";
        EXPECT_TRUE(waitUntil([this] { return !outcomes.isEmpty(); }));
        return outcomes.value(0);
    }

    void replaceClient(AfterAnswer afterAnswer, LookUpHost lookUp = systemLookUp) {
        client = std::make_unique<HttpClient>(HttpClient::Proxies::OfTheSystem, afterAnswer,
                                              std::move(lookUp));
    }

    Server server;
    NameServer names;
    QList<HttpOutcome> outcomes;
    std::unique_ptr<HttpClient> client =
        std::make_unique<HttpClient>(HttpClient::Proxies::OfTheSystem);
};

TEST_F(HttpClientTest, fetchesAnAnswer) {
    const HttpOutcome outcome = fetch(server.url());
    EXPECT_EQ(outcome.error, QString());
    EXPECT_EQ(outcome.status, 200);
    EXPECT_EQ(outcome.body, "Hello");
    EXPECT_TRUE(server.requests.value(0).startsWith("GET /x HTTP/1.1\r\n"));
}

TEST_F(HttpClientTest, aRedirectionIsAnAnswer) {
    server.answer = "HTTP/1.1 302 Found\r\nLocation: /there\r\nContent-Length: 0\r\n\r\n";
    const HttpOutcome outcome = fetch(server.url());
    EXPECT_EQ(outcome.error, QString());
    EXPECT_EQ(outcome.status, 302);
    EXPECT_EQ(headerIn(outcome.headers, "location"), "/there");
    EXPECT_EQ(server.requests.size(), 1);
}

TEST_F(HttpClientTest, aConnectionThatClosesIsAFailureAndTheRequestIsNotSentAgain) {
    server.hangsUpAt = 1;
    EXPECT_EQ(fetch(server.url()).error, u"Verbindung vor dem Ende der Antwort geschlossen"_s);
    drainEvents();
    EXPECT_EQ(server.requests.size(), 1);
}

TEST_F(HttpClientTest, whatIsNotHttpIsAFailure) {
    server.answer = "220 mail.example ESMTP\r\n";
    EXPECT_EQ(fetch(server.url()).error, u"Keine HTTP-Antwort"_s);
    EXPECT_EQ(server.requests.size(), 1);
}

TEST_F(HttpClientTest, anAnswerBeyondTheLimitIsAFailure) {
    EXPECT_EQ(fetch(server.url(), {.largestBody = 4}).error, u"Antwort zu groß"_s);
    EXPECT_EQ(fetch(server.url(), {.largestBody = 5}).body, "Hello");
    EXPECT_EQ(fetch(server.url(), {}).body, QByteArray()) << "nobody wants the content";
}

TEST_F(HttpClientTest, aSilentServerIsGivenUp) {
    server.answer.clear();
    EXPECT_EQ(fetch(server.url(), {.whole = 50ms}).error, u"Zeitüberschreitung"_s);
    EXPECT_EQ(fetch(server.url(), {.idle = 50ms}).error, u"Zeitüberschreitung"_s);
    EXPECT_TRUE(waitUntil([this] { return server.gone == server.connections; }));
}

TEST_F(HttpClientTest, aSilentNameServerCostsTheDeadlineAndNoMore) {
    replaceClient(AfterAnswer::Close, names.lookUp());
    EXPECT_EQ(fetch(server.url(u"orvane.test"_s), {.whole = 50ms}).error, u"Zeitüberschreitung"_s);
    const auto exchange = send({.url = server.url(u"orvane.test"_s)});
    ASSERT_TRUE(waitUntil([this] { return names.asked().size() == 1; }));
    outcomes.clear();
    names.answer({{QHostAddress(QHostAddress::LocalHost)}, {}});
    EXPECT_TRUE(waitUntil([this] { return !outcomes.isEmpty(); }));
    EXPECT_EQ(outcomes.size(), 1) << "the one that was given up has ended once";
}

TEST_F(HttpClientTest, goesWhileANameServerIsSilent) {
    replaceClient(AfterAnswer::Close, names.lookUp());
    auto exchange = send({.url = server.url(u"orvane.test"_s)});
    ASSERT_TRUE(waitUntil([this] { return names.asked().size() == 1; }));
    exchange.reset();
    client.reset();
    names.answer({{QHostAddress(QHostAddress::LocalHost)}, {}});
    drainEvents();
    EXPECT_TRUE(outcomes.isEmpty());
}

TEST_F(HttpClientTest, everyAddressIsTried) {
    names.answer({{QHostAddress(u"127.0.0.2"_s), QHostAddress(QHostAddress::LocalHost)}, {}});
    replaceClient(AfterAnswer::Close, names.lookUp());
    EXPECT_EQ(fetch(server.url(u"orvane.test"_s)).body, "Hello");
    EXPECT_TRUE(server.requests.value(0).contains(
        QByteArray("\r\nHost: orvane.test:" + QByteArray::number(server.url().port()))));
}

TEST_F(HttpClientTest, nobodyAtAnyAddressIsAFailure) {
    const RefusingPort nobody;
    const QUrl url(u"http://127.0.0.1:%1/"_s.arg(nobody.port()));
    EXPECT_EQ(fetch(url).error, u"Connection refused"_s);
}

TEST_F(HttpClientTest, destroyingAnExchangeClosesItsConnection) {
    server.answer.clear();
    auto exchange = send({.url = server.url()});
    ASSERT_TRUE(waitUntil([this] { return server.requests.size() == 1; }));
    exchange.reset();
    EXPECT_TRUE(waitUntil([this] { return server.gone == 1; }));
    EXPECT_TRUE(outcomes.isEmpty());
}

TEST_F(HttpClientTest, everyRequestHasAConnectionOfItsOwn) {
    fetch(server.url());
    fetch(server.url());
    EXPECT_EQ(server.connections, 2);
    EXPECT_TRUE(waitUntil([this] { return server.gone == 2; }));
}

TEST_F(HttpClientTest, aKeptConnectionCarriesTheNextRequest) {
    replaceClient(AfterAnswer::Keep);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(fetch(server.url()).body, "Hello");
        EXPECT_EQ(server.requests.size(), i);
    }
    EXPECT_EQ(server.connections, 1);
    client.reset();
    EXPECT_TRUE(waitUntil([this] { return server.gone == 1; }));
}

TEST_F(HttpClientTest, aKeptConnectionThatTurnsOutToBeClosedIsReplaced) {
    replaceClient(AfterAnswer::Keep);
    fetch(server.url());
    // The server hangs up as the second request comes, as if it had been on its way to do so.
    server.hangsUpAt = 2;
    outcomes.clear();
    const auto exchange = send({.url = server.url(), .body = "again"});
    ASSERT_TRUE(waitUntil([this] { return !outcomes.isEmpty(); }));
    EXPECT_EQ(outcomes.value(0).body, "Hello");
    EXPECT_EQ(server.connections, 2);
    EXPECT_TRUE(server.requests.value(2).endsWith("\r\n\r\nagain"));
}

TEST_F(HttpClientTest, aConnectionIsKeptForItsOwnHostOnly) {
    replaceClient(AfterAnswer::Keep);
    Server other;
    fetch(server.url());
    fetch(other.url());
    EXPECT_EQ(server.connections, 1);
    EXPECT_EQ(other.connections, 1);
}

TEST_F(HttpClientTest, aConnectionThatTheServerClosesIsNotKept) {
    replaceClient(AfterAnswer::Keep);
    server.answer = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
    fetch(server.url());
    fetch(server.url());
    EXPECT_EQ(server.connections, 2);
}

/// A service with a certificate for a name that the look-up leads to this machine.
class HttpClientTlsTest : public HttpClientTest {
  protected:
    HttpClientTlsTest() {
        names.answer({{QHostAddress(QHostAddress::LocalHost)}, {}});
        replaceClient(AfterAnswer::Close, names.lookUp());
        peer.command({{u"path"_s, u"/x"_s}, {u"body"_s, u"Hello"_s}});
        EXPECT_TRUE(waitUntil([this] { return peer.count(u"told"_s) == 1; }));
    }

    QUrl at(const QString& host) const {
        return QUrl(u"https://%1:%2/x"_s.arg(host).arg(peer.port()));
    }

    ServicePeer peer{u"manifest_service.py"_s, {u"--name"_s, u"orvane.test"_s}};
};

TEST_F(HttpClientTlsTest, trustsACertificateForTheNameAndSaysWhomItWants) {
    const TrustedCertificate trusted(peer.certificate());
    const HttpOutcome outcome = fetch(at(u"orvane.test"_s));
    EXPECT_EQ(outcome.error, QString());
    EXPECT_EQ(outcome.body, "Hello");
    EXPECT_EQ(peer.events(u"hello"_s).value(0)[u"name"_s].toString(), u"orvane.test"_s);
    const QJsonObject headers = peer.events(u"request"_s).value(0)[u"headers"_s].toObject();
    EXPECT_EQ(headers[u"host"_s].toString(), u"orvane.test:"_s + QString::number(peer.port()));
}

TEST_F(HttpClientTlsTest, doesNotTrustACertificateForAnotherName) {
    const TrustedCertificate trusted(peer.certificate());
    for (const QString& host : {u"other.test"_s, u"127.0.0.1"_s}) {
        const HttpOutcome outcome = fetch(at(host));
        EXPECT_TRUE(outcome.error.startsWith(u"SSL handshake failed: "_s))
            << qPrintable(outcome.error);
    }
    EXPECT_EQ(peer.count(u"request"_s), 0);
}

TEST_F(HttpClientTlsTest, doesNotTrustACertificateThatNobodyVouchesFor) {
    EXPECT_TRUE(fetch(at(u"orvane.test"_s)).error.contains(u"self-signed"_s));
    EXPECT_EQ(peer.count(u"request"_s), 0);
}

} // namespace

} // namespace orv::test
