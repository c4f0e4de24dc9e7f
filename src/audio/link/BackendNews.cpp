#include "BackendNews.h"

#include <algorithm>
#include <iterator>

namespace orv {

namespace {

bool isDisturbance(const StatusMessage& status) {
    return status.status == u"error" || status.status == u"warning" ||
           status.status == u"overloaded";
}

/// Whether the later one tells the same thing anew. Of a server without codes only equal messages
/// do.
bool replaces(const StatusMessage& later, const StatusMessage& earlier) {
    return later.notice.code.isEmpty() ? later.message == earlier.message
                                       : later.notice.code == earlier.notice.code;
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
        disturbances.clear();
    } else if (isDisturbance(status)) {
        const auto earlier =
            std::find_if(disturbances.begin(), disturbances.end(),
                         [&](const StatusMessage& each) { return replaces(status, each); });
        if (earlier != disturbances.end()) {
            *earlier = status;
        } else if (disturbances.size() < mostNotices) {
            disturbances.append(status);
        }
    }
}

const StatusMessage* BackendNews::error() const {
    const auto found =
        std::find_if(disturbances.rbegin(), disturbances.rend(),
                     [](const StatusMessage& each) { return each.status == u"error"; });
    return found == disturbances.rend() ? nullptr : &*found;
}

} // namespace orv
