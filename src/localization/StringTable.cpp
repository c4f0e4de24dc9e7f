#include "StringTable.h"

namespace orv {

StringTable::StringTable(std::initializer_list<std::span<const TextEntry>> files) {
    for (const auto& entries : files) {
        add(entries);
    }
}

void StringTable::add(std::span<const TextEntry> entries) {
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
