#include "Graphemes.h"

#include <unicode/ubrk.h>

#include <algorithm>
#include <cstdint>

namespace orv {

namespace {

std::int32_t toIcu(qsizetype position) {
    return static_cast<std::int32_t>(position);
}

} // namespace

void Graphemes::Close::operator()(UBreakIterator* iterator) const {
    ubrk_close(iterator);
}

Graphemes::Graphemes(QStringView text) {
    UErrorCode status = U_ZERO_ERROR;
    // The boundaries of characters are the same in all languages.
    iterator_.reset(ubrk_open(UBRK_CHARACTER, "", text.utf16(), toIcu(text.size()), &status));
    Q_ASSERT(U_SUCCESS(status));
}

qsizetype Graphemes::next() {
    return ubrk_next(iterator_.get());
}

// Asked for what is none, ICU stands at the next boundary afterwards.
qsizetype Graphemes::boundaryUpTo(qsizetype position) {
    const bool isBoundary = ubrk_isBoundary(iterator_.get(), toIcu(position)) != 0;
    return isBoundary ? position : ubrk_previous(iterator_.get());
}

qsizetype Graphemes::boundaryFrom(qsizetype position) {
    const bool isBoundary = ubrk_isBoundary(iterator_.get(), toIcu(position)) != 0;
    return isBoundary ? position : ubrk_current(iterator_.get());
}

QString firstCharacters(const QString& text, qsizetype count) {
    Graphemes characters(text);
    qsizetype length = 0;
    for (qsizetype i = 0; i < count && length < text.size(); ++i) {
        length = characters.next();
    }
    return text.first(length);
}

} // namespace orv
