#pragma once

#include "EngineTimings.h"
#include "ServiceClient.h"
#include "ServiceEndpoints.h"

#include <QCoroTask>

#include <QString>

#include <chrono>

namespace orv {

/// Client of Google's Cloud Translation v2 REST interface. Lives on the main thread.
class TranslationClient {
  public:
    explicit TranslationClient(ServiceEndpoints endpoints = {},
                               std::chrono::milliseconds timeout = EngineTimings().translation);

    /// Translates `text` into `targetLang`. Never throws; any failure yields an empty string, and
    /// so does the end of the client.
    QCoro::Task<QString> googleTranslateText(QString text, QString targetLang, QString apiKey);

  private:
    ServiceEndpoints endpoints_;
    std::chrono::milliseconds timeout_;
    ServiceClient http_;
};

} // namespace orv
