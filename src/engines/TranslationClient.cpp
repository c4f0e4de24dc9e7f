#include "TranslationClient.h"

#include "GoogleCloudMessages.h"
#include "ServiceError.h"
#include "TranslationMessages.h"

#include <QUrl>

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

TranslationClient::TranslationClient(ServiceEndpoints endpoints, std::chrono::milliseconds timeout)
    : endpoints_(std::move(endpoints))
    , timeout_(timeout) {}

const QString TranslationClient::product = u"Google Translate"_s;

QCoro::Task<QString> TranslationClient::googleTranslateText(QString text, QString targetLang,
                                                            QString apiKey) {
    const QUrl url = translationUrl(endpoints_.at(translationHost), apiKey);
    if (!url.isValid()) {
        report({ServiceFault::Kind::KeyRefused}, apiKey);
        co_return QString();
    }
    const Lifetime::Observer life = lifetime_.observe();
    HttpCall call = jsonCall(url, translationRequestBody(text, targetLang));
    HttpOutcome answer;
    std::optional<ServiceFault> fault;
    try {
        answer = co_await http_.exchange(std::move(call), timeout_);
    } catch (const ServiceError& error) {
        fault = error.fault();
    }
    if (life.ended()) {
        co_return QString();
    }
    if (fault) {
        report(*std::move(fault), apiKey);
        co_return QString();
    }
    co_return translated(answer, apiKey);
}

/// A translation counts whatever the status is.
QString TranslationClient::translated(const HttpOutcome& answer, const QString& apiKey) const {
    const std::optional<QString> translation = parseTranslation(answer.body);
    if (!translation || translation->isEmpty()) {
        report(googleFault(answer.status, answer.body)
                   .value_or(ServiceFault{ServiceFault::Kind::Unreadable}),
               apiKey);
    }
    return translation.value_or(QString());
}

void TranslationClient::report(ServiceFault fault, const QString& apiKey) const {
    if (apiKey.isEmpty()) {
        fault = {ServiceFault::Kind::KeyMissing};
    }
    fault.said = sayable(fault.said, apiKey);
    fault.translator = product;
    if (const auto callback = onFault) {
        callback(fault);
    }
}

} // namespace orv
