#pragma once

#include <QString>

namespace orv {

/// One choice of a list: what is stored and what people read.
struct FieldEntry {
    QString id;
    QString text;

    friend bool operator==(const FieldEntry&, const FieldEntry&) = default;
};

} // namespace orv
