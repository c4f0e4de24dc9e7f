#pragma once

#include <QIcon>
#include <QString>

namespace orv {

/// One of the program's own one-coloured symbols, sharp in every size: "play.circle.fill",
/// "stop.circle.fill", "gear", "power", "refresh", "arrow.right", "eye", "eye.slash", "copy",
/// "folder", "trash", "download", "search", "info", "warning", "close". The style draws it in the
/// colour of the text beside it.
QIcon symbol(const QString& name);

/// The program's picture, in its own colours.
QIcon appPicture();

} // namespace orv
