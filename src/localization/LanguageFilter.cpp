#include "LanguageFilter.h"

#include "LanguageManager.h"

#include <QLocale>

namespace orv {

namespace {

/// Lower case without marks: "Español" is found by "espanol".
QString folded(const QString& text) {
    QString letters;
    for (const QChar letter : text.normalized(QString::NormalizationForm_KD).toCaseFolded()) {
        if (letter.category() != QChar::Mark_NonSpacing) {
            letters.append(letter);
        }
    }
    return letters;
}

QString englishName(const QString& code) {
    const auto language = QLocale::codeToLanguage(code);
    return language == QLocale::AnyLanguage ? QString() : QLocale::languageToString(language);
}

} // namespace

bool languageMatches(const Language& language, const QString& typed) {
    const QString wanted = folded(typed.trimmed());
    return wanted.isEmpty() || folded(language.name).contains(wanted) ||
           folded(englishName(language.code)).contains(wanted) || language.code.startsWith(wanted);
}

} // namespace orv
