#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <QUrl>

namespace orv {

/// The address that `text` spells; an invalid one when it spells none with a host.
QUrl serviceUrl(const QString& text);

/// A language code or the like as the value of a query item.
QString queryValue(const QString& value);

/// A key as the value of a request header; null when it holds a control character, which would end
/// the header early.
QByteArray headerValue(const QString& key);

/// `message` with every occurrence of `url`'s query, where keys stand, blotted out.
QString withoutQuery(QString message, const QUrl& url);

} // namespace orv
