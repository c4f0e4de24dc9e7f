#pragma once

#include <QString>

class QIcon;
class QLabel;
class QPushButton;
class QWidget;

namespace orv {

// Small helpers for the pieces of the control panel, so that all of them look alike.

/// Distance between the lines of a group, and between a label and its field, in pixels.
inline constexpr int panelSpacing = 8;

/// A label that names a group of controls.
QLabel* makeHeading(QWidget* parent);

/// A label in the quieter colour for hints; breaks its lines.
QLabel* makeHint(QWidget* parent);

/// A button with room round its text.
QPushButton* makeButton(QWidget* parent);

/// One of the panel's own pictures: "play", "stop", "app" or "warning".
QIcon panelIcon(const QString& name);

/// Shows `text` on `label` and makes it the name of `field`, on screen and for assistive programs.
void nameField(QLabel* label, QWidget* field, const QString& text);

} // namespace orv
