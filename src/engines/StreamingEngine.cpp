#include "StreamingEngine.h"

#include "Log.h"
#include "ServiceError.h"
#include "ServiceRequests.h"
#include "UpgradeCall.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

StreamingEngine::StreamingEngine(QString product, ServiceEndpoints endpoints, EngineTimings timings)
    : product_(std::move(product))
    , endpoints_(std::move(endpoints))
    , timings_(timings)
    , targetLang_(u"en"_s)
    , translation_(endpoints_, timings.translation) {
    translation_.onFault = [this](const ServiceFault& fault) { reportFault(fault); };
}

void StreamingEngine::open(const QUrl& url, const QString& prefix,
                           const CloudEngineConfig& config) {
    apiKey_ = config.apiKey;
    targetLang_ = config.targetLang;
    wantsTranslation_ = config.sourceLang != config.targetLang;
    isDisconnected_ = false;
    const QByteArray authorization = headerValue(prefix + config.apiKey);
    // A key that cannot stand in a header fails like one that the service refuses.
    request_ = QNetworkRequest(authorization.isNull() ? QUrl() : url);
    request_.setRawHeader("Authorization", authorization);
    told_.reset();
    socket_ = std::make_unique<StreamingSocket>(request_, timings_);
}

void StreamingEngine::begin() {
    const Lifetime::Observer life = observe();
    isConnected_ = true;
    receiveMessages();
    report(u"connected"_s, product_ + u" connected (streaming)"_s);
    if (life.ended() || !wantsTranslation_ || !googleApiKeyForTranslation_.isEmpty()) {
        return;
    }
    reportFault({ServiceFault::Kind::KeyMissing, {}, TranslationClient::product});
}

QCoro::Task<> StreamingEngine::receiveMessages() {
    const Lifetime::Observer life = observe();
    while (!life.ended()) {
        const StreamingSocket::Message message = co_await socket_->receive();
        if (life.ended()) {
            co_return;
        }
        if (message.kind == StreamingSocket::Message::Kind::Failure) {
            end(message);
            co_return;
        }
        if (message.kind == StreamingSocket::Message::Kind::Text) {
            take(message.text.toUtf8());
        }
    }
}

void StreamingEngine::take(const QByteArray& message) {
    const Lifetime::Observer life = observe();
    if (auto fault = faultIn(message)) {
        told_ = std::move(fault);
    }
    deliverAll(finalTranscripts(message));
    if (life.ended() || !isDisconnected_ || !isLast(message)) {
        return;
    }
    deliverAll(lastTranscripts());
    if (!life.ended()) {
        lastWord_.said.complete(true);
    }
}

QCoro::Task<> StreamingEngine::end(StreamingSocket::Message failure) {
    const Lifetime::Observer life = observe();
    const bool wasConnected = isConnected_;
    if (wasConnected) {
        const QString line = failure.text;
        logLine(u"❌ "_s + product_ + u": "_s + sayable(line, apiKey_));
    }
    isConnected_ = false;
    deliverAll(lastTranscripts());
    if (life.ended()) {
        co_return;
    }
    lastWord_.said.complete(true);
    if (life.ended()) {
        co_return;
    }
    if (wasConnected) {
        const ServiceFault fault = co_await whyRefused(failure);
        if (life.ended()) {
            co_return;
        }
        reportFault(fault);
        if (life.ended()) {
            co_return;
        }
    }
    report(u"error"_s, product_ + u" disconnected"_s);
}

/// Asks a service that refused the connection once more, in a way that lets its answer be read.
QCoro::Task<ServiceFault> StreamingEngine::whyRefused(StreamingSocket::Message failure) {
    if (told_) {
        co_return *told_;
    }
    if (failure.closeCode != 0) {
        co_return closing(failure.closeCode, failure.closeReason);
    }
    const ServiceFault fault{failure.fault, failure.text};
    if (socket_->wasAccepted() || !request_.url().isValid()) {
        co_return fault;
    }
    const Lifetime::Observer life = observe();
    try {
        HttpCall call = upgradeCall(request_.url(), request_.rawHeader("Authorization"));
        const HttpOutcome answer = co_await http_.exchange(std::move(call), timings_.recognition);
        const bool isTaken = answer.status == switchingProtocols;
        co_return life.ended() || isTaken ? fault : refusal(answer);
    } catch (const ServiceError&) {
        co_return fault;
    }
}

void StreamingEngine::deliverAll(const QStringList& transcripts) {
    const Lifetime::Observer life = observe();
    for (const QString& transcript : transcripts) {
        if (!life.ended()) {
            translateAndDeliver(transcript);
        }
    }
}

void StreamingEngine::reportFault(ServiceFault fault) {
    fault.said = sayable(fault.said, apiKey_);
    if (const auto callback = onFault) {
        callback(fault);
    }
}

void StreamingEngine::translateAndDeliver(const QString& transcript) {
    if (transcript.isEmpty() || !onTranslation) {
        return; // Nobody pays for a translation that nobody gets.
    }
    if (googleApiKeyForTranslation_.isEmpty()) {
        deliver(transcript, transcript);
    } else {
        translateFirst(transcript);
    }
}

QCoro::Task<> StreamingEngine::translateFirst(QString transcript) {
    const Lifetime::Observer life = observe();
    const AnswerOrder::Place place = order_.take();
    const QString translation = co_await translation_.googleTranslateText(
        transcript, targetLang_, googleApiKeyForTranslation_);
    if (life.ended()) {
        co_return;
    }
    co_await place.turn();
    if (!life.ended()) {
        deliver(transcript, translation);
    }
}

QCoro::Task<> StreamingEngine::untilTranslated() {
    const AnswerOrder::Place place = order_.take();
    co_await place.turn();
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
        throw ServiceError(error, ServiceFault::Kind::NetworkFailed);
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
        socket_->awaitEnd();
        co_await Completion(lastWord_.said);
        if (life.ended()) {
            co_return;
        }
    }
    socket_->close();
    co_await untilTranslated();
}

} // namespace orv
