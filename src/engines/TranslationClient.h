#pragma once

#include "EngineTimings.h"
#include "Lifetime.h"
#include "ServiceClient.h"
#include "ServiceEndpoints.h"
#include "ServiceFault.h"

#include <QCoroTask>

#include <QString>

#include <chrono>
#include <functional>

namespace orv {

/// Client of Google's Cloud Translation v2 REST interface. Lives on the main thread.
class TranslationClient {
  public:
    explicit TranslationClient(ServiceEndpoints endpoints = {},
                               std::chrono::milliseconds timeout = EngineTimings().translation);

    /// Whose translations they are, for people.
    static const QString product;

    /// Translates `text` into `targetLang`. Never throws; any failure yields an empty string, and
    /// so does the end of the client.
    QCoro::Task<QString> googleTranslateText(QString text, QString targetLang, QString apiKey);

    /// Told of each failure but the client's end, with `product` as the translator.
    std::function<void(const ServiceFault&)> onFault;

  private:
    QString translated(const HttpOutcome& answer, const QString& apiKey) const;
    void report(ServiceFault fault, const QString& apiKey) const;

    ServiceEndpoints endpoints_;
    std::chrono::milliseconds timeout_;
    ServiceClient http_;
    Lifetime lifetime_; // Last: ends first.
};

} // namespace orv
