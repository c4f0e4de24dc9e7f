#include "BackendEcho.h"

using namespace Qt::StringLiterals;

namespace orv {

std::optional<QString> BackendEcho::lineFor(QByteArrayView bytes) {
    QString text = decoder_.decode(bytes);
    if (text.isEmpty()) {
        return std::nullopt;
    }
    if (text.endsWith(u'\n')) {
        text.chop(1);
    }
    return QString(u"Backend:" % text);
}

} // namespace orv
