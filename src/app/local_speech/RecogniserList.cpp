#include "RecogniserList.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// The notice of a line, and its sentence for whoever does not know the code.
StatusMessage told(const QJsonObject& line) {
    return {.status = {},
            .message = line[u"text"_s].toString(),
            .version = {},
            .notice = parseNotice(line[u"notice"_s].toObject())};
}

KnownRecogniser recogniser(const QJsonObject& object, bool isNamed) {
    return {.isNamed = isNamed,
            .answers = object[u"answers"_s].toBool(true),
            .name = object[u"name"_s].toString(),
            .kind = object[u"kind"_s].toString(),
            .address = object[u"address"_s].toString(),
            .model = object[u"model"_s].toString(),
            .why = told(object)};
}

} // namespace

RecogniserList parseRecogniserList(const QByteArray& printed) {
    RecogniserList list;
    QList<KnownRecogniser> found;
    for (const QByteArray& line : printed.split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        const QString state = object[u"state"_s].toString();
        if (state == u"named") {
            list.recognisers.append(recogniser(object, true));
        } else if (state == u"found") {
            found.append(recogniser(object, false));
        } else if (state == u"notice") {
            list.notices.append(told(object));
        }
    }
    list.recognisers += found;
    return list;
}

} // namespace orv
