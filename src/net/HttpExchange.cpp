#include "HttpExchange.h"

#include "ConnectionRace.h"
#include "ConnectionWatch.h"
#include "HttpClient.h"
#include "Post.h"

#include <QPointer>
#include <QSslSocket>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

namespace {

/// How much of an answer is read at a time, and held of one that is thrown away, bytes.
constexpr qint64 pieceSize = 65536;

/// How long a server may take to confirm what it got: of a connection that was kept, which may lead
/// into a network that is gone, so that there is time for another one; and of a new one.
constexpr auto keptPatience = 3s;
constexpr auto newPatience = 8s;

QString errorText(const QTcpSocket& socket, QAbstractSocket::SocketError error) {
    const QString text = socket.errorString();
    return error == QAbstractSocket::SslHandshakeFailedError ? u"SSL handshake failed: " + text
                                                             : text;
}

} // namespace

HttpExchange::HttpExchange(HttpClient& client, HttpCall call, const HttpLimits& limits)
    : client_(client)
    , call_(std::move(call))
    , answer_(limits.largestBody)
    , keepsContent_(limits.largestBody.has_value()) {
    const auto limit = [this](QTimer& timer, std::optional<std::chrono::milliseconds> length) {
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
        timer.callOnTimeout(this, [this] {
            outcome_.timedOut = true;
            finish(u"Zeitüberschreitung"_s);
        });
        if (length) {
            timer.start(*length);
        }
    };
    limit(whole_, limits.whole);
    limit(idle_, limits.idle);
}

HttpExchange::~HttpExchange() {
    if (socket_) {
        socket_->disconnect(this);
        socket_->abort();
    }
}

bool HttpExchange::isEncrypted() const {
    return call_.url.scheme() == u"https";
}

quint16 HttpExchange::port() const {
    return static_cast<quint16>(call_.url.port(isEncrypted() ? 443 : 80));
}

void HttpExchange::start() {
    if (client_.isReadyFor(call_.url)) {
        begin();
    } else {
        connect(&client_.preparation_, &NetworkPreparation::ready, this, &HttpExchange::begin);
        client_.preparation_.start();
    }
}

void HttpExchange::begin() {
    if (isOver_) {
        return;
    }
    if (auto kept = client_.takeKept(call_.url)) {
        isReused_ = true;
        take(std::move(kept));
        isConnected_ = true;
        write();
    } else {
        findHost();
    }
}

void HttpExchange::findHost() {
    proxy_ = client_.proxyFor(call_.url);
    if (proxy_.type() != QNetworkProxy::NoProxy) {
        // Which finds the address itself.
        take(connectTo(call_.url.host(QUrl::FullyEncoded)));
        return;
    }
    client_.lookups_.resolve(call_.url.host(), [self = QPointer(this)](const HostAnswer& answer) {
        if (self) {
            self->addressesFound(answer);
        }
    });
}

void HttpExchange::addressesFound(const HostAnswer& answer) {
    if (isOver_) {
        return;
    }
    if (answer.addresses.isEmpty()) {
        finish(answer.error);
    } else {
        connectToAny(answer.addresses);
    }
}

void HttpExchange::connectToAny(const QList<QHostAddress>& addresses) {
    race_ = std::make_unique<ConnectionRace>(
        addresses, [this](const QHostAddress& address) { return connectTo(address.toString()); });
    connect(race_.get(), &ConnectionRace::won, this, [this] {
        take(race_->takeWinner());
        connected();
    });
    connect(race_.get(), &ConnectionRace::lost, this, &HttpExchange::finish);
    race_->start();
}

std::unique_ptr<QTcpSocket> HttpExchange::connectTo(const QString& peer) const {
    if (!isEncrypted()) {
        auto socket = std::make_unique<QTcpSocket>();
        socket->setProxy(proxy_);
        socket->connectToHost(peer, port());
        return socket;
    }
    auto socket = std::make_unique<QSslSocket>();
    socket->setProxy(proxy_);
    // Certificate and server name indication go by the name, not by the address.
    socket->connectToHostEncrypted(peer, port(), call_.url.host(QUrl::FullyEncoded));
    return socket;
}

void HttpExchange::take(std::unique_ptr<QTcpSocket> socket) {
    socket_ = std::move(socket);
    if (!keepsContent_) {
        socket_->setReadBufferSize(pieceSize);
    }
    connect(socket_.get(), &QTcpSocket::connected, this, &HttpExchange::connected);
    connect(socket_.get(), &QTcpSocket::bytesWritten, this, &HttpExchange::progress);
    connect(socket_.get(), &QTcpSocket::readyRead, this, &HttpExchange::readAnswer);
    connect(socket_.get(), &QTcpSocket::errorOccurred, this, &HttpExchange::socketFailed);
    if (const auto* secure = qobject_cast<QSslSocket*>(socket_.get())) {
        connect(secure, &QSslSocket::encrypted, this, &HttpExchange::write);
        connect(secure, &QSslSocket::encryptedBytesWritten, this, &HttpExchange::progress);
    }
}

void HttpExchange::connected() {
    isConnected_ = true;
    progress();
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    if (!isEncrypted()) {
        write();
    }
}

void HttpExchange::write() {
    progress();
    endConnectionWhenUnheard(*socket_, isReused_ ? keptPatience : newPatience);
    socket_->write(requestBytes(call_, client_.afterAnswer()));
    // At once, instead of after whatever else the main thread has to do in between.
    socket_->flush();
}

void HttpExchange::progress() {
    if (idle_.isActive()) {
        idle_.start();
    }
}

void HttpExchange::readAnswer() {
    progress();
    hasRead_ = true;
    while (answer_.state() == HttpAnswer::State::Reading && socket_->bytesAvailable() > 0) {
        answer_.read(socket_->read(pieceSize));
    }
    finishIfRead();
}

void HttpExchange::socketFailed(QAbstractSocket::SocketError error) {
    const bool isStale = isReused_ && !hasRead_;
    if (isStale) {
        socket_->disconnect(this);
        // Not from inside the socket's own signal.
        orv::post(this, [this] { beginAnew(); });
    } else if (error == QAbstractSocket::RemoteHostClosedError && isConnected_) {
        answer_.read(socket_->readAll());
        answer_.close();
        finishIfRead();
    } else {
        finish(errorText(*socket_, error));
    }
}

void HttpExchange::beginAnew() {
    if (!isOver_) {
        isReused_ = false;
        isConnected_ = false;
        findHost();
    }
}

void HttpExchange::finishIfRead() {
    switch (answer_.state()) {
    case HttpAnswer::State::Reading:
        break;
    case HttpAnswer::State::Whole:
        finish({});
        break;
    case HttpAnswer::State::NotHttp:
        finish(u"Keine HTTP-Antwort"_s);
        break;
    case HttpAnswer::State::CutShort:
        finish(u"Verbindung vor dem Ende der Antwort geschlossen"_s);
        break;
    case HttpAnswer::State::TooLarge:
        finish(u"Antwort zu groß"_s);
        break;
    }
}

void HttpExchange::finish(const QString& error) {
    isOver_ = true;
    whole_.stop();
    idle_.stop();
    if (race_) {
        race_->disconnect(this);
    }
    if (socket_) {
        socket_->disconnect(this);
    }
    outcome_.error = error;
    if (error.isEmpty()) {
        outcome_ = {.error = {},
                    .timedOut = false,
                    .status = answer_.status(),
                    .headers = answer_.headers(),
                    .body = answer_.body()};
    }
    // Not from inside the socket's own signal: whoever hears of it may destroy everything here.
    orv::post(this, [this] { end(); });
}

void HttpExchange::end() {
    race_.reset();
    if (socket_ && outcome_.error.isEmpty() && answer_.leavesConnectionOpen()) {
        client_.keep(call_.url, std::move(socket_));
    } else if (socket_) {
        socket_->abort();
    }
    const HttpOutcome outcome = std::move(outcome_);
    Q_EMIT ended(outcome);
}

} // namespace orv
