#pragma once

#include <QString>
#include <QStringView>

#include <memory>

struct UBreakIterator;

namespace orv {

/// Characters as a reader counts them: the extended grapheme clusters of Unicode's text
/// segmentation rules (UAX #29), as ICU knows them. A flag, a family joined from several emoji, a
/// letter with its combining marks, a Hangul syllable spelt in jamo and CR LF are one character
/// each. Half of a surrogate pair that lost its partner counts like a letter. Whether an Indic
/// conjunct is one or several depends on ICU's version.
///
/// QTextBoundaryFinder of Qt 6.4 does not serve: next to Indic or Thai text it reports boundaries
/// inside surrogate pairs and between a letter and its marks.
///
/// Walks over one text. Positions are in UTF-16 units.
class Graphemes {
  public:
    /// `text` is not copied.
    explicit Graphemes(QStringView text);

    /// Where the next character ends, from the beginning on; -1 after the last.
    qsizetype next();

    /// The last boundary that is not after `position`, and the first that is not before it.
    /// `position` lies within the text or at one of its ends.
    qsizetype boundaryUpTo(qsizetype position);
    qsizetype boundaryFrom(qsizetype position);

  private:
    struct Close {
        void operator()(UBreakIterator* iterator) const;
    };

    std::unique_ptr<UBreakIterator, Close> iterator_;
};

/// The first `count` characters of `text`, or all of it if there are fewer.
QString firstCharacters(const QString& text, qsizetype count);

} // namespace orv
