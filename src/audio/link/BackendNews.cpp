#include "BackendNews.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

bool isDisturbance(const StatusMessage& status) {
    return status.status == u"error" || status.status == u"warning" ||
           status.status == u"overloaded";
}

bool isOfService(const StatusMessage& status) {
    return status.notice.code.startsWith(u"service.");
}

bool isOfTranslation(const StatusMessage& status) {
    return status.notice.parameters.value(u"part"_s) == u"translation";
}

/// Whether the later one tells the same thing anew. Of a server without codes only equal messages
/// do, and two services may have the same fault.
bool replaces(const StatusMessage& later, const StatusMessage& earlier) {
    const auto service = [](const StatusMessage& status) {
        return isOfService(status) ? status.notice.parameters.value(u"engine"_s) : QString();
    };
    return later.notice.code.isEmpty()
               ? later.message == earlier.message
               : later.notice.code == earlier.notice.code && service(later) == service(earlier);
}

StatusMessage counted(StatusMessage status, const StatusMessage& earlier) {
    const QString times = u"times"_s;
    const int before = earlier.notice.parameters.value(times, u"1"_s).toInt();
    status.notice.parameters.insert(times, QString::number(before + 1));
    return status;
}

} // namespace

void BackendNews::beginRun() {
    serving.reset();
    disturbances.clear();
}

void BackendNews::take(const StatusMessage& status) {
    latest = status;
    if (status.status == u"engine") {
        serving = status;
        // What a service lacks is the reason that the server serves.
        disturbances.removeIf([](const StatusMessage& each) { return !isOfService(each); });
    } else if (isDisturbance(status)) {
        const auto earlier =
            std::find_if(disturbances.begin(), disturbances.end(),
                         [&](const StatusMessage& each) { return replaces(status, each); });
        if (earlier != disturbances.end()) {
            *earlier = isOfService(status) ? counted(status, *earlier) : status;
        } else if (disturbances.size() < mostNotices) {
            disturbances.append(status);
        }
    }
}

void BackendNews::serviceServes(const Result& result) {
    const bool isTranslated =
        !result.translation.isEmpty() && result.translation != result.original;
    disturbances.removeIf([&](const StatusMessage& each) {
        const bool isMadeGood = isTranslated || !isOfTranslation(each);
        return isOfService(each) && isMadeGood && each.notice.code != u"service.too_slow";
    });
}

const StatusMessage* BackendNews::error() const {
    const auto found =
        std::find_if(disturbances.rbegin(), disturbances.rend(),
                     [](const StatusMessage& each) { return each.status == u"error"; });
    return found == disturbances.rend() ? nullptr : &*found;
}

} // namespace orv
