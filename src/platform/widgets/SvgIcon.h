#pragma once

#include <QIcon>
#include <QString>

namespace orv {

/// The icon drawn by the SVG file at `path`, in the sizes that desktops use. Rendered here rather
/// than by Qt's icon engine, which is a plug-in that may not be installed.
QIcon svgIcon(const QString& path);

} // namespace orv
