#pragma once

#include "OverlayAppearance.h"

#include <QByteArray>

namespace orv {

/// The HTML document that a browser source shows: a transparent page which asks for "/text" every
/// 300 ms and shows the latest result as plain text in a box at the bottom until nothing has
/// changed for 8 s. It begins with `appearance` and follows the one that comes with each answer.
QByteArray overlayPage(const OverlayAppearance& appearance);

} // namespace orv
