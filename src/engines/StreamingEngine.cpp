#include "StreamingEngine.h"

#include "Log.h"
#include "ServiceError.h"
#include "ServiceRequests.h"

#include <QNetworkRequest>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

StreamingEngine::StreamingEngine(QString product, ServiceEndpoints endpoints, EngineTimings timings)
    : product_(std::move(product))
    , endpoints_(std::move(endpoints))
    , timings_(timings)
    , targetLang_(u"en"_s)
    , translation_(endpoints_, timings.translation) {}

void StreamingEngine::open(const QUrl& url, const QString& prefix,
                           const CloudEngineConfig& config) {
    apiKey_ = config.apiKey;
    targetLang_ = config.targetLang;
    isDisconnected_ = false;
    const QByteArray authorization = headerValue(prefix + config.apiKey);
    // A key that cannot stand in a header fails like one that the service refuses.
    QNetworkRequest request(authorization.isNull() ? QUrl() : url);
    request.setRawHeader("Authorization", authorization);
    socket_ = std::make_unique<StreamingSocket>(request, timings_);
}

void StreamingEngine::begin() {
    isConnected_ = true;
    receiveMessages();
    report(u"connected"_s, product_ + u" connected (streaming)"_s);
}

QCoro::Task<> StreamingEngine::receiveMessages() {
    const Lifetime::Observer life = observe();
    while (!life.ended()) {
        const StreamingSocket::Message message = co_await socket_->receive();
        if (life.ended()) {
            co_return;
        }
        if (message.kind == StreamingSocket::Message::Kind::Failure) {
            end(message.text);
            co_return;
        }
        if (message.kind == StreamingSocket::Message::Kind::Text) {
            translateAndDeliver(finalTranscript(message.text.toUtf8()));
        }
    }
}

void StreamingEngine::end(const QString& reason) {
    QString line = reason;
    if (!apiKey_.isEmpty()) {
        line.replace(apiKey_, u"…"_s); // Services quote what they refuse.
    }
    if (isConnected_) {
        logLine(u"❌ "_s + product_ + u": "_s + line);
    }
    isConnected_ = false;
    report(u"error"_s, product_ + u" disconnected"_s);
}

void StreamingEngine::translateAndDeliver(const QString& transcript) {
    if (transcript.isEmpty()) {
        return;
    }
    if (googleApiKeyForTranslation_.isEmpty()) {
        deliver(transcript, transcript);
    } else {
        translateFirst(transcript);
    }
}

QCoro::Task<> StreamingEngine::translateFirst(QString transcript) {
    const Lifetime::Observer life = observe();
    const QString translation = co_await translation_.googleTranslateText(
        transcript, targetLang_, googleApiKeyForTranslation_);
    if (!life.ended()) {
        deliver(transcript, translation);
    }
}

void StreamingEngine::deliver(const QString& transcript, const QString& translation) {
    if (const auto callback = onTranslation) {
        callback(transcript, translation);
    }
}

void StreamingEngine::report(const QString& status, const QString& message) {
    if (const auto callback = onStatus) {
        callback(status, message);
    }
}

QCoro::Task<> StreamingEngine::sendAudio(QByteArray pcm) {
    if (!isConnected_ || !socket_) {
        co_return;
    }
    const QString error = co_await sendBlock(*socket_, pcm);
    if (!error.isEmpty()) {
        throw ServiceError(error);
    }
}

QCoro::Task<> StreamingEngine::disconnect() {
    isDisconnected_ = true;
    if (!socket_) {
        co_return;
    }
    const Lifetime::Observer life = observe();
    if (std::exchange(isConnected_, false)) {
        socket_->hurry();
        co_await socket_->sendText(farewell());
        if (life.ended()) {
            co_return;
        }
    }
    socket_->close();
}

} // namespace orv
