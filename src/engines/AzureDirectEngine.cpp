#include "AzureDirectEngine.h"

#include "PcmToWav.h"
#include "ServiceError.h"
#include "ServiceLocales.h"
#include "ServiceRequests.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

template <typename T>
T readable(std::optional<T> answer) {
    if (!answer) {
        throw ServiceError(u"Azure: Antwort ist kein JSON"_s);
    }
    return *std::move(answer);
}

} // namespace

AzureDirectEngine::AzureDirectEngine(ServiceEndpoints endpoints, EngineTimings timings)
    : endpoints_(std::move(endpoints))
    , timings_(timings)
    , region_(u"westeurope"_s)
    , sourceLang_(u"de-DE"_s)
    , targetLang_(u"en"_s) {}

QString AzureDirectEngine::id() const {
    return u"azure"_s;
}

QString AzureDirectEngine::name() const {
    return u"AzureDirectEngine"_s;
}

QCoro::Task<> AzureDirectEngine::connect(CloudEngineConfig config) {
    if (config.apiKey.isEmpty()) {
        throw CloudEngineError(CloudEngineError::Kind::MissingApiKey,
                               u"Azure Subscription Key fehlt"_s);
    }
    if (config.region.isEmpty()) {
        throw CloudEngineError(CloudEngineError::Kind::MissingApiKey, u"Azure Region fehlt"_s);
    }
    apiKey_ = config.apiKey;
    region_ = config.region;
    sourceLang_ = azureLocale(config.sourceLang);
    targetLang_ = config.targetLang;
    sampleRate_ = config.sampleRate;
    isActive_ = true;
    if (const auto callback = onStatus) {
        callback(u"connected"_s, u"Azure Speech ready ("_s + region_ + u", direct)"_s);
    }
    co_return;
}

QCoro::Task<> AzureDirectEngine::disconnect() {
    isActive_ = false;
    co_return;
}

QCoro::Task<> AzureDirectEngine::sendAudio(QByteArray pcm) {
    if (!isActive_ || pcm.isEmpty()) {
        co_return;
    }
    const Lifetime::Observer life = lifetime_.observe();
    AzureResult result;
    try {
        result = co_await recognise(pcmToWAV(pcm, sampleRate_));
    } catch (const ServiceError&) {
        if (life.ended()) {
            co_return; // Given up.
        }
        throw;
    }
    if (life.ended() || result.text.isEmpty()) {
        co_return;
    }
    if (const auto callback = onTranslation) {
        callback(result.text, result.translation.isEmpty() ? result.text : result.translation);
    }
}

QCoro::Task<AzureResult> AzureDirectEngine::recognise(QByteArray wav) {
    return isLanguageOf(targetLang_, sourceLang_) ? recognizeSpeech(std::move(wav))
                                                  : translateSpeech(std::move(wav));
}

QCoro::Task<AzureResult> AzureDirectEngine::translateSpeech(QByteArray wav) {
    const QByteArray answer = co_await post(
        azureTranslationUrl(endpoints_.azureSpeechTranslation, region_, sourceLang_, targetLang_),
        std::move(wav));
    co_return readable(parseAzureTranslation(answer));
}

QCoro::Task<AzureResult> AzureDirectEngine::recognizeSpeech(QByteArray wav) {
    const QByteArray answer = co_await post(
        azureRecognitionUrl(endpoints_.azureSpeechToText, region_, sourceLang_), std::move(wav));
    const QString text = readable(parseAzureRecognition(answer));
    co_return AzureResult{text, text};
}

QCoro::Task<QByteArray> AzureDirectEngine::post(QUrl url, QByteArray wav) {
    const QByteArray key = headerValue(apiKey_);
    if (!url.isValid() || key.isNull()) {
        throw ServiceError(u"Azure: Ungültige Anfrage"_s);
    }
    QNetworkRequest request(url);
    request.setRawHeader("Ocp-Apim-Subscription-Key", key);
    request.setRawHeader("Content-Type", azureContentType(sampleRate_));
    co_return co_await http_.post(request, std::move(wav), timings_.recognition);
}

} // namespace orv
