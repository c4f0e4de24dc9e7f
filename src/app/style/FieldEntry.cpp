#include "FieldEntry.h"

#include <algorithm>

namespace orv {

void keepChosen(QList<FieldEntry>& entries, const QString& id, const QString& name) {
    const auto isIt = [&id](const FieldEntry& entry) { return entry.id == id; };
    if (std::ranges::none_of(entries, isIt)) {
        entries.append({.id = id, .text = name.isEmpty() ? id : name});
    }
}

} // namespace orv
