#include "AssemblyAIDirectEngine.h"

#include "AssemblyAIMessages.h"
#include "Log.h"
#include "TranslationSettings.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QString engineId = u"assemblyai"_s;

} // namespace

EngineDescriptor assemblyaiEngine() {
    return {.id = engineId,
            .name = u"AssemblyAI"_s,
            .detailKey = u"settings.engine.assemblyai.detail"_s,
            .hintKey = u"settings.engine.assemblyai.hint"_s,
            .icon = u"bolt.fill"_s,
            .infoText =
                u"STT: AssemblyAI Echtzeit-Streaming (direkt) · Translation: Google Translate "
                "(API Key nötig)"_s,
            .translator = u"Google Translate"_s,
            .fields = {{.kind = EngineField::Kind::Key,
                        .text = &TranslationSettings::assemblyaiApiKey,
                        .isRequired = true,
                        .message = u"engineApiKey"_s,
                        .config = &CloudEngineConfig::apiKey},
                       translationKeyField()},
            .make = [](const ServiceEndpoints& endpoints, const EngineTimings& timings) {
                return std::make_shared<AssemblyAIDirectEngine>(endpoints, timings);
            }};
}

AssemblyAIDirectEngine::AssemblyAIDirectEngine(ServiceEndpoints endpoints, EngineTimings timings)
    : StreamingEngine(u"AssemblyAI"_s, std::move(endpoints), timings) {
    firstMessageTimer_.setSingleShot(true);
    firstMessageTimer_.setInterval(timings.streamRequest);
    QObject::connect(&firstMessageTimer_, &QTimer::timeout, &firstMessageTimer_,
                     [this] { socket()->stopReceiving(); });
}

QString AssemblyAIDirectEngine::id() const {
    return engineId;
}

QString AssemblyAIDirectEngine::name() const {
    return u"AssemblyAIDirectEngine"_s;
}

QCoro::Task<> AssemblyAIDirectEngine::connect(CloudEngineConfig config) {
    if (config.apiKey.isEmpty()) {
        throw CloudEngineError::missingApiKey(u"AssemblyAI API Key fehlt"_s);
    }
    open(assemblyaiUrl(endpoints().at(assemblyaiHost), config.sampleRate), {}, config);
    const Lifetime::Observer life = observe();
    firstMessageTimer_.start();
    const StreamingSocket::Message first = co_await socket()->receive();
    if (life.ended() || isDisconnected()) {
        co_return;
    }
    firstMessageTimer_.stop();
    const QString session = assemblyaiSession(first.text.toUtf8());
    if (!session.isEmpty()) {
        logLine(u"✓ AssemblyAI Session: "_s + session);
    }
    begin();
}

Completion<QString> AssemblyAIDirectEngine::sendBlock(StreamingSocket& socket,
                                                      const QByteArray& pcm) {
    return socket.sendSound(WebSocketFrameKind::Text, assemblyaiAudio(pcm));
}

QString AssemblyAIDirectEngine::farewell() const {
    return assemblyaiTerminate();
}

QString AssemblyAIDirectEngine::finalTranscript(const QByteArray& message) const {
    return assemblyaiTranscript(message);
}

} // namespace orv
