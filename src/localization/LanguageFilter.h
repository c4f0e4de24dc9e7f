#pragma once

#include <QString>

namespace orv {

struct Language;

/// Whether a person who types `typed` may mean `language`: part of its own name or of its English
/// name, however capitalised and with or without marks on the letters, or the start of its code.
/// Nothing but blanks means every language.
bool languageMatches(const Language& language, const QString& typed);

} // namespace orv
