#include "VmixRequest.h"

#include "Graphemes.h"
#include "WellFormedText.h"

#include <QHostAddress>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QByteArray queryItem(const char* name, const QString& value) {
    return name + ("=" + QUrl::toPercentEncoding(wellFormedText(value)));
}

QString hostPart(const QString& host) {
    const bool bareIpv6 = QHostAddress(host).protocol() == QAbstractSocket::IPv6Protocol;
    return bareIpv6 ? QString(u'[' % host % u']') : host;
}

} // namespace

TypedHost typedHost(const QString& typed) {
    static const QRegularExpression address(
        uR"(^(?:[a-z][a-z0-9+.-]*://)?(?:[^/?#@]*@)?(\[[^\]]*\]|[^/?#:]*)(?::([0-9]{1,5}))?(?:[/?#].*)?$)"_s,
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    const QString trimmed = typed.trimmed();
    const QRegularExpressionMatch match = address.match(trimmed);
    if (!match.hasMatch()) {
        return {.host = trimmed}; // A bare IPv6 address, or no host at all.
    }
    TypedHost found = {.host = match.captured(1)};
    if (!match.capturedView(2).isEmpty()) {
        found.port = match.capturedView(2).toLongLong();
    }
    return found;
}

std::optional<QUrl> vmixUrl(const VmixField& field, const QString& text) {
    constexpr auto path = "/API/"_L1;
    QUrl url(QString(u"http://" % hostPart(field.host) % u':' % QString::number(field.port) % path),
             QUrl::StrictMode);
    // A host with "/", "?" or "#" in it is an address of something else.
    if (!url.isValid() || url.host().isEmpty() || url.path() != path || url.hasQuery() ||
        url.hasFragment()) {
        return std::nullopt;
    }
    const QByteArray query = queryItem("Function", u"SetText"_s) + '&' +
                             queryItem("Input", field.input) + '&' +
                             queryItem("SelectedName", field.name) + '&' + queryItem("Value", text);
    url.setQuery(QString::fromLatin1(query), QUrl::StrictMode);
    return url;
}

QString vmixUpdatedLine(const QString& translation) {
    return u"✓ vMix title updated: " % firstCharacters(translation, 30) % u"...";
}

} // namespace orv
