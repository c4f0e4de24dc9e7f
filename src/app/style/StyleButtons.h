#pragma once

#include "ButtonKind.h"
#include "Theme.h"

#include <QSize>

class QPainter;
class QRect;
class QStyleOption;
class QStyleOptionButton;
class QStyleOptionToolButton;

namespace orv {

// Buttons, switches and radio buttons.

/// Side of the square icon in a button, logical pixels.
inline constexpr int buttonIconSide = 18;

/// Height of buttons and fields with text in the given font, logical pixels.
int controlHeight(const QFontMetrics& metrics);

QSize switchSize();

/// What a push button with its text and icon asks for.
QSize pushButtonSize(const QStyleOptionButton& option);

void drawPushButton(const Theme& theme, const QStyleOptionButton& option, ButtonKind kind,
                    QPainter* painter);
void drawPushButtonLabel(const Theme& theme, const QStyleOptionButton& option, ButtonKind kind,
                         QPainter* painter);
void drawToolButton(const Theme& theme, const QStyleOptionToolButton& option, ButtonKind kind,
                    QPainter* painter);
void drawSwitch(const Theme& theme, const QStyleOption& option, QPainter* painter);
void drawSwitchLabel(const Theme& theme, const QStyleOptionButton& option, QPainter* painter);
void drawRadio(const Theme& theme, const QStyleOption& option, QPainter* painter);

} // namespace orv
