#pragma once

#include "Lifetime.h"
#include "Result.h"
#include "ServiceEndpoints.h"
#include "TranslationClient.h"

#include <QObject>
#include <QString>

#include <deque>
#include <functional>
#include <optional>

namespace orv {

/// Has the texts of one run translated that its backend only recognises. Results leave in the order
/// of the texts, whatever the order of the answers; a text that waits for the answer to an earlier
/// one waits as long as the client at most. With the object ends whatever is under way, so that no
/// run gets a result of another. Lives on the main thread.
class ClientTranslation {
  public:
    /// `deliver` is called on the main thread, never within `translate`; the translation is empty
    /// when there was none. It may destroy the object.
    ClientTranslation(const ServiceEndpoints& endpoints,
                      std::function<void(const Result& result)> deliver);

    /// Asks for one text's translation.
    void translate(const QString& original, const QString& targetLang, const QString& apiKey);

  private:
    struct Question {
        QString original;
        std::optional<QString> translation;
    };

    QCoro::Task<> ask(Question* question, QString targetLang, QString apiKey);
    void deliverAnswered();

    const std::function<void(const Result& result)> deliver_;
    std::deque<Question> questions_; ///< Oldest first; growing and shrinking moves none of them.
    TranslationClient client_;
    QObject context_;   ///< Of deliveries, which end with the object.
    Lifetime lifetime_; // Last: ends first.
};

} // namespace orv
