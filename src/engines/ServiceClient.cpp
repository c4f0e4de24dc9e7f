#include "ServiceClient.h"

#include "ServiceError.h"
#include "ThreadChecks.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

HttpCall jsonCall(const QUrl& url, const QByteArray& json) {
    return {.url = url, .headers = {{"Content-Type", "application/json"}}, .body = json};
}

ServiceClient::ServiceClient()
    : http_(HttpClient::Proxies::OfTheSystem, AfterAnswer::Keep) {}

ServiceClient::~ServiceClient() {
    while (!requests_.empty()) {
        end(requests_.begin(), {.error = u"Anfrage abgebrochen"_s});
    }
}

QCoro::Task<HttpOutcome> ServiceClient::exchange(HttpCall call, std::chrono::milliseconds timeout) {
    using Kind = ServiceFault::Kind;
    ORV_ON_MAIN();
    HttpOutcome outcome = co_await start(std::move(call), timeout);
    if (!outcome.error.isEmpty()) {
        throw ServiceError(outcome.error, outcome.timedOut ? Kind::TimedOut : Kind::NetworkFailed);
    }
    co_return outcome;
}

Completion<HttpOutcome> ServiceClient::start(HttpCall call, std::chrono::milliseconds timeout) {
    const HttpLimits limits{.idle = timeout, .largestBody = maximumAnswerSize};
    const auto request = requests_.insert(requests_.end(), Request());
    request->exchange = http_.send(std::move(call), limits);
    QObject::connect(request->exchange.get(), &HttpExchange::ended, request->exchange.get(),
                     [this, request](const HttpOutcome& outcome) { end(request, outcome); });
    return request->outcome;
}

/// Whoever waits goes on inside this call, and may destroy the client.
void ServiceClient::end(Requests::iterator request, const HttpOutcome& outcome) {
    const Completion<HttpOutcome> waiting = request->outcome;
    HttpOutcome result = outcome; // Goes with the request otherwise.
    requests_.erase(request);
    waiting.complete(std::move(result));
}

} // namespace orv
