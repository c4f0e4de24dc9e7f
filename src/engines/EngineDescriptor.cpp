#include "EngineDescriptor.h"

#include "TranslationSettings.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

EngineField translationKeyField() {
    return {.kind = EngineField::Kind::Key,
            .text = &TranslationSettings::googleApiKey,
            .product = u"Google Translate"_s};
}

const EngineField* EngineDescriptor::missingCredential(const TranslationSettings& settings) const {
    const auto missing = std::ranges::find_if(fields, [&](const EngineField& field) {
        return field.isRequired && (settings.*field.text).get().isEmpty();
    });
    return missing == fields.end() ? nullptr : &*missing;
}

} // namespace orv
