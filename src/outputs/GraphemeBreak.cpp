#include "GraphemeBreak.h"

#include <QChar>

#include <algorithm>
#include <iterator>
#include <span>

namespace orv {

namespace {

/// From the first to the last code point, both included.
struct CodePoints {
    char32_t first;
    char32_t last;
};

// Most classes follow from the general category, which QChar knows. The tables hold the rest, each
// in ascending order.

constexpr CodePoints pictographic[] = {
    {0xA9, 0xA9},       {0xAE, 0xAE},       {0x203C, 0x203C},   {0x2049, 0x2049},
    {0x2122, 0x2122},   {0x2139, 0x2139},   {0x2194, 0x2199},   {0x21A9, 0x21AA},
    {0x231A, 0x231B},   {0x2328, 0x2328},   {0x2388, 0x2388},   {0x23CF, 0x23CF},
    {0x23E9, 0x23F3},   {0x23F8, 0x23FA},   {0x24C2, 0x24C2},   {0x25AA, 0x25AB},
    {0x25B6, 0x25B6},   {0x25C0, 0x25C0},   {0x25FB, 0x25FE},   {0x2600, 0x2605},
    {0x2607, 0x2612},   {0x2614, 0x2685},   {0x2690, 0x2705},   {0x2708, 0x2712},
    {0x2714, 0x2714},   {0x2716, 0x2716},   {0x271D, 0x271D},   {0x2721, 0x2721},
    {0x2728, 0x2728},   {0x2733, 0x2734},   {0x2744, 0x2744},   {0x2747, 0x2747},
    {0x274C, 0x274C},   {0x274E, 0x274E},   {0x2753, 0x2755},   {0x2757, 0x2757},
    {0x2763, 0x2767},   {0x2795, 0x2797},   {0x27A1, 0x27A1},   {0x27B0, 0x27B0},
    {0x27BF, 0x27BF},   {0x2934, 0x2935},   {0x2B05, 0x2B07},   {0x2B1B, 0x2B1C},
    {0x2B50, 0x2B50},   {0x2B55, 0x2B55},   {0x3030, 0x3030},   {0x303D, 0x303D},
    {0x3297, 0x3297},   {0x3299, 0x3299},   {0x1F000, 0x1F0FF}, {0x1F10D, 0x1F10F},
    {0x1F12F, 0x1F12F}, {0x1F16C, 0x1F171}, {0x1F17E, 0x1F17F}, {0x1F18E, 0x1F18E},
    {0x1F191, 0x1F19A}, {0x1F1AD, 0x1F1E5}, {0x1F201, 0x1F20F}, {0x1F21A, 0x1F21A},
    {0x1F22F, 0x1F22F}, {0x1F232, 0x1F23A}, {0x1F23C, 0x1F23F}, {0x1F249, 0x1F3FA},
    {0x1F400, 0x1F53D}, {0x1F546, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F774, 0x1F77F},
    {0x1F7D5, 0x1F7FF}, {0x1F80C, 0x1F80F}, {0x1F848, 0x1F84F}, {0x1F85A, 0x1F85F},
    {0x1F888, 0x1F88F}, {0x1F8AE, 0x1F8FF}, {0x1F90C, 0x1F93A}, {0x1F93C, 0x1F945},
    {0x1F947, 0x1FAFF}, {0x1FC00, 0x1FFFD}};

constexpr CodePoints extendBesidesNonspacingMarks[] = {
    {0x9BE, 0x9BE},     {0x9D7, 0x9D7},     {0xB3E, 0xB3E},     {0xB57, 0xB57},
    {0xBBE, 0xBBE},     {0xBD7, 0xBD7},     {0xCC2, 0xCC2},     {0xCD5, 0xCD6},
    {0xD3E, 0xD3E},     {0xD57, 0xD57},     {0xDCF, 0xDCF},     {0xDDF, 0xDDF},
    {0x1B35, 0x1B35},   {0x200C, 0x200C},   {0x302E, 0x302F},   {0xFF9E, 0xFF9F},
    {0x1133E, 0x1133E}, {0x11357, 0x11357}, {0x114B0, 0x114B0}, {0x114BD, 0x114BD},
    {0x115AF, 0x115AF}, {0x11930, 0x11930}, {0x1D165, 0x1D165}, {0x1D16E, 0x1D172},
    {0x1F3FB, 0x1F3FF}, {0xE0020, 0xE007F}};

constexpr CodePoints spacingMarksThatStandAlone[] = {
    {0x102B, 0x102C}, {0x1038, 0x1038}, {0x1062, 0x1064},  {0x1067, 0x106D}, {0x1083, 0x1083},
    {0x1087, 0x108C}, {0x108F, 0x108F}, {0x109A, 0x109C},  {0x1A61, 0x1A61}, {0x1A63, 0x1A64},
    {0xAA7B, 0xAA7B}, {0xAA7D, 0xAA7D}, {0x11720, 0x11721}};

constexpr CodePoints prepended[] = {{0x600, 0x605},     {0x6DD, 0x6DD},     {0x70F, 0x70F},
                                    {0x890, 0x891},     {0x8E2, 0x8E2},     {0xD4E, 0xD4E},
                                    {0x110BD, 0x110BD}, {0x110CD, 0x110CD}, {0x111C2, 0x111C3},
                                    {0x1193F, 0x1193F}, {0x11941, 0x11941}, {0x11A3A, 0x11A3A},
                                    {0x11A84, 0x11A89}, {0x11D46, 0x11D46}};

constexpr CodePoints unassignedControls[] = {{0x2065, 0x2065},   {0xFFF0, 0xFFF8},
                                             {0xE0000, 0xE0000}, {0xE0002, 0xE001F},
                                             {0xE0080, 0xE00FF}, {0xE01F0, 0xE0FFF}};

constexpr CodePoints conjunctConsonants[] = {
    {0x915, 0x939}, {0x958, 0x95F}, {0x978, 0x97F}, {0x995, 0x9A8}, {0x9AA, 0x9B0}, {0x9B2, 0x9B2},
    {0x9B6, 0x9B9}, {0x9DC, 0x9DD}, {0x9DF, 0x9DF}, {0x9F0, 0x9F1}, {0xA95, 0xAA8}, {0xAAA, 0xAB0},
    {0xAB2, 0xAB3}, {0xAB5, 0xAB9}, {0xAF9, 0xAF9}, {0xB15, 0xB28}, {0xB2A, 0xB30}, {0xB32, 0xB33},
    {0xB35, 0xB39}, {0xB5C, 0xB5D}, {0xB5F, 0xB5F}, {0xB71, 0xB71}, {0xC15, 0xC28}, {0xC2A, 0xC39},
    {0xC58, 0xC5A}, {0xD15, 0xD3A}};

constexpr CodePoints conjunctLinkers[] = {{0x94D, 0x94D}, {0x9CD, 0x9CD}, {0xACD, 0xACD},
                                          {0xB4D, 0xB4D}, {0xC4D, 0xC4D}, {0xD4D, 0xD4D}};

bool isIn(std::span<const CodePoints> table, char32_t codePoint) {
    const auto after = std::ranges::upper_bound(table, codePoint, {}, &CodePoints::first);
    return after != table.begin() && codePoint <= std::prev(after)->last;
}

bool isBetween(char32_t codePoint, char32_t first, char32_t last) {
    return codePoint >= first && codePoint <= last;
}

/// For the blocks of Hangul jamo and syllables; `Other` outside of them.
GraphemeBreak hangulBreak(char32_t codePoint) {
    constexpr char32_t firstSyllable = 0xAC00;
    constexpr char32_t lastSyllable = 0xD7A3;
    constexpr char32_t finals = 28; ///< Syllables with the same beginning and vowel.
    if (isBetween(codePoint, firstSyllable, lastSyllable)) {
        return (codePoint - firstSyllable) % finals == 0 ? GraphemeBreak::HangulLV
                                                         : GraphemeBreak::HangulLVT;
    }
    if (isBetween(codePoint, 0x1100, 0x115F) || isBetween(codePoint, 0xA960, 0xA97C)) {
        return GraphemeBreak::HangulL;
    }
    if (isBetween(codePoint, 0x1160, 0x11A7) || isBetween(codePoint, 0xD7B0, 0xD7C6)) {
        return GraphemeBreak::HangulV;
    }
    if (isBetween(codePoint, 0x11A8, 0x11FF) || isBetween(codePoint, 0xD7CB, 0xD7FB)) {
        return GraphemeBreak::HangulT;
    }
    return GraphemeBreak::Other;
}

GraphemeBreak breakOfCategory(char32_t codePoint) {
    switch (QChar::category(codePoint)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
        return GraphemeBreak::Extend;
    case QChar::Mark_SpacingCombining:
        return isIn(spacingMarksThatStandAlone, codePoint) ? GraphemeBreak::Other
                                                           : GraphemeBreak::SpacingMark;
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate: // One that lost its partner.
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return GraphemeBreak::Control;
    default:
        return isIn(unassignedControls, codePoint) ? GraphemeBreak::Control : GraphemeBreak::Other;
    }
}

} // namespace

GraphemeBreak graphemeBreak(char32_t codePoint) {
    constexpr char32_t thaiSaraAm = 0x0E33;
    constexpr char32_t laoAm = 0x0EB3;
    constexpr char32_t zeroWidthJoiner = 0x200D;
    if (isBetween(codePoint, 0x20, 0x7E)) {
        return GraphemeBreak::Other;
    }
    if (codePoint == U'\r') {
        return GraphemeBreak::CarriageReturn;
    }
    if (codePoint == U'\n') {
        return GraphemeBreak::LineFeed;
    }
    if (codePoint == zeroWidthJoiner) {
        return GraphemeBreak::ZeroWidthJoiner;
    }
    if (codePoint == thaiSaraAm || codePoint == laoAm) {
        return GraphemeBreak::SpacingMark;
    }
    if (isBetween(codePoint, 0x1F1E6, 0x1F1FF)) {
        return GraphemeBreak::RegionalIndicator;
    }
    if (const GraphemeBreak hangul = hangulBreak(codePoint); hangul != GraphemeBreak::Other) {
        return hangul;
    }
    if (isIn(extendBesidesNonspacingMarks, codePoint)) {
        return GraphemeBreak::Extend;
    }
    if (isIn(prepended, codePoint)) {
        return GraphemeBreak::Prepend;
    }
    if (isIn(pictographic, codePoint)) {
        return GraphemeBreak::Pictographic;
    }
    return breakOfCategory(codePoint);
}

ConjunctBreak conjunctBreak(char32_t codePoint, GraphemeBreak grapheme) {
    constexpr char32_t zeroWidthNonJoiner = 0x200C;
    if (isIn(conjunctConsonants, codePoint)) {
        return ConjunctBreak::Consonant;
    }
    if (isIn(conjunctLinkers, codePoint)) {
        return ConjunctBreak::Linker;
    }
    const bool extends =
        grapheme == GraphemeBreak::Extend || grapheme == GraphemeBreak::ZeroWidthJoiner;
    return extends && codePoint != zeroWidthNonJoiner ? ConjunctBreak::Extend : ConjunctBreak::None;
}

} // namespace orv
