#include "GoogleCloudDirectEngine.h"

#include "GoogleCloudMessages.h"
#include "ServiceError.h"
#include "ServiceLocales.h"
#include "TranslationClient.h"
#include "TranslationMessages.h"
#include "TranslationSettings.h"

#include <QJsonDocument>

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QString engineId = u"google_rest"_s;
const QString noJson = u"Google Cloud: Antwort ist kein JSON"_s;

QString readable(const std::optional<QString>& answer) {
    if (!answer) {
        throw ServiceError(noJson, ServiceFault::Kind::Unreadable);
    }
    return *answer;
}

/// A tenth of a second of silence, in which there is nothing to recognise.
KeyQuestion recognitionKeyQuestion(const ServiceEndpoints& endpoints, const QString& apiKey) {
    constexpr qsizetype rate = 16000;
    const QByteArray silence = QByteArray(rate / 10 * 2, '\0').toBase64();
    return {.call = jsonCall(googleRecognitionUrl(endpoints.at(googleRecognitionHost), apiKey),
                             googleRecognitionBody(silence, u"en-US"_s, rate)),
            .judge = googleKeyFault};
}

} // namespace

EngineDescriptor googleCloudEngine() {
    return {.id = engineId,
            .nameKey = u"settings.engine.google_rest.name"_s,
            .product = u"Google Cloud"_s,
            .detailKey = u"settings.engine.google_rest.detail"_s,
            .hintKey = u"settings.engine.google_rest.hint"_s,
            .icon = u"cloud"_s,
            .infoText = u"STT + Translation: Google Cloud (direkt, 2 API-Calls) · Kein Backend "
                        "nötig"_s,
            .translator = u"Google Translate"_s,
            .soundGoesTo = u"Google"_s,
            .recognises = [](const QString& code) { return !googleSpokenLocale(code).isEmpty(); },
            .fields = {{.kind = EngineField::Kind::Key,
                        .text = &TranslationSettings::googleApiKey,
                        .isRequired = true,
                        .message = u"engineApiKey"_s,
                        .config = &CloudEngineConfig::apiKey,
                        .questions =
                            [](const ServiceEndpoints& endpoints, const CloudEngineConfig& config) {
                                return std::vector{
                                    translationKeyQuestion(endpoints, config.apiKey),
                                    recognitionKeyQuestion(endpoints, config.apiKey)};
                            }}},
            .make =
                [](const ServiceEndpoints& endpoints, const EngineTimings& timings) {
                    return std::make_shared<GoogleCloudDirectEngine>(endpoints, timings);
                }};
}

GoogleCloudDirectEngine::GoogleCloudDirectEngine(ServiceEndpoints endpoints, EngineTimings timings)
    : endpoints_(std::move(endpoints))
    , timings_(timings)
    , sourceLang_(u"de-DE"_s)
    , targetLang_(u"en"_s) {}

QString GoogleCloudDirectEngine::id() const {
    return engineId;
}

QString GoogleCloudDirectEngine::name() const {
    return u"GoogleCloudDirectEngine"_s;
}

QCoro::Task<> GoogleCloudDirectEngine::connect(CloudEngineConfig config) {
    if (config.apiKey.isEmpty()) {
        throw CloudEngineError::missingApiKey(u"Google Cloud API Key fehlt"_s);
    }
    if (googleSpokenLocale(config.sourceLang).isEmpty()) {
        throw CloudEngineError::unknownLanguage(u"Google erkennt diese Sprache nicht: "_s +
                                                config.sourceLang);
    }
    apiKey_ = config.apiKey;
    sourceLang_ = googleSpokenLocale(config.sourceLang);
    targetLang_ = config.targetLang;
    sampleRate_ = config.sampleRate;
    isActive_ = true;
    if (const auto callback = onStatus) {
        callback(u"connected"_s, u"Google Cloud Speech ready (direct)"_s);
    }
    co_return;
}

QCoro::Task<> GoogleCloudDirectEngine::disconnect() {
    isActive_ = false;
    co_return;
}

QCoro::Task<> GoogleCloudDirectEngine::sendAudio(QByteArray pcm) {
    if (!isActive_ || pcm.isEmpty()) {
        co_return;
    }
    const Lifetime::Observer life = lifetime_.observe();
    try {
        co_await recogniseAndDeliver(std::move(pcm));
    } catch (const ServiceError&) {
        if (life.ended()) {
            co_return; // Given up.
        }
        throw;
    }
}

QCoro::Task<> GoogleCloudDirectEngine::recogniseAndDeliver(QByteArray pcm) {
    const Lifetime::Observer life = lifetime_.observe();
    const AnswerOrder::Place place = order_.take();
    const QString transcript = co_await recognizeSpeech(pcm.toBase64());
    if (life.ended() || transcript.isEmpty()) {
        co_return;
    }
    QString translation;
    if (needsTranslation()) {
        translation = co_await translateText(transcript, targetLang_);
        if (life.ended()) {
            co_return;
        }
    }
    co_await place.turn();
    if (!life.ended()) {
        deliver(transcript, translation.isEmpty() ? transcript : translation);
    }
}

bool GoogleCloudDirectEngine::needsTranslation() const {
    return !isLanguageOf(targetLang_, sourceLang_) && targetLang_ != u"auto";
}

QCoro::Task<QString> GoogleCloudDirectEngine::recognizeSpeech(QByteArray audioBase64) {
    const QByteArray answer = co_await post(
        googleRecognitionUrl(endpoints_.at(googleRecognitionHost), apiKey_),
        googleRecognitionBody(audioBase64, sourceLang_, sampleRate_), timings_.recognition);
    co_return readable(parseGoogleRecognition(answer));
}

QCoro::Task<QString> GoogleCloudDirectEngine::translateText(QString text, QString targetLang) {
    const QByteArray answer = co_await post(translationUrl(endpoints_.at(translationHost), apiKey_),
                                            translationRequestBody(text, targetLang),
                                            timings_.translation, TranslationClient::product);
    co_return readable(parseTranslation(answer));
}

QCoro::Task<QByteArray> GoogleCloudDirectEngine::post(QUrl url, QByteArray body,
                                                      std::chrono::milliseconds timeout,
                                                      QString translator) {
    if (!url.isValid()) {
        throw ServiceError(u"Google Cloud: Ungültige Adresse"_s,
                           ServiceFault::Kind::RequestRefused);
    }
    HttpCall call = jsonCall(url, body);
    const Lifetime::Observer life = lifetime_.observe();
    const HttpOutcome answer = co_await http_.exchange(std::move(call), timeout);
    auto fault = googleFault(answer.status, answer.body);
    if (fault && !life.ended()) {
        fault->translator = translator;
        report(*std::move(fault), answer.body);
    }
    co_return answer.body;
}

/// What cannot be read has no result either, and is told by who sent the sound.
void GoogleCloudDirectEngine::report(ServiceFault fault, const QByteArray& body) {
    fault.said = sayable(fault.said, apiKey_);
    if (QJsonDocument::fromJson(body).isNull()) {
        throw ServiceError(noJson, fault);
    }
    if (const auto callback = onFault) {
        callback(fault);
    }
}

void GoogleCloudDirectEngine::deliver(const QString& transcript, const QString& translation) {
    if (const auto callback = onTranslation) {
        callback(transcript, translation);
    }
}

} // namespace orv
