#include "ManifestFetcher.h"

#include "ThreadChecks.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

HttpCall manifestCall(const QUrl& url, const QByteArray& agent) {
    return {.url = url,
            .headers = {{"User-Agent", agent},
                        {"Accept", "application/json"},
                        {"Cache-Control", "no-cache"}}};
}

/// Where an answer to a request for `from` sends us on; none unless it does, and may.
std::optional<QUrl> redirection(const HttpOutcome& outcome, const QUrl& from) {
    const int status = outcome.status;
    const QByteArray location = headerIn(outcome.headers, "location");
    const bool sendsOn =
        status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
    if (!sendsOn || location.isEmpty()) {
        return std::nullopt;
    }
    const QUrl url = from.resolved(QUrl::fromEncoded(location));
    const bool isAllowed =
        url.scheme() == u"https" || (url.scheme() == u"http" && from.scheme() == u"http");
    return isAllowed && url.isValid() && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

DecodedUpdateInfo manifestIn(const HttpOutcome& outcome) {
    if (!outcome.error.isEmpty()) {
        return {{}, outcome.error};
    }
    if (outcome.status < 200 || outcome.status > 299) {
        return {{}, u"HTTP-Status "_s + QString::number(outcome.status)};
    }
    return decodeUpdateInfo(outcome.body);
}

} // namespace

bool leadsNowhere(const QUrl& url) {
    QString host = url.host();
    if (host.endsWith(u'.')) {
        host.chop(1);
    }
    return host == u"invalid" || host.endsWith(u".invalid");
}

ManifestFetcher::ManifestFetcher(const QByteArray& agent)
    : agent_(agent) {}

void ManifestFetcher::fetch(const QUrl& url, std::chrono::milliseconds limit) {
    ORV_ON_MAIN();
    deadline_ = QDeadlineTimer(limit, Qt::PreciseTimer);
    redirections_ = 0;
    ask(url);
}

void ManifestFetcher::ask(const QUrl& url) {
    url_ = url;
    const HttpLimits limits{.whole = std::chrono::milliseconds(deadline_.remainingTime()),
                            .largestBody = largestManifest};
    exchange_ = http_.send(manifestCall(url, agent_), limits);
    connect(exchange_.get(), &HttpExchange::ended, this, &ManifestFetcher::answered);
}

void ManifestFetcher::answered(const HttpOutcome& outcome) {
    const auto next = redirection(outcome, url_);
    if (next && redirections_ < mostRedirections) {
        ++redirections_;
        ask(*next);
    } else {
        Q_EMIT fetched(manifestIn(outcome));
    }
}

} // namespace orv
