#include "OverlayContent.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace orv {

using namespace Qt::StringLiterals;

QByteArray OverlayResult::toJson() const {
    const QJsonObject object{
        {u"original"_s, original},
        {u"translation"_s, translation},
        {u"ts"_s, lastUpdate},
        {u"showOriginal"_s, appearance.showOriginal},
        {u"style"_s, overlayStyle(appearance).toJson()},
    };
    const QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return json.isEmpty() ? "{}"_ba : json;
}

OverlayRoute overlayRoute(QByteArrayView path) {
    const qsizetype query = path.indexOf('?');
    const QByteArrayView resource = query < 0 ? path : path.first(query);
    if (resource == "/text") {
        return OverlayRoute::Text;
    }
    return resource == "/" || resource == "/overlay" ? OverlayRoute::Page : OverlayRoute::NotFound;
}

HttpResponse textResponse(const QByteArray& json) {
    return {json, "application/json; charset=utf-8"_ba};
}

HttpResponse pageResponse(const QByteArray& html) {
    return {html, "text/html; charset=utf-8"_ba};
}

HttpResponse notFoundResponse() {
    return {"Not Found"_ba, "text/plain; charset=utf-8"_ba};
}

} // namespace orv
