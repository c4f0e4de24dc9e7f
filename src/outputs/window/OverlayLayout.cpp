#include "OverlayLayout.h"

#include <QFontDatabase>

#include <algorithm>
#include <array>

namespace orv {

namespace {

constexpr std::array letterSteps = {100, 91, 82, 73, 64}; // Percent: 22, 20, 18, 16, 14.
constexpr int originalPixels = 14;
constexpr int smallestOriginalPixels = 11;
constexpr int translationPixels = 22;

/// Height that the lines and the gap between them may take.
int roomForText(const QRect& screen) {
    using Lengths = OverlayLengths;
    return screen.height() - Lengths::bottomDistance - Lengths::topDistance -
           2 * Lengths::verticalPadding;
}

int textHeight(const OverlayLayout& layout) {
    const int original = layout.original.height();
    return original + (original > 0 ? OverlayLengths::lineGap : 0) + layout.translation.height();
}

OverlayLayout wrapped(const QString& original, const QString& translation,
                      const SubtitleFonts& fonts, double width) {
    OverlayLayout layout;
    if (!original.isEmpty()) {
        layout.original = SubtitleText(original, fonts.original, width);
    }
    layout.translation = SubtitleText(translation, fonts.translation, width);
    return layout;
}

/// Keeps the ends of both lines within `room`.
void shorten(OverlayLayout& layout, const SubtitleFonts& fonts, double width, int room) {
    if (layout.original.height() > room / 3) {
        layout.original =
            SubtitleText::endOf(layout.original.text(), fonts.original, width, room / 3.0);
    }
    const int rest = room - textHeight(layout) + layout.translation.height();
    layout.translation =
        SubtitleText::endOf(layout.translation.text(), fonts.translation, width, rest);
}

} // namespace

SubtitleFonts SubtitleFonts::system() {
    const QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    SubtitleFonts fonts{.original = font, .translation = font};
    fonts.original.setPixelSize(originalPixels);
    fonts.original.setWeight(QFont::Normal);
    fonts.translation.setPixelSize(translationPixels);
    fonts.translation.setWeight(QFont::DemiBold);
    return fonts;
}

SubtitleFonts SubtitleFonts::scaled(int percent) const {
    const auto size = [percent](const QFont& font) {
        return (font.pixelSize() * percent + 50) / 100;
    };
    SubtitleFonts fonts = *this;
    fonts.original.setPixelSize(std::max(size(original), smallestOriginalPixels));
    fonts.translation.setPixelSize(size(translation));
    return fonts;
}

OverlayLayout layoutForContent(const QString& original, const QString& translation,
                               const SubtitleFonts& fonts, const QRect& screen) {
    const QString small = readableText(original);
    const QString large = readableText(translation);
    const int width = textWidthOn(screen);
    const int room = roomForText(screen);

    OverlayLayout layout;
    SubtitleFonts used;
    for (const int percent : letterSteps) {
        used = fonts.scaled(percent);
        layout = wrapped(small, large, used, width);
        if (textHeight(layout) <= room) {
            break;
        }
    }
    if (textHeight(layout) > room) {
        shorten(layout, used, width, room);
    }
    layout.frames = overlayFrames(layout.original.height(), layout.translation.height(), screen);
    return layout;
}

} // namespace orv
