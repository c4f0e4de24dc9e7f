#pragma once

#include <QString>
#include <QStringView>

namespace orv {

/// Characters as a reader counts them: the extended grapheme clusters of Unicode's text
/// segmentation rules (UAX #29, with the rule of version 15.1 that keeps Indic conjuncts together).
/// A flag, a family joined from several emoji, a letter with its combining marks, a Hangul
/// syllable spelt in jamo and CR LF are one character each. Half of a surrogate pair that lost its
/// partner counts as a character of its own.
///
/// QTextBoundaryFinder of Qt 6.4 does not serve: next to Indic or Thai text it reports boundaries
/// inside surrogate pairs and between a letter and its marks.

/// The length of the character at the start of `text` in UTF-16 units; 0 for an empty text.
qsizetype firstCharacterLength(QStringView text);

/// The first `count` characters of `text`, or all of it if there are fewer.
QString firstCharacters(const QString& text, qsizetype count);

} // namespace orv
