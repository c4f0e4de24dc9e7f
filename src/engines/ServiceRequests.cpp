#include "ServiceRequests.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

QUrl serviceUrl(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() ? url : QUrl();
}

QString queryValue(const QString& value) {
    return QString::fromLatin1(QUrl::toPercentEncoding(value));
}

QByteArray headerValue(const QString& key) {
    const auto endsHeader = [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7f; };
    return std::any_of(key.begin(), key.end(), endsHeader) ? QByteArray() : key.toUtf8();
}

QString withoutQuery(QString message, const QUrl& url) {
    for (const auto format : {QUrl::FullyEncoded, QUrl::PrettyDecoded, QUrl::FullyDecoded}) {
        const QString query = url.query(format);
        if (!query.isEmpty()) {
            message.replace(query, u"…"_s);
        }
    }
    return message;
}

} // namespace orv
