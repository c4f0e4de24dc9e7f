#include "StringTable.h"

namespace orv {

std::span<const TextEntry> germanTexts() {
    static constexpr TextEntry entries[] = {
        {u"app.name.short", u"ORV"},
    };
    return entries;
}

} // namespace orv
