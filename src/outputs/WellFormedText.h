#pragma once

#include <QString>

namespace orv {

/// `text` with the replacement character in place of each half of a surrogate pair that has lost
/// its partner, so that it can be encoded as UTF-8. (Qt would put question marks.)
QString wellFormedText(QString text);

} // namespace orv
