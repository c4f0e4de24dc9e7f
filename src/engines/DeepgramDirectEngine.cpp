#include "DeepgramDirectEngine.h"

#include "DeepgramMessages.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

DeepgramDirectEngine::DeepgramDirectEngine(ServiceEndpoints endpoints, EngineTimings timings)
    : StreamingEngine(u"Deepgram"_s, std::move(endpoints), timings) {
    keepAliveTimer_.setInterval(timings.keepAlive);
    QObject::connect(&keepAliveTimer_, &QTimer::timeout, &keepAliveTimer_, [this] {
        if (isConnected()) {
            socket()->sendText(deepgramKeepAlive());
        }
    });
}

QString DeepgramDirectEngine::id() const {
    return u"deepgram"_s;
}

QString DeepgramDirectEngine::name() const {
    return u"DeepgramDirectEngine"_s;
}

QCoro::Task<> DeepgramDirectEngine::connect(CloudEngineConfig config) {
    if (config.apiKey.isEmpty()) {
        throw CloudEngineError(CloudEngineError::Kind::MissingApiKey, u"Deepgram API Key fehlt"_s);
    }
    const QUrl url = deepgramUrl(endpoints().deepgram, config.sampleRate, config.sourceLang);
    if (!url.isValid()) {
        throw CloudEngineError(CloudEngineError::Kind::ConnectionFailed,
                               u"Ungültige Deepgram URL"_s);
    }
    open(url, u"Token "_s, config);
    keepAliveTimer_.start();
    begin();
    co_return;
}

QCoro::Task<> DeepgramDirectEngine::disconnect() {
    keepAliveTimer_.stop();
    return StreamingEngine::disconnect();
}

Completion<QString> DeepgramDirectEngine::sendBlock(StreamingSocket& socket,
                                                    const QByteArray& pcm) {
    return socket.sendSound(WebSocketFrameKind::Binary, pcm);
}

QString DeepgramDirectEngine::farewell() const {
    return deepgramCloseStream();
}

QString DeepgramDirectEngine::finalTranscript(const QByteArray& message) const {
    return deepgramTranscript(message);
}

} // namespace orv
