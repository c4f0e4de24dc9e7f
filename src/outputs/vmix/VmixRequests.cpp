#include "VmixRequests.h"

#include "ThreadChecks.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

VmixRequests::VmixRequests(const VmixLimits& limits, LookUpHost lookUp)
    : limits_(limits)
    , http_(HttpClient::Proxies::None, AfterAnswer::Close, std::move(lookUp)) {
    limit_.setSingleShot(true);
    limit_.setTimerType(Qt::PreciseTimer);
    limit_.callOnTimeout(&limit_, [this] { endOverdue(); });
}

void VmixRequests::get(const QUrl& url, Done done) {
    add(url, std::move(done), std::chrono::steady_clock::now() + limits_.request);
}

void VmixRequests::add(const QUrl& url, Done done, std::chrono::steady_clock::time_point deadline) {
    ORV_ON_MAIN();
    requests_.push_back({url, std::move(done), deadline});
    startNext();
    dropOldest();
    watchFirst();
}

int VmixRequests::connectionsTo(const QUrl& url) const {
    return static_cast<int>(std::ranges::count_if(requests_, [&](const Request& other) {
        return other.connection != nullptr && other.url.port() == url.port() &&
               other.url.host() == url.host();
    }));
}

void VmixRequests::startNext() {
    for (auto request = requests_.begin(); request != requests_.end(); ++request) {
        if (request->connection == nullptr &&
            connectionsTo(request->url) < limits_.connectionsPerHost) {
            start(request);
        }
    }
}

void VmixRequests::start(Requests::iterator request) {
    request->connection = http_.send({.url = request->url}, {});
    QObject::connect(
        request->connection.get(), &HttpExchange::ended, request->connection.get(),
        [this, request](const HttpOutcome& outcome) { end(request, QString(outcome.error)); });
}

void VmixRequests::dropOldest() {
    const auto waits = [](const Request& request) { return request.connection == nullptr; };
    if (static_cast<std::size_t>(std::ranges::count_if(requests_, waits)) > limits_.waiting) {
        requests_.erase(std::ranges::find_if(requests_, waits));
    }
}

void VmixRequests::end(Requests::iterator request, const QString& error) {
    const Done done = std::move(request->done);
    // The connection goes with it: an answer that it has read but not told is forgotten, and the
    // next one to this host finds room.
    requests_.erase(request);
    if (done) {
        done(error);
    }
    startNext();
    watchFirst();
}

void VmixRequests::watchFirst() {
    using namespace std::chrono;
    if (requests_.empty()) {
        limit_.stop();
    } else {
        const auto left = ceil<milliseconds>(requests_.front().deadline - steady_clock::now());
        limit_.start(std::max(left, 0ms));
    }
}

void VmixRequests::endOverdue() {
    const auto now = std::chrono::steady_clock::now();
    while (!requests_.empty() && requests_.front().deadline <= now) {
        end(requests_.begin(), u"Zeitüberschreitung der Anfrage"_s);
    }
    watchFirst();
}

} // namespace orv
