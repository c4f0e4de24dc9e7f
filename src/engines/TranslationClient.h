#pragma once

#include "ServiceEndpoints.h"

#include <QCoroTask>

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QString>

#include <chrono>

namespace orv {

/// The text in an answer of Google's Cloud Translation v2 REST interface, as it is; empty when the
/// answer is anything else.
QString translatedTextFromResponse(const QByteArray& body);

/// The body of a request to that interface. The service detects the source language.
QByteArray translationRequestBody(const QString& text, const QString& targetLang);

/// Client of Google's Cloud Translation v2 REST interface. Lives on the main thread.
class TranslationClient {
  public:
    explicit TranslationClient(ServiceEndpoints endpoints = {},
                               std::chrono::milliseconds timeout = std::chrono::seconds(10));

    /// Requests under way end with an empty result.
    ~TranslationClient();

    /// Translates `text` into `targetLang`. Never throws; any failure yields an empty string.
    QCoro::Task<QString> googleTranslateText(QString text, QString targetLang, QString apiKey);

  private:
    ServiceEndpoints endpoints_;
    std::chrono::milliseconds timeout_;
    QNetworkAccessManager network_;
};

} // namespace orv
