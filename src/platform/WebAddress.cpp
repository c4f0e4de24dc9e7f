#include "WebAddress.h"

using namespace Qt::StringLiterals;

namespace orv {

std::optional<QUrl> webAddress(const QString& text) {
    const QUrl url(text.trimmed(), QUrl::StrictMode);
    const bool isWeb = url.scheme() == "http"_L1 || url.scheme() == "https"_L1;
    if (!url.isValid() || !isWeb || url.host().isEmpty()) {
        return std::nullopt;
    }
    return url;
}

} // namespace orv
