#include "KeyTrial.h"

#include "ServiceError.h"
#include "ThreadChecks.h"

#include <utility>

namespace orv {

void KeyTrial::begin(std::vector<KeyQuestion> questions, const QString& key) {
    ORV_ON_MAIN();
    ask(std::move(questions), key);
}

QCoro::Task<> KeyTrial::ask(std::vector<KeyQuestion> questions, QString key) {
    const Lifetime::Observer life = lifetime_.observe();
    std::optional<ServiceFault> fault;
    for (const KeyQuestion& question : questions) {
        fault = co_await answerTo(question);
        if (life.ended()) {
            co_return;
        }
        if (fault) {
            fault->said = sayable(fault->said, key);
            break;
        }
    }
    Q_EMIT ended(fault);
}

QCoro::Task<std::optional<ServiceFault>> KeyTrial::answerTo(KeyQuestion question) {
    if (!question.call.url.isValid()) {
        co_return ServiceFault{question.unsendable};
    }
    try {
        const HttpOutcome answer = co_await http_.exchange(std::move(question.call), patience);
        co_return question.judge(answer);
    } catch (const ServiceError& error) {
        co_return error.fault();
    }
}

} // namespace orv
