#include "AssemblyAIDirectEngine.h"

#include "AssemblyAIMessages.h"
#include "Log.h"
#include "ServiceError.h"
#include "ServiceRequests.h"
#include "TranslationSettings.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QString engineId = u"assemblyai"_s;

std::vector<KeyQuestion> keyQuestions(const ServiceEndpoints& endpoints,
                                      const CloudEngineConfig& config) {
    const QByteArray key = headerValue(config.apiKey);
    const QUrl url = assemblyaiTokenUrl(endpoints.at(assemblyaiStreamingHost));
    return {{.call = {.url = key.isNull() ? QUrl() : url, .headers = {{"Authorization", key}}},
             .judge = assemblyaiTokenFault}};
}

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
            .soundGoesTo = u"AssemblyAI"_s,
            .fields = {{.kind = EngineField::Kind::Key,
                        .text = &TranslationSettings::assemblyaiApiKey,
                        .isRequired = true,
                        .message = u"engineApiKey"_s,
                        .config = &CloudEngineConfig::apiKey,
                        .questions = keyQuestions},
                       translationKeyField()},
            .make = [memory = std::make_shared<AssemblyAIDirectEngine::Memory>()](
                        const ServiceEndpoints& endpoints, const EngineTimings& timings) {
                return std::make_shared<AssemblyAIDirectEngine>(endpoints, timings, memory);
            }};
}

AssemblyAIDirectEngine::AssemblyAIDirectEngine(ServiceEndpoints endpoints, EngineTimings timings,
                                               std::shared_ptr<Memory> memory)
    : StreamingEngine(u"AssemblyAI"_s, std::move(endpoints), timings)
    , memory_(std::move(memory)) {
    firstMessageTimer_.setSingleShot(true);
    firstMessageTimer_.setInterval(std::min(timings.streamRequest, timings.firstWord));
    QObject::connect(&firstMessageTimer_, &QTimer::timeout, &firstMessageTimer_,
                     [this] { socket()->stopReceiving(); });
    pumpTimer_.setSingleShot(true);
    pumpTimer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&pumpTimer_, &QTimer::timeout, &pumpTimer_, [this] { pump(); });
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
    const Lifetime::Observer life = observe();
    const bool isServed = !memory_->isVersion3 && co_await openVersion2(config);
    if (life.ended() || isDisconnected()) {
        co_return;
    }
    if (!isServed) {
        co_await openVersion3(config);
        if (life.ended() || isDisconnected()) {
            co_return;
        }
    }
    begin();
}

/// Whether version 2 is served.
QCoro::Task<bool> AssemblyAIDirectEngine::openVersion2(CloudEngineConfig config) {
    open(assemblyaiUrl(endpoints().at(assemblyaiHost), config.sampleRate), {}, config);
    const Lifetime::Observer life = observe();
    firstMessageTimer_.start();
    bool isServed = false;
    for (bool isOver = false; !isServed && !isOver;) {
        const StreamingSocket::Message next = co_await socket()->receive();
        if (life.ended() || isDisconnected()) {
            co_return false;
        }
        const QByteArray message = next.text.toUtf8();
        const QString session = assemblyaiSession(message);
        if (!session.isEmpty()) {
            logLine(u"✓ AssemblyAI Session: "_s + session);
        }
        isServed = assemblyaiIsOfVersion2(message);
        isOver =
            next.kind == StreamingSocket::Message::Kind::Failure || assemblyaiIsRefusal(message);
    }
    firstMessageTimer_.stop();
    co_return isServed;
}

QCoro::Task<> AssemblyAIDirectEngine::openVersion3(CloudEngineConfig config) {
    // A service that said nothing may have been slow: it stays for the case that there is no other.
    std::unique_ptr<StreamingSocket> silent = takeSocket();
    stream_.emplace(config.sampleRate, assemblyaiFormatsTurns(config.sourceLang));
    open(assemblyaiStreamUrl(endpoints().at(assemblyaiStreamingHost), config.sampleRate,
                             config.sourceLang),
         {}, config);
    const Lifetime::Observer life = observe();
    firstMessageTimer_.start();
    QByteArray message;
    QString session;
    std::optional<ServiceFault> fault;
    // What is none of these is a kind of message that is newer than this program.
    for (bool isOver = false; session.isEmpty() && !fault && !isOver;) {
        const StreamingSocket::Message next = co_await socket()->receive();
        if (life.ended() || isDisconnected()) {
            co_return;
        }
        message = next.text.toUtf8();
        isOver = next.kind == StreamingSocket::Message::Kind::Failure;
        if (!isOver) {
            session = assemblyaiBegin(message);
            fault = assemblyaiError(message);
        }
    }
    firstMessageTimer_.stop();
    memory_->isVersion3 = !session.isEmpty();
    if (memory_->isVersion3) {
        logLine(u"✓ AssemblyAI Session: "_s + session);
    } else if (silent && silent->isOpen()) {
        stream_.reset();
        use(std::move(silent));
    } else if (fault) {
        tell(*std::move(fault));
    }
}

QCoro::Task<> AssemblyAIDirectEngine::sendAudio(QByteArray pcm) {
    if (!stream_) {
        co_await StreamingEngine::sendAudio(std::move(pcm));
        co_return;
    }
    if (!isConnected()) {
        co_return;
    }
    stream_->pacer.add(pcm);
    if (const auto dropped = stream_->pacer.takeDropped(); dropped.count() > 0) {
        logLine(u"⚠️ AssemblyAI: %1 ms Ton verworfen, der zu lange gewartet hat"_s.arg(
            dropped.count()));
    }
    const QString error = co_await sendDue();
    if (!error.isEmpty()) {
        throw ServiceError(error, ServiceFault::Kind::NetworkFailed);
    }
}

/// Sends what may go now, and sees to the rest. The outcome is that of the last block.
Completion<QString> AssemblyAIDirectEngine::sendDue() {
    const auto now = PcmPacer::TimePoint::clock::now();
    Completion<QString> sent;
    sent.complete({});
    for (const QByteArray& block : stream_->pacer.due(now)) {
        sent = socket()->sendSound(WebSocketFrameKind::Binary, block);
    }
    if (const auto rest = stream_->pacer.untilNext(now)) {
        pumpTimer_.start(*rest + std::chrono::milliseconds(1));
    }
    return sent;
}

void AssemblyAIDirectEngine::pump() {
    if (isConnected()) {
        sendDue();
    }
    if (isFinishing_ && (!isConnected() || stream_->pacer.isEmpty())) {
        drained_.done.complete(true);
    }
}

/// What waits goes first, at its pace.
QCoro::Task<> AssemblyAIDirectEngine::disconnect() {
    const Lifetime::Observer life = observe();
    if (stream_ && isConnected()) {
        stream_->pacer.finish();
        isFinishing_ = true;
        pump();
        co_await Completion(drained_.done);
        if (life.ended()) {
            co_return;
        }
    }
    pumpTimer_.stop();
    co_await StreamingEngine::disconnect();
}

Completion<QString> AssemblyAIDirectEngine::sendBlock(StreamingSocket& socket,
                                                      const QByteArray& pcm) {
    return socket.sendSound(WebSocketFrameKind::Text, assemblyaiAudio(pcm));
}

QString AssemblyAIDirectEngine::farewell() const {
    return stream_ ? assemblyaiTerminateStream() : assemblyaiTerminate();
}

QStringList AssemblyAIDirectEngine::finalTranscripts(const QByteArray& message) {
    if (!stream_) {
        return {assemblyaiTranscript(message)};
    }
    const auto turn = parseAssemblyaiTurn(message);
    return turn ? stream_->turns.take(*turn) : QStringList();
}

QStringList AssemblyAIDirectEngine::lastTranscripts() {
    return stream_ ? stream_->turns.finish() : QStringList();
}

bool AssemblyAIDirectEngine::isLast(const QByteArray& message) const {
    return stream_ ? assemblyaiIsTermination(message) : assemblyaiIsSessionEnd(message);
}

std::optional<ServiceFault> AssemblyAIDirectEngine::faultIn(const QByteArray& message) const {
    return assemblyaiError(message);
}

ServiceFault AssemblyAIDirectEngine::refusal(const HttpOutcome& answer) const {
    return assemblyaiRefusal(answer);
}

ServiceFault AssemblyAIDirectEngine::closing(int closeCode, const QString& reason) const {
    return assemblyaiClosing(closeCode, reason);
}

} // namespace orv
