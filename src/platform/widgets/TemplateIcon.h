#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

namespace orv {

/// The colour in which a symbol is seen on `background`: nearly black or nearly white.
QColor inkOn(const QColor& background);

/// A one-coloured symbol, drawn by the shape of the SVG file at `path`, in `ink` with a thin seam
/// of the opposite brightness, so that it can be made out on any ground: a desktop does not tell
/// how bright its tray is. In the sizes that trays use.
QIcon templateIcon(const QString& path, const QColor& ink);

} // namespace orv
