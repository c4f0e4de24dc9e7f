#include "ClientTranslation.h"

#include "Post.h"
#include "ServiceStatus.h"
#include "ThreadChecks.h"

#include <utility>

namespace orv {

ClientTranslation::ClientTranslation(const ServiceEndpoints& endpoints)
    : client_(endpoints) {
    client_.onFault = [this](const ServiceFault& fault) {
        post(this, [this, status = serviceStatus(fault.translator, fault)] {
            Q_EMIT faultArrived(status);
        });
    };
}

void ClientTranslation::translate(const QString& original, const QString& targetLang,
                                  const QString& apiKey) {
    ORV_ON_MAIN();
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
    post(this, [this] { deliverAnswered(); });
}

void ClientTranslation::deliverAnswered() {
    ORV_ON_MAIN();
    const Lifetime::Observer life = lifetime_.observe();
    while (!life.ended() && !questions_.empty() && questions_.front().translation) {
        const Question answered = std::move(questions_.front());
        questions_.pop_front();
        Q_EMIT translated({answered.original, *answered.translation});
    }
    if (!life.ended() && questions_.empty()) {
        Q_EMIT idle();
    }
}

} // namespace orv
