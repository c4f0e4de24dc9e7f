#pragma once

#include "UILanguage.h"

#include <QString>

namespace orv {

// Quantities as people write them in each language. What belongs together stays on one line.

/// "85%" in English and Italian; the others keep a space before the sign.
QString percentText(UILanguage language, int percent);

/// About how large a file is, in megabytes of a million bytes: "75 MB", "1.5 GB", in French
/// "1,5 Go". From a thousand on in gigabytes with one decimal.
QString fileSizeText(UILanguage language, int megabytes);

} // namespace orv
