#pragma once

#include <QString>

namespace orv {

/// What was said, and its translation: what the program is there for. Either may be empty.
struct Result {
    QString original;    ///< In the language that was spoken.
    QString translation; ///< In the language that was asked for.

    friend bool operator==(const Result&, const Result&) = default;
};

} // namespace orv
