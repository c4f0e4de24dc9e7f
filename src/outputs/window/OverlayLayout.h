#pragma once

#include "OverlayFrames.h"
#include "SubtitleText.h"

#include <QFont>
#include <QRect>
#include <QString>

namespace orv {

/// The letters of the two lines.
struct SubtitleFonts {
    QFont original;
    QFont translation;

    /// The system font: 14 logical pixels regular, and 22 semibold.
    static SubtitleFonts system();

    /// The same fonts at `percent` of their size, but the small one never below 11.
    SubtitleFonts scaled(int percent) const;
};

/// A result, ready to be drawn.
struct OverlayLayout {
    SubtitleText original; ///< Empty when there is no small line.
    SubtitleText translation;
    OverlayFrames frames;
};

/// Wraps both lines, measures them and places the window on `screen`. Texts that would leave the
/// screen get smaller letters, down to 64 percent; of what is longer still the end is kept, behind
/// an ellipsis, the small line in at most a third of the room.
OverlayLayout layoutForContent(const QString& original, const QString& translation,
                               const SubtitleFonts& fonts, const QRect& screen);

} // namespace orv
