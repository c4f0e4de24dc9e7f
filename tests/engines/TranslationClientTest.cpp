#include "TranslationClient.h"
#include "TranslationMessages.h"

#include "WaitUntil.h"

#include <QCoroTask>

#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

/// Answers every request with fixed bytes, or never; remembers what was asked.
class HttpPeer {
  public:
    explicit HttpPeer(QByteArray answer)
        : answer_(std::move(answer)) {
        server_.listen(QHostAddress::LocalHost);
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
            QTcpSocket* socket = server_.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                request += socket->readAll();
                if (!answer_.isEmpty() && request.endsWith('}')) {
                    socket->write(answer_);
                    socket->disconnectFromHost();
                }
            });
        });
    }

    ServiceEndpoints endpoints() const {
        return {{translationHost, u"http://127.0.0.1:%1"_s.arg(server_.serverPort())}};
    }

    QByteArray request;

  private:
    QByteArray answer_;
    QTcpServer server_;
};

QByteArray answer(const QByteArray& status, const QByteArray& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

QCoro::Task<> store(TranslationClient& client, QString key, std::optional<QString>& result) {
    result = co_await client.googleTranslateText(u"Good \"day\""_s, u"de"_s, std::move(key));
}

QString translate(TranslationClient& client, const QString& key = u"KEY"_s) {
    std::optional<QString> result;
    store(client, key, result);
    EXPECT_TRUE(test::waitUntil([&] { return result.has_value(); }));
    return result.value_or(QString());
}

TEST(TranslationClient, asksTheWayTheServiceWantsIt) {
    HttpPeer peer(
        answer("200 OK", R"({"data":{"translations":[{"translatedText":"Tag &amp; x"}]}})"));
    TranslationClient client(peer.endpoints());
    EXPECT_EQ(translate(client), u"Tag &amp; x"_s);
    EXPECT_TRUE(peer.request.startsWith("POST /language/translate/v2?key=KEY HTTP/1.1\r\n"));
    // Names of headers are the same in either case.
    EXPECT_TRUE(peer.request.toLower().contains("\r\ncontent-type: application/json\r\n"));
    EXPECT_TRUE(peer.request.endsWith(R"({"format":"text","q":"Good \"day\"","target":"de"})"));
}

TEST(TranslationClient, takesATranslationWhateverTheHttpStatus) {
    HttpPeer peer(answer("500 Oops", R"({"data":{"translations":[{"translatedText":"Tag"}]}})"));
    TranslationClient client(peer.endpoints());
    EXPECT_EQ(translate(client), u"Tag"_s);
}

TEST(TranslationClient, yieldsNothingWhenTheKeyIsRejected) {
    HttpPeer peer(answer("400 Bad Request", R"({"error":{"code":400,"message":"API key"}})"));
    TranslationClient client(peer.endpoints());
    EXPECT_EQ(translate(client), QString());
}

TEST(TranslationClient, yieldsNothingForABodyThatIsNotJson) {
    HttpPeer peer(answer("200 OK", "<html>hello</html>"));
    TranslationClient client(peer.endpoints());
    EXPECT_EQ(translate(client), QString());
}

TEST(TranslationClient, yieldsNothingWhenNobodyAnswersInTime) {
    HttpPeer peer{QByteArray()};
    TranslationClient client(peer.endpoints(), 50ms);
    EXPECT_EQ(translate(client), QString());
}

TEST(TranslationClient, yieldsNothingWhenNobodyListens) {
    const ServiceEndpoints endpoints{{translationHost, u"http://127.0.0.1:1"_s}};
    TranslationClient client(endpoints);
    EXPECT_EQ(translate(client), QString());
}

TEST(TranslationClient, yieldsNothingForAKeyThatFormsNoAddress) {
    TranslationClient client;
    EXPECT_EQ(translate(client, u"not a key"_s), QString());
}

TEST(TranslationClient, endsWhatIsUnderWayWhenDestroyed) {
    HttpPeer peer{QByteArray()};
    std::optional<QString> result;
    {
        TranslationClient client(peer.endpoints());
        store(client, u"KEY"_s, result);
        ASSERT_TRUE(test::waitUntil([&] { return !peer.request.isEmpty(); }));
    }
    EXPECT_EQ(result, QString());
}

} // namespace
} // namespace orv
