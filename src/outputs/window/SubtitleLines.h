#pragma once

#include <QString>

#include <optional>

namespace orv {

struct Result;

/// What a result looks and sounds like.
struct SubtitleLines {
    QString original;              ///< The small line; may be empty.
    QString translation;           ///< The large line.
    std::optional<QString> spoken; ///< What is read aloud, if anything.

    friend bool operator==(const SubtitleLines&, const SubtitleLines&) = default;
};

/// Decides the lines of a result. A translation that is missing, that failed or that says the same
/// as the source text leaves the source text alone, in the large line; one in which `readableText`
/// finds nothing counts as missing. Failures are never spoken, neither as they stand nor by their
/// source text, and neither is a large line without anything to read.
SubtitleLines subtitleLines(const Result& result, bool showOriginal);

} // namespace orv
