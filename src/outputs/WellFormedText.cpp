#include "WellFormedText.h"

namespace orv {

QString wellFormedText(QString text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        const bool startsPair =
            unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (startsPair) {
            ++i;
        } else if (unit.isSurrogate()) {
            text[i] = QChar::ReplacementCharacter;
        }
    }
    return text;
}

} // namespace orv
