#include "AlertNotes.h"

#include "Graphemes.h"

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr qsizetype mostLines = 20;
constexpr qsizetype mostCharacters = 1200;

/// The beginning of `text`, not longer than `length` and not cut within what a reader takes for one
/// character.
QString beginning(const QString& text, qsizetype length) {
    return text.left(Graphemes(text).boundaryUpTo(length));
}

} // namespace

QString alertNotes(const QString& notes) {
    QString shown = notes.trimmed().section(u'\n', 0, mostLines - 1);
    if (shown.size() > mostCharacters) {
        shown = beginning(shown, mostCharacters);
    }
    return shown.size() < notes.trimmed().size() ? QString(shown.trimmed() + u" …"_s) : shown;
}

} // namespace orv
