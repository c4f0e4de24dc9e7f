#pragma once

class QAbstractButton;
class QWidget;

namespace orv {

/// What a button is for; decides how the style draws it.
enum class ButtonKind {
    Plain,
    Primary, ///< The one thing to do in a window; at most one is on screen.
    Danger,  ///< Ends or removes something.
    Quiet,   ///< No ground of its own until the mouse is over it.
    Segment, ///< One of a `SegmentedControl`; checkable.
};

/// Also gives the button the font of its kind.
void setButtonKind(QAbstractButton& button, ButtonKind kind);

/// `Plain` for null and for whatever was given no kind.
ButtonKind buttonKind(const QWidget* button);

} // namespace orv
