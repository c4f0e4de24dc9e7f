#include "HostLookups.h"

#include "ThreadChecks.h"

#include <QUrl>

#include <iterator>
#include <memory>
#include <netdb.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct FreeAddresses {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

using AddressList = std::unique_ptr<addrinfo, FreeAddresses>;

HostAnswer ask(const QByteArray& host, int flags) {
    addrinfo hints = {};
    hints.ai_flags = flags;
    hints.ai_socktype = SOCK_STREAM; // Else each address comes once for every kind of socket.
    addrinfo* found = nullptr;
    const int failure = ::getaddrinfo(host.constData(), nullptr, &hints, &found);
    if (failure != 0) {
        return {{}, QString::fromLocal8Bit(::gai_strerror(failure))};
    }
    const AddressList list(found);
    HostAnswer answer;
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        answer.addresses.append(QHostAddress(entry->ai_addr));
    }
    return answer;
}

/// The name as name servers know it; empty for what cannot be one.
QByteArray wireName(const QString& host) {
    return QUrl::toAce(host);
}

} // namespace

HostAnswer systemLookUp(const QString& host) {
    const QByteArray name = wireName(host);
    if (name.isEmpty()) {
        return {{}, u"Ungültiger Hostname"_s};
    }
    return ask(name, 0);
}

HostLookups::HostLookups(LookUpHost lookUp)
    : lookUp_(std::move(lookUp)) {}

void HostLookups::resolve(const QString& host, Done done) {
    ORV_ON_MAIN();
    // Asked this way the system only reads the text.
    const HostAnswer literal = ask(host.toUtf8(), AI_NUMERICHOST);
    if (literal.error.isEmpty() && !host.contains(QChar::Null)) {
        done(literal);
        return;
    }
    if (!underWay_.contains(host)) {
        const bool full = static_cast<std::size_t>(underWay_.size()) >= maximumThreads;
        if (full || !startThread(host)) {
            done({{}, u"Zu viele unbeantwortete Namensanfragen"_s});
            return;
        }
        underWay_.append(host);
    }
    waiting_.push_back({host, std::move(done)});
    if (waiting_.size() > maximumWaiting) {
        waiting_.pop_front();
    }
}

bool HostLookups::startThread(const QString& host) {
    const auto question = [this, host, lookUp = lookUp_, home = home_.handle()] {
        const HostAnswer answer = lookUp(host);
        // Runs only as long as this object is there.
        home.post([this, host, answer] { answered(host, answer); });
    };
    try {
        std::thread(question).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void HostLookups::answered(const QString& host, const HostAnswer& answer) {
    underWay_.removeOne(host);
    std::vector<Done> told;
    std::deque<Question> others;
    for (Question& question : waiting_) {
        if (question.host == host) {
            told.push_back(std::move(question.done));
        } else {
            others.push_back(std::move(question));
        }
    }
    waiting_ = std::move(others);
    for (const Done& done : told) {
        done(answer);
    }
}

} // namespace orv
