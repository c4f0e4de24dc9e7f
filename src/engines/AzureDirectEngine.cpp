#include "AzureDirectEngine.h"

#include "PcmRate.h"
#include "PcmToWav.h"
#include "ServiceError.h"
#include "ServiceLocales.h"
#include "ServiceRequests.h"
#include "TranslationSettings.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QString engineId = u"azure"_s;

template <typename T>
T readable(std::optional<T> answer) {
    if (!answer) {
        throw ServiceError(u"Azure: Antwort ist kein JSON"_s, ServiceFault::Kind::Unreadable);
    }
    return *std::move(answer);
}

HttpCall soundCall(const QUrl& url, const QByteArray& key, const QByteArray& contentType,
                   const QByteArray& wav) {
    return {.url = url,
            .headers = {{"Ocp-Apim-Subscription-Key", key}, {"Content-Type", contentType}},
            .body = wav};
}

std::vector<KeyQuestion> keyQuestions(const ServiceEndpoints& endpoints,
                                      const CloudEngineConfig& config) {
    const QByteArray key = headerValue(config.apiKey);
    const QUrl url = azureTokenUrl(endpoints.at(azureTokenHost), config.region);
    if (key.isNull() || !url.isValid()) {
        const auto unsendable =
            key.isNull() ? ServiceFault::Kind::KeyRefused : ServiceFault::Kind::RegionMissing;
        return {{.call = {}, .judge = azureTokenFault, .unsendable = unsendable}};
    }
    return {{.call = {.url = url,
                      .headers = {{"Ocp-Apim-Subscription-Key", key}},
                      .body = QByteArray()},
             .judge = azureTokenFault}};
}

} // namespace

EngineDescriptor azureEngine() {
    return {.id = engineId,
            .name = u"Microsoft Azure"_s,
            .detailKey = u"settings.engine.azure.detail"_s,
            .hintKey = u"settings.engine.azure.hint"_s,
            .icon = u"cloud.fill"_s,
            .infoText = u"STT + Translation: Azure Speech (direkt, 1 API-Call) · Kein Backend "
                        "nötig"_s,
            .translator = u"Azure Speech"_s,
            .soundGoesTo = u"Microsoft"_s,
            .recognises = [](const QString& code) { return !azureSpokenLocale(code).isEmpty(); },
            .fields = {{.kind = EngineField::Kind::Key,
                        .text = &TranslationSettings::azureApiKey,
                        .isRequired = true,
                        .message = u"engineApiKey"_s,
                        .config = &CloudEngineConfig::apiKey,
                        .questions = keyQuestions},
                       {.kind = EngineField::Kind::Place,
                        .text = &TranslationSettings::azureRegion,
                        .labelKey = u"settings.engine.region"_s,
                        .places = azureRegions(),
                        .message = u"engineRegion"_s,
                        .config = &CloudEngineConfig::region}},
            .make =
                [](const ServiceEndpoints& endpoints, const EngineTimings& timings) {
                    return std::make_shared<AzureDirectEngine>(endpoints, timings);
                }};
}

std::span<const ServiceRegion> azureRegions() {
    static const ServiceRegion regions[] = {
        {u"eastus"_s, u"East US (Virginia)"_s},
        {u"eastus2"_s, u"East US 2"_s},
        {u"centralus"_s, u"Central US"_s},
        {u"northcentralus"_s, u"North Central US"_s},
        {u"southcentralus"_s, u"South Central US"_s},
        {u"westus"_s, u"West US"_s},
        {u"westus2"_s, u"West US 2"_s},
        {u"westus3"_s, u"West US 3"_s},
        {u"canadacentral"_s, u"Canada Central"_s},
        {u"northeurope"_s, u"North Europe (Ireland)"_s},
        {u"westeurope"_s, u"West Europe (Netherlands)"_s},
        {u"uksouth"_s, u"UK South"_s},
        {u"francecentral"_s, u"France Central"_s},
        {u"germanywestcentral"_s, u"Germany West Central"_s},
        {u"switzerlandnorth"_s, u"Switzerland North"_s},
        {u"norwayeast"_s, u"Norway East"_s},
        {u"swedencentral"_s, u"Sweden Central"_s},
        {u"eastasia"_s, u"East Asia (Hong Kong)"_s},
        {u"southeastasia"_s, u"Southeast Asia (Singapore)"_s},
        {u"japaneast"_s, u"Japan East"_s},
        {u"japanwest"_s, u"Japan West"_s},
        {u"koreacentral"_s, u"Korea Central"_s},
        {u"australiaeast"_s, u"Australia East"_s},
        {u"centralindia"_s, u"Central India"_s},
        {u"southindia"_s, u"South India"_s},
        {u"uaenorth"_s, u"UAE North"_s},
        {u"southafricanorth"_s, u"South Africa North"_s},
        {u"brazilsouth"_s, u"Brazil South"_s},
    };
    return regions;
}

AzureDirectEngine::AzureDirectEngine(ServiceEndpoints endpoints, EngineTimings timings)
    : endpoints_(std::move(endpoints))
    , timings_(timings)
    , region_(u"westeurope"_s)
    , sourceLang_(u"de-DE"_s)
    , targetLang_(u"en"_s)
    , google_(endpoints_, timings.translation) {
    google_.onFault = [this](const ServiceFault& fault) { report(fault); };
}

QString AzureDirectEngine::id() const {
    return engineId;
}

QString AzureDirectEngine::name() const {
    return u"AzureDirectEngine"_s;
}

QCoro::Task<> AzureDirectEngine::connect(CloudEngineConfig config) {
    if (config.apiKey.isEmpty()) {
        throw CloudEngineError::missingApiKey(u"Azure Subscription Key fehlt"_s);
    }
    if (config.region.isEmpty()) {
        throw CloudEngineError::missingRegion(u"Azure Region fehlt"_s);
    }
    if (azureSpokenLocale(config.sourceLang).isEmpty()) {
        throw CloudEngineError::unknownLanguage(u"Azure erkennt diese Sprache nicht: "_s +
                                                config.sourceLang);
    }
    apiKey_ = config.apiKey;
    region_ = config.region;
    spokenLang_ = config.sourceLang;
    sourceLang_ = azureSpokenLocale(config.sourceLang);
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
    const AnswerOrder::Place place = order_.take();
    AzureResult result;
    try {
        result = co_await recognise(std::move(pcm));
    } catch (const ServiceError&) {
        if (life.ended()) {
            co_return; // Given up.
        }
        throw;
    }
    if (life.ended() || result.text.isEmpty()) {
        co_return;
    }
    co_await place.turn();
    if (life.ended()) {
        co_return;
    }
    if (const auto callback = onTranslation) {
        callback(result.text, result.translation.isEmpty() ? result.text : result.translation);
    }
}

bool AzureDirectEngine::needsTranslation() const {
    return !isLanguageOf(targetLang_, sourceLang_);
}

QCoro::Task<AzureResult> AzureDirectEngine::recognise(QByteArray pcm) {
    if (inSteps_) {
        co_return co_await recogniseThenTranslate(std::move(pcm));
    }
    const Lifetime::Observer life = lifetime_.observe();
    const QByteArray wav = pcmToWAV(pcm, sampleRate_);
    Attempt attempt;
    if (needsTranslation()) {
        attempt = co_await translateSpeech(wav);
    } else {
        attempt = co_await recognizeSpeech(wav, sampleRate_);
    }
    if (life.ended() || !attempt.fault) {
        co_return attempt.result;
    }
    if (attempt.fault->kind == ServiceFault::Kind::Unreadable) {
        report(*attempt.fault); // Who sends elsewhere is not the service.
        co_return AzureResult();
    }
    // Refused, by an interface that may be gone: the other one shows whether it is the request.
    co_return co_await recogniseThenTranslate(std::move(pcm));
}

QCoro::Task<AzureDirectEngine::Attempt> AzureDirectEngine::translateSpeech(QByteArray wav) {
    const HttpOutcome answer = co_await post(
        azureTranslationUrl(endpoints_.at(azureTranslationHost), region_, sourceLang_, targetLang_),
        std::move(wav), sampleRate_);
    Attempt attempt;
    attempt.fault = azureFault(answer.status, answer.body);
    if (!attempt.fault) {
        attempt.result = readable(parseAzureTranslation(answer.body));
    }
    co_return attempt;
}

QCoro::Task<AzureDirectEngine::Attempt>
AzureDirectEngine::recognizeSpeech(QByteArray wav, std::int64_t sampleRate) {
    const HttpOutcome answer = co_await post(
        azureRecognitionUrl(endpoints_.at(azureRecognitionHost), region_, sourceLang_),
        std::move(wav), sampleRate);
    Attempt attempt;
    attempt.fault = azureFault(answer.status, answer.body);
    if (!attempt.fault) {
        attempt.result.text = readable(parseAzureRecognition(answer.body));
        attempt.result.translation = attempt.result.text;
    }
    co_return attempt;
}

QCoro::Task<AzureResult> AzureDirectEngine::recogniseThenTranslate(QByteArray pcm) {
    const Lifetime::Observer life = lifetime_.observe();
    Attempt attempt = co_await recognizeSpeech(
        pcmToWAV(atSampleRate(pcm, sampleRate_, azureSampleRate), azureSampleRate),
        azureSampleRate);
    if (life.ended()) {
        co_return AzureResult();
    }
    if (attempt.fault) {
        report(*attempt.fault);
        co_return AzureResult();
    }
    inSteps_ = true;
    if (!attempt.result.text.isEmpty() && needsTranslation()) {
        attempt.result.translation = co_await translateText(attempt.result.text);
    }
    co_return attempt.result;
}

QCoro::Task<QString> AzureDirectEngine::translateText(QString text) {
    const Lifetime::Observer life = lifetime_.observe();
    ServiceFault fault{ServiceFault::Kind::NotTranslated};
    if (!translatorRefused_) {
        const Translation answer = co_await askTranslator(text);
        if (life.ended() || !answer.fault) {
            co_return answer.text;
        }
        fault = *answer.fault;
        // With a key of the recognition alone it never will.
        translatorRefused_ = fault.kind == ServiceFault::Kind::NotTranslated;
    }
    if (!googleKey_.isEmpty()) {
        co_return co_await google_.googleTranslateText(text, targetLang_, googleKey_);
    }
    report(fault);
    co_return QString();
}

QCoro::Task<AzureDirectEngine::Translation> AzureDirectEngine::askTranslator(QString text) {
    HttpCall call =
        jsonCall(azureTranslatorUrl(endpoints_.at(azureTranslatorHost), spokenLang_, targetLang_),
                 azureTranslatorBody(text));
    call.headers.append({"Ocp-Apim-Subscription-Key", headerValue(apiKey_)});
    call.headers.append({"Ocp-Apim-Subscription-Region", headerValue(region_)});
    Translation translation;
    try {
        const HttpOutcome answer = co_await http_.exchange(std::move(call), timings_.translation);
        translation.text = parseAzureTranslator(answer.body).value_or(QString());
        if (translation.text.isEmpty()) {
            translation.fault = azureTranslatorFault(answer.status, answer.body);
        }
    } catch (const ServiceError& error) {
        translation.fault = error.fault();
        translation.fault->translator = azureTranslatorName;
    }
    co_return translation;
}

QCoro::Task<HttpOutcome> AzureDirectEngine::post(QUrl url, QByteArray wav,
                                                 std::int64_t sampleRate) {
    const QByteArray key = headerValue(apiKey_);
    if (!url.isValid() || key.isNull()) {
        throw ServiceError(u"Azure: Ungültige Anfrage"_s, ServiceFault::Kind::RequestRefused);
    }
    HttpCall call = soundCall(url, key, azureContentType(sampleRate), wav);
    co_return co_await http_.exchange(std::move(call), timings_.recognition);
}

void AzureDirectEngine::report(ServiceFault fault) {
    fault.said = sayable(fault.said, apiKey_);
    if (const auto callback = onFault) {
        callback(fault);
    }
}

} // namespace orv
