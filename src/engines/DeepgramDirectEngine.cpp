#include "DeepgramDirectEngine.h"

#include "DeepgramMessages.h"
#include "ServiceRequests.h"
#include "TranslationSettings.h"
#include "UpgradeCall.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QString engineId = u"deepgram"_s;
const QString keyPrefix = u"Token "_s;

/// A stream that is opened and never used, in the language that every account has.
std::vector<KeyQuestion> keyQuestions(const ServiceEndpoints& endpoints,
                                      const CloudEngineConfig& config) {
    const QByteArray key = headerValue(keyPrefix + config.apiKey);
    const QUrl url = deepgramStreamUrl(endpoints.at(deepgramHost), config.sampleRate, u"en"_s);
    return {
        {.call = upgradeCall(key.isNull() ? QUrl() : url, key), .judge = deepgramHandshakeFault}};
}

} // namespace

EngineDescriptor deepgramEngine() {
    return {.id = engineId,
            .name = u"Deepgram"_s,
            .detailKey = u"settings.engine.deepgram.detail"_s,
            .hintKey = u"settings.engine.deepgram.hint"_s,
            .icon = u"bolt.horizontal"_s,
            .infoText =
                u"STT: Deepgram Echtzeit-Streaming (direkt) · Translation: Google Translate "
                "(API Key nötig)"_s,
            .translator = u"Google Translate"_s,
            .soundGoesTo = u"Deepgram"_s,
            .recognises = deepgramOffers,
            .fields = {{.kind = EngineField::Kind::Key,
                        .text = &TranslationSettings::deepgramApiKey,
                        .isRequired = true,
                        .message = u"engineApiKey"_s,
                        .config = &CloudEngineConfig::apiKey,
                        .questions = keyQuestions},
                       translationKeyField()},
            .make =
                [](const ServiceEndpoints& endpoints, const EngineTimings& timings) {
                    return std::make_shared<DeepgramDirectEngine>(endpoints, timings);
                },
            .isAnnounced = false};
}

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
    return engineId;
}

QString DeepgramDirectEngine::name() const {
    return u"DeepgramDirectEngine"_s;
}

QCoro::Task<> DeepgramDirectEngine::connect(CloudEngineConfig config) {
    if (config.apiKey.isEmpty()) {
        throw CloudEngineError::missingApiKey(u"Deepgram API Key fehlt"_s);
    }
    if (!deepgramOffers(config.sourceLang)) {
        throw CloudEngineError::unknownLanguage(u"Deepgram erkennt diese Sprache nicht: "_s +
                                                config.sourceLang);
    }
    const QUrl url =
        deepgramStreamUrl(endpoints().at(deepgramHost), config.sampleRate, config.sourceLang);
    if (!url.isValid()) {
        throw CloudEngineError::connectionFailed(u"Ungültige Deepgram URL"_s);
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
    if (pcm.isEmpty()) {
        Completion<QString> nothingToSend; // An empty frame would end the stream.
        nothingToSend.complete({});
        return nothingToSend;
    }
    return socket.sendSound(WebSocketFrameKind::Binary, pcm);
}

QString DeepgramDirectEngine::farewell() const {
    return deepgramCloseStream();
}

QStringList DeepgramDirectEngine::finalTranscripts(const QByteArray& message) {
    return {deepgramTranscript(message)};
}

bool DeepgramDirectEngine::isLast(const QByteArray& message) const {
    return deepgramIsLast(message);
}

ServiceFault DeepgramDirectEngine::refusal(const HttpOutcome& answer) const {
    return deepgramRefusal(answer.status, headerIn(answer.headers, "dg-error"), answer.body);
}

ServiceFault DeepgramDirectEngine::closing(int closeCode, const QString& reason) const {
    return deepgramClosing(closeCode, reason);
}

} // namespace orv
