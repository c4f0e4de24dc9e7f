#include "FieldEntry.h"

#include <algorithm>

namespace orv {

void keepChosen(QList<FieldEntry>& entries, const QString& id) {
    const auto isIt = [&id](const FieldEntry& entry) { return entry.id == id; };
    if (std::ranges::none_of(entries, isIt)) {
        entries.append({.id = id, .text = id});
    }
}

} // namespace orv
