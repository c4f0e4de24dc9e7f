#pragma once

#include "BackendMessages.h"
#include "Lifetime.h"
#include "Result.h"
#include "ServiceEndpoints.h"
#include "TranslationClient.h"

#include <QObject>
#include <QString>

#include <deque>
#include <optional>

namespace orv {

/// The translator of what the backend of one run only recognises. Results leave in the order
/// of the texts, whatever the order of the answers; a text that waits for the answer to an earlier
/// one waits as long as the client at most. Destroying the object ends whatever is under way, so
/// that no run gets a result of another. Lives on the main thread.
class ClientTranslation : public QObject {
    Q_OBJECT

  public:
    explicit ClientTranslation(const ServiceEndpoints& endpoints);

    /// Asks for one text's translation.
    void translate(const QString& original, const QString& targetLang, const QString& apiKey);

    /// Whether every text has its answer, and that has been told.
    bool isIdle() const { return questions_.empty(); }

  Q_SIGNALS:
    /// Never within `translate`; the translation is empty when there was none. May destroy the
    /// object.
    void translated(const Result& result);
    /// Why there is no translation; each time. Never within `translate`.
    void faultArrived(const StatusMessage& status);
    void idle(); ///< Now `isIdle`. May destroy the object.

  private:
    struct Question {
        QString original;
        std::optional<QString> translation;
    };

    QCoro::Task<> ask(Question* question, QString targetLang, QString apiKey);
    void deliverAnswered();

    std::deque<Question> questions_; ///< Oldest first; growing and shrinking moves none of them.
    TranslationClient client_;
    Lifetime lifetime_; // Declared last, so that it ends before the members above.
};

} // namespace orv
