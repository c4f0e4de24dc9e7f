#include "HttpGet.h"

#include "Post.h"

#include <QNetworkProxy>
#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// How much of an answer is held at a time, bytes.
constexpr qint64 pieceSize = 65536;

} // namespace

QByteArray getRequest(const QUrl& url) {
    const QUrl target = url.adjusted(QUrl::RemoveScheme | QUrl::RemoveAuthority);
    const QString host = url.host(QUrl::FullyEncoded);
    const QByteArray authority =
        (host.contains(u':') ? QString(u'[' % host % u']') : host).toLatin1();
    return "GET " + target.toEncoded() + " HTTP/1.1\r\nHost: " + authority + ':' +
           QByteArray::number(url.port(80)) +
           "\r\nUser-Agent: Orvane\r\nAccept: */*\r\nConnection: close\r\n\r\n";
}

HttpGet::HttpGet(QUrl url, Done done)
    : url_(std::move(url))
    , done_(std::move(done)) {
    socket_.setProxy(QNetworkProxy::NoProxy);
    socket_.setReadBufferSize(pieceSize);
    connect(&socket_, &QTcpSocket::connected, this, &HttpGet::connected);
    connect(&socket_, &QTcpSocket::readyRead, this, &HttpGet::readAnswer);
    connect(&socket_, &QTcpSocket::errorOccurred, this, &HttpGet::socketFailed);
}

HttpGet::~HttpGet() {
    socket_.disconnect(this);
    socket_.abort();
}

void HttpGet::start(HostLookups& lookups) {
    lookups.resolve(url_.host(), [self = QPointer(this)](const HostAnswer& answer) {
        if (self) {
            self->addressesFound(answer);
        }
    });
}

void HttpGet::addressesFound(const HostAnswer& answer) {
    addresses_ = answer.addresses;
    if (addresses_.isEmpty()) {
        finish(answer.error);
    } else {
        connectToNext();
    }
}

void HttpGet::connectToNext() {
    socket_.connectToHost(addresses_.takeFirst(), static_cast<quint16>(url_.port(80)));
}

void HttpGet::connected() {
    isConnected_ = true;
    socket_.write(getRequest(url_));
}

void HttpGet::readAnswer() {
    answer_.read(socket_.read(pieceSize));
    finishIfRead();
}

void HttpGet::socketFailed(QAbstractSocket::SocketError error) {
    if (!isConnected_ && !addresses_.isEmpty()) {
        // Not from inside the socket's own signal.
        orv::post(this, [this] {
            socket_.abort();
            connectToNext();
        });
    } else if (error == QAbstractSocket::RemoteHostClosedError) {
        answer_.read(socket_.readAll());
        answer_.close();
        finishIfRead();
    } else {
        finish(socket_.errorString());
    }
}

void HttpGet::finishIfRead() {
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
    }
}

void HttpGet::finish(const QString& error) {
    socket_.disconnect(this);
    socket_.abort();
    // Not from inside the socket's own signal: whoever is told may destroy this object.
    orv::post(this, [this, error] {
        const Done done = std::move(done_);
        done(error);
    });
}

} // namespace orv
