#pragma once

#include <QString>

namespace orv {

/// What the services call one of the languages that can be chosen. An empty name: the service lacks
/// it. Collected from the services' own lists in November 2026.
struct ServiceLanguage {
    const char16_t* code;            ///< As in the settings.
    const char16_t* azureLocale;     ///< Of Azure's recognition.
    const char16_t* googleLocale;    ///< Of Google's recognition, version 1.
    const char16_t* azureTranslator; ///< Of Azure's translation of texts.
    const char16_t* deepgram; ///< Of Deepgram, with the models below; the code where none has it.
    bool isInNova2;
    bool isInNova3;
    bool isInNova3Multi; ///< The model that detects languages and takes no fixed one.
};

/// What is known of a language; null for "auto" and for codes that are none.
const ServiceLanguage* serviceLanguage(const QString& code);

} // namespace orv
