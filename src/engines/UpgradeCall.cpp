#include "UpgradeCall.h"

#include <QString>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

QUrl httpUrl(QUrl url) {
    if (!url.isValid()) {
        return {};
    }
    url.setScheme(url.scheme() == u"wss" ? u"https"_s : u"http"_s);
    return url;
}

HttpCall upgradeCall(QUrl url, const QByteArray& authorization) {
    return {.url = httpUrl(std::move(url)),
            .headers = {{"Authorization", authorization},
                        {"Connection", "Upgrade"},
                        {"Upgrade", "websocket"},
                        {"Sec-WebSocket-Version", "13"},
                        // Any sixteen bytes: the connection is not used.
                        {"Sec-WebSocket-Key", QByteArray(16, 'o').toBase64()}}};
}

} // namespace orv
