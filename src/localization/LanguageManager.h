#pragma once

#include <QList>
#include <QString>

namespace orv {

/// A spoken language that can be the source or the target of a translation.
struct Language {
    QString id;   ///< Equal to `code`; identity in lists and pickers.
    QString code; ///< Lower-case: ISO 639-1, but for "haw" and "yue".
    QString name; ///< The language's own name for itself, in its own script.
    QString flag; ///< One flag emoji, shown beside the name.

    friend bool operator==(const Language&, const Language&) = default;
};

/// The fixed catalogue of spoken languages, independent of the languages of the user interface.
/// Automatic detection is not an entry; pickers offer it by themselves.
class LanguageManager {
  public:
    /// All 101 languages in the order of display. Built on first use, callable from any thread.
    static const QList<Language>& allLanguages();
};

} // namespace orv
