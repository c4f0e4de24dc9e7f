#include "EngineDescriptor.h"

#include "GoogleCloudMessages.h"
#include "TranslationMessages.h"
#include "TranslationSettings.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

KeyQuestion translationKeyQuestion(const ServiceEndpoints& endpoints, const QString& apiKey) {
    return {.call = {.url = translationLanguagesUrl(endpoints.at(translationHost), apiKey)},
            .judge = googleKeyFault};
}

EngineField translationKeyField() {
    return {.kind = EngineField::Kind::Key,
            .text = &TranslationSettings::googleApiKey,
            .product = u"Google Translate"_s,
            .questions = [](const ServiceEndpoints& endpoints, const CloudEngineConfig& config) {
                return std::vector{translationKeyQuestion(endpoints, config.apiKey)};
            }};
}

CloudEngineConfig EngineDescriptor::configFrom(const TranslationSettings& settings) const {
    CloudEngineConfig config;
    for (const EngineField& field : fields) {
        if (field.config != nullptr) {
            config.*field.config = (settings.*field.text).get();
        }
    }
    return config;
}

const EngineField* EngineDescriptor::missingCredential(const TranslationSettings& settings) const {
    const auto missing = std::ranges::find_if(fields, [&](const EngineField& field) {
        return field.isRequired && (settings.*field.text).get().isEmpty();
    });
    return missing == fields.end() ? nullptr : &*missing;
}

} // namespace orv
