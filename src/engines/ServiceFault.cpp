#include "ServiceFault.h"

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr qsizetype longestSaid = 300;

QString withoutKey(QString line, const QString& key) {
    if (key.isEmpty()) {
        return line;
    }
    line.replace(key, u"…"_s);
    // What has taken its place may complete another one with what stands beside it.
    while (line.contains(key)) {
        line.remove(key);
    }
    return line;
}

} // namespace

QString codeOf(ServiceFault::Kind kind) {
    using Kind = ServiceFault::Kind;
    switch (kind) {
    case Kind::KeyMissing:
        return u"service.key_missing"_s;
    case Kind::KeyRefused:
        return u"service.key_refused"_s;
    case Kind::RegionMissing:
        return u"service.region_missing"_s;
    case Kind::NoCredit:
        return u"service.no_credit"_s;
    case Kind::NotAllowed:
        return u"service.not_allowed"_s;
    case Kind::QuotaUsedUp:
        return u"service.quota"_s;
    case Kind::TooManyRequests:
        return u"service.too_many"_s;
    case Kind::LanguageUnknown:
        return u"service.language"_s;
    case Kind::RequestRefused:
        return u"service.refused"_s;
    case Kind::NetworkFailed:
        return u"service.network"_s;
    case Kind::TimedOut:
        return u"service.timed_out"_s;
    case Kind::ServiceFailed:
        return u"service.failed"_s;
    case Kind::Unreadable:
        return u"service.unreadable"_s;
    case Kind::NotTranslated:
        return u"service.not_translated"_s;
    case Kind::TooSlow:
        return u"service.too_slow"_s;
    }
    return {};
}

bool isOfTranslation(const ServiceFault& fault) {
    return !fault.translator.isEmpty() || fault.kind == ServiceFault::Kind::NotTranslated;
}

bool passesByItself(ServiceFault::Kind kind) {
    using Kind = ServiceFault::Kind;
    return kind == Kind::TooManyRequests || kind == Kind::NetworkFailed || kind == Kind::TimedOut ||
           kind == Kind::ServiceFailed || kind == Kind::Unreadable || kind == Kind::TooSlow;
}

std::optional<ServiceFault::Kind> faultOfStatus(int status) {
    using Kind = ServiceFault::Kind;
    if (status >= 200 && status < 300) {
        return std::nullopt;
    }
    switch (status) {
    case 401:
        return Kind::KeyRefused;
    case 402:
        return Kind::NoCredit;
    case 403:
        return Kind::NotAllowed;
    case 408:
    case 504:
        return Kind::TimedOut;
    case 429:
        return Kind::TooManyRequests;
    default:
        break;
    }
    if (status >= 500) {
        return Kind::ServiceFailed;
    }
    // Nothing is followed: whoever redirects is in between.
    return status >= 400 ? Kind::RequestRefused : Kind::Unreadable;
}

QString sayable(const QString& text, const QString& key) {
    const QString line = withoutKey(text.simplified(), key);
    // Cut behind the search, so that no piece of a key is left; the dots may complete one.
    return line.size() > longestSaid ? withoutKey(line.left(longestSaid) + u"..."_s, key) : line;
}

} // namespace orv
