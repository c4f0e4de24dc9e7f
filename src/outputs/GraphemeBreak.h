#pragma once

namespace orv {

/// What a code point does at the boundaries of characters (Grapheme_Cluster_Break and
/// Extended_Pictographic in Unicode's data).
enum class GraphemeBreak {
    Other,
    CarriageReturn,
    LineFeed,
    Control,
    Extend,
    ZeroWidthJoiner,
    RegionalIndicator,
    Prepend,
    SpacingMark,
    HangulL,
    HangulV,
    HangulT,
    HangulLV,
    HangulLVT,
    Pictographic,
};

GraphemeBreak graphemeBreak(char32_t codePoint);

/// What a code point does within Indic conjuncts (Indic_Conjunct_Break).
enum class ConjunctBreak { None, Consonant, Linker, Extend };

ConjunctBreak conjunctBreak(char32_t codePoint, GraphemeBreak grapheme);

} // namespace orv
