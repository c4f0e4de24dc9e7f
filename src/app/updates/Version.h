#pragma once

#include <QStringView>

namespace orv {

/// Whether release `candidate` is newer than release `than`. The texts are split at dots; pieces
/// that are not whole decimal numbers do not count ("4.2-beta.1" is 4, 1), missing pieces count as
/// 0 ("4.2" equals "4.2.0"), and the first difference decides, as numbers ("4.10" is newer than
/// "4.9").
bool isNewerVersion(QStringView candidate, QStringView than);

} // namespace orv
