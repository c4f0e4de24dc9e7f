#include "SubtitleLines.h"

#include "Result.h"
#include "SubtitleText.h"

namespace orv {

using namespace Qt::StringLiterals;

SubtitleLines subtitleLines(const Result& result, bool showOriginal) {
    const auto& [original, translation] = result;
    // The mark in brackets, as the backend writes it, holds these words too.
    const bool fallsBack = translation.contains("Translation Error"_L1) ||
                           readableText(translation).isEmpty() || translation == original;
    SubtitleLines lines;
    lines.translation = fallsBack ? original : translation;
    if (!fallsBack && showOriginal) {
        lines.original = original;
    }
    const bool failed = translation.contains("Error"_L1) || lines.translation.contains("Error"_L1);
    if (!failed && !readableText(lines.translation).isEmpty()) {
        lines.spoken = lines.translation;
    }
    return lines;
}

} // namespace orv
