#include "StringTable.h"

namespace orv {

std::span<const TextEntry> frenchTexts() {
    static constexpr TextEntry entries[] = {
        {u"app.name.short", u"ORV"},
    };
    return entries;
}

} // namespace orv
