#pragma once

#include <QColor>

namespace orv {

class DefaultsStore;

/// The user's choices for the look of the subtitles, in the window and on the page. A key that was
/// never written takes its default.
class OverlayDefaults {
  public:
    /// Whether a border is drawn.
    static bool borderOn(const DefaultsStore& store);

    /// Opacity of the background, 0 to 1; a stored value beyond these is taken as the nearer one.
    static double opacityValue(const DefaultsStore& store);

    // Opaque colours. What is no colour of six hexadecimal digits takes the default.
    static QColor backgroundColor(const DefaultsStore& store);
    static QColor borderColor(const DefaultsStore& store);
    static QColor textColor(const DefaultsStore& store);
};

} // namespace orv
