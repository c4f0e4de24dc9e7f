#include "TranslationClient.h"

#include "ServiceError.h"
#include "TranslationMessages.h"

#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

TranslationClient::TranslationClient(ServiceEndpoints endpoints, std::chrono::milliseconds timeout)
    : endpoints_(std::move(endpoints))
    , timeout_(timeout) {}

QCoro::Task<QString> TranslationClient::googleTranslateText(QString text, QString targetLang,
                                                            QString apiKey) {
    const QUrl url = translationUrl(endpoints_.at(translationHost), apiKey);
    if (!url.isValid()) {
        co_return QString();
    }
    HttpCall call = jsonCall(url, translationRequestBody(text, targetLang));
    QByteArray answer;
    try {
        const HttpOutcome outcome = co_await http_.exchange(std::move(call), timeout_);
        answer = outcome.body;
    } catch (const ServiceError&) {
        answer.clear(); // No answer is no translation.
    }
    co_return translatedTextFromResponse(answer);
}

} // namespace orv
