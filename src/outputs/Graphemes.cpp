#include "Graphemes.h"

#include "GraphemeBreak.h"

#include <QChar>

namespace orv {

namespace {

/// A code point and how many UTF-16 units it takes.
struct CodePoint {
    char32_t value = 0;
    qsizetype length = 0;
};

/// Decodes the start of `text`, which is not empty.
CodePoint firstCodePoint(QStringView text) {
    const QChar first = text[0];
    if (first.isHighSurrogate() && text.size() > 1 && text[1].isLowSurrogate()) {
        return {QChar::surrogateToUcs4(first, text[1]), 2};
    }
    return {first.unicode(), 1};
}

bool endsText(GraphemeBreak one) {
    return one == GraphemeBreak::Control || one == GraphemeBreak::CarriageReturn ||
           one == GraphemeBreak::LineFeed;
}

bool isOneSyllable(GraphemeBreak before, GraphemeBreak after) {
    using enum GraphemeBreak;
    switch (before) {
    case HangulL:
        return after == HangulL || after == HangulV || after == HangulLV || after == HangulLVT;
    case HangulLV:
    case HangulV:
        return after == HangulV || after == HangulT;
    case HangulLVT:
    case HangulT:
        return after == HangulT;
    default:
        return false;
    }
}

/// Walks through one character, code point by code point.
class Character {
  public:
    explicit Character(char32_t first)
        : last_(graphemeBreak(first)) {
        note(first, last_);
    }

    /// Takes `next` in if it belongs to the character.
    bool takes(char32_t next) {
        const GraphemeBreak grapheme = graphemeBreak(next);
        if (!belongs(next, grapheme)) {
            return false;
        }
        note(next, grapheme);
        last_ = grapheme;
        return true;
    }

  private:
    bool belongs(char32_t next, GraphemeBreak grapheme) const {
        using enum GraphemeBreak;
        if (last_ == CarriageReturn && grapheme == LineFeed) {
            return true;
        }
        if (endsText(last_) || endsText(grapheme)) {
            return false;
        }
        if (isOneSyllable(last_, grapheme) || last_ == Prepend || grapheme == Extend ||
            grapheme == ZeroWidthJoiner || grapheme == SpacingMark) {
            return true;
        }
        if (conjunct_ == Conjunct::Linked &&
            conjunctBreak(next, grapheme) == ConjunctBreak::Consonant) {
            return true;
        }
        if (emoji_ == Emoji::Joined && grapheme == Pictographic) {
            return true;
        }
        return regionalIndicators_ == 1 && grapheme == RegionalIndicator;
    }

    void note(char32_t codePoint, GraphemeBreak grapheme) {
        noteEmoji(grapheme);
        noteConjunct(conjunctBreak(codePoint, grapheme));
        regionalIndicators_ =
            grapheme == GraphemeBreak::RegionalIndicator ? regionalIndicators_ + 1 : 0;
    }

    void noteEmoji(GraphemeBreak grapheme) {
        if (grapheme == GraphemeBreak::Pictographic) {
            emoji_ = Emoji::Open;
        } else if (emoji_ == Emoji::Open && grapheme == GraphemeBreak::ZeroWidthJoiner) {
            emoji_ = Emoji::Joined;
        } else if (emoji_ != Emoji::Open || grapheme != GraphemeBreak::Extend) {
            emoji_ = Emoji::None;
        }
    }

    void noteConjunct(ConjunctBreak one) {
        if (one == ConjunctBreak::Consonant) {
            conjunct_ = Conjunct::Open;
        } else if (one == ConjunctBreak::None) {
            conjunct_ = Conjunct::None;
        } else if (one == ConjunctBreak::Linker && conjunct_ != Conjunct::None) {
            conjunct_ = Conjunct::Linked;
        }
    }

    /// A pictograph with its marks; with a joiner after it.
    enum class Emoji { None, Open, Joined };
    /// A consonant with its marks; with a linker among them.
    enum class Conjunct { None, Open, Linked };

    GraphemeBreak last_;
    Emoji emoji_ = Emoji::None;
    Conjunct conjunct_ = Conjunct::None;
    int regionalIndicators_ = 0; ///< At the end of what was taken in; two make a flag.
};

} // namespace

qsizetype firstCharacterLength(QStringView text) {
    if (text.isEmpty()) {
        return 0;
    }
    const CodePoint first = firstCodePoint(text);
    Character character(first.value);
    qsizetype length = first.length;
    while (length < text.size()) {
        const CodePoint next = firstCodePoint(text.sliced(length));
        if (!character.takes(next.value)) {
            break;
        }
        length += next.length;
    }
    return length;
}

QString firstCharacters(const QString& text, qsizetype count) {
    qsizetype length = 0;
    for (qsizetype i = 0; i < count && length < text.size(); ++i) {
        length += firstCharacterLength(QStringView(text).sliced(length));
    }
    return text.first(length);
}

} // namespace orv
