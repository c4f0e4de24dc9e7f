#include "StringTable.h"

namespace orv {

StringTable::StringTable(std::span<const TextEntry> entries) {
    keys_.reserve(static_cast<qsizetype>(entries.size()));
    texts_.reserve(static_cast<qsizetype>(entries.size()));
    for (const TextEntry& entry : entries) {
        const QString key = entry.key.toString();
        keys_.append(key);
        if (!texts_.contains(key)) {
            texts_.insert(key, entry.text.toString());
        }
    }
}

std::optional<QString> StringTable::text(const QString& key) const {
    const auto found = texts_.constFind(key);
    return found == texts_.constEnd() ? std::nullopt : std::optional(*found);
}

} // namespace orv
