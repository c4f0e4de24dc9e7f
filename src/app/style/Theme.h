#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QPalette>

class QWidget;

namespace orv {

/// How something is meant; decides the colour of its text.
enum class Tone { Plain, Quiet, Accent, Good, Busy, Error };

/// Distances, in logical pixels. Nothing in a window is spaced by another number.
namespace space {
inline constexpr int tiny = 4;    ///< Between a label and its field, between parts of one control.
inline constexpr int small = 8;   ///< Between controls that belong together.
inline constexpr int medium = 12; ///< Within a card, between cards.
inline constexpr int large = 16;  ///< Round the content of a window.
inline constexpr int huge = 24;   ///< Between groups that have nothing to do with each other.
} // namespace space

/// Corners, in logical pixels.
namespace radius {
inline constexpr int item = 4;    ///< Rows of lists and menus.
inline constexpr int control = 6; ///< Buttons and fields.
inline constexpr int tall = 8;    ///< The main button of a window.
inline constexpr int card = 10;   ///< Cards and notices.
} // namespace radius

/// Two colours that meet on screen as text and ground.
struct TextPair {
    const char* name; ///< For whoever checks the pair.
    QColor text;
    QColor ground;
};

/// The colours of the program, light or dark. There is one accent; everything else is grey but for
/// the colours of what is well, busy or wrong.
struct Theme {
    bool dark = false;

    QColor window; ///< Ground of windows.
    QColor card;   ///< Ground of cards.
    QColor field;  ///< Ground of fields and lists.
    QColor cardBorder;
    QColor control; ///< Ground of plain buttons, at rest, under the mouse, and pressed.
    QColor controlHover;
    QColor controlPressed;
    QColor controlBorder;
    QColor track;     ///< Ground of meters, sliders and segmented buttons.
    QColor segment;   ///< The chosen segment.
    QColor switchOff; ///< Ground of a switch that is off.
    QColor knob;      ///< Of switches and sliders.

    QColor text;
    QColor quietText;
    QColor disabledText;

    QColor accent; ///< Ground of the main button and of everything that is on.
    QColor accentHover;
    QColor accentPressed;
    QColor onAccent; ///< Text on `accent`.
    QColor accentText;
    QColor accentSoft; ///< Ground of chosen rows.

    QColor danger; ///< Ground of a button that ends or removes something.
    QColor dangerBorder;
    QColor dangerHover;
    QColor dangerPressed;
    QColor onDanger;

    QColor good; ///< Texts and marks.
    QColor busy;
    QColor error;
    QColor notice; ///< Ground of notices.
    QColor noticeBorder;
    QColor tip; ///< Ground of tool tips.
    QColor onTip;

    static Theme light();
    static Theme darkened();

    QColor toneColor(Tone tone) const;

    /// The same colours for what Qt draws itself. `PlaceholderText` is the quieter text.
    QPalette palette() const;

    /// Every text that is drawn on a ground somewhere. Each pair keeps a contrast of 4.5:1.
    QList<TextPair> textPairs() const;
};

/// The theme that `widget` is drawn in. With a foreign style: the one that suits its palette.
const Theme& themeOf(const QWidget& widget);

/// The larger of the two text sizes; `body` is the smaller one, which is the desktop's own, in
/// points or in pixels.
QFont largeFont(const QFont& body);

/// The larger size, heavier.
QFont titleFont(const QFont& body);

/// The body size, heavier: headings and the main button.
QFont strongFont(const QFont& body);

} // namespace orv
