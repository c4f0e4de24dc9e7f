#pragma once

#include <QString>

namespace orv {

/// Release notes as an alert can show them: of long ones only the beginning, 20 lines or 1,200
/// characters of it, with an ellipsis, so that the alert's buttons stay on the screen.
QString alertNotes(const QString& notes);

} // namespace orv
