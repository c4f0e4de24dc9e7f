#include "UpdateInfo.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr qsizetype longestVersion = 64;

bool isPresentable(const QString& version) {
    return version.size() <= longestVersion &&
           std::none_of(version.begin(), version.end(), [](QChar c) {
               return c.category() == QChar::Other_Control ||
                      c.category() == QChar::Separator_Line ||
                      c.category() == QChar::Separator_Paragraph;
           });
}

} // namespace

DecodedUpdateInfo decodeUpdateInfo(const QByteArray& body) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError) {
        return {{}, u"kein JSON: "_s + error.errorString()};
    }
    if (!document.isObject()) {
        return {{}, u"kein JSON-Objekt"_s};
    }
    const QJsonObject object = document.object();
    const QJsonValue version = object[u"version"_s];
    const QJsonValue url = object[u"url"_s];
    const QJsonValue notes = object[u"notes"_s];
    if (!version.isString() || !isPresentable(version.toString())) {
        return {{}, u"\"version\" fehlt oder ist kein brauchbarer Text"_s};
    }
    if (!url.isString()) {
        return {{}, u"\"url\" fehlt oder ist kein Text"_s};
    }
    if (!notes.isString() && !notes.isUndefined() && !notes.isNull()) {
        return {{}, u"\"notes\" ist kein Text"_s};
    }
    return {{version.toString(), url.toString(), notes.toString()}, {}};
}

} // namespace orv
