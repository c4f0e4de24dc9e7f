#include "ClientTranslation.h"

#include "Post.h"

#include <utility>

namespace orv {

ClientTranslation::ClientTranslation(const ServiceEndpoints& endpoints,
                                     std::function<void(const Result& result)> deliver)
    : deliver_(std::move(deliver))
    , client_(endpoints) {}

void ClientTranslation::translate(const QString& original, const QString& targetLang,
                                  const QString& apiKey) {
    ask(&questions_.emplace_back(Question{original, {}}), targetLang, apiKey);
}

QCoro::Task<> ClientTranslation::ask(Question* question, QString targetLang, QString apiKey) {
    const Lifetime::Observer life = lifetime_.observe();
    const QString translation =
        co_await client_.googleTranslateText(question->original, targetLang, apiKey);
    if (life.ended()) {
        co_return;
    }
    question->translation = translation;
    post(&context_, [this] { deliverAnswered(); });
}

void ClientTranslation::deliverAnswered() {
    const Lifetime::Observer life = lifetime_.observe();
    const auto deliver = deliver_; // May end the object while it runs.
    while (!life.ended() && !questions_.empty() && questions_.front().translation) {
        const Question answered = std::move(questions_.front());
        questions_.pop_front();
        deliver({answered.original, *answered.translation});
    }
}

} // namespace orv
