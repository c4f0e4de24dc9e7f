#include "VoskEngine.h"

#include "TranslationSettings.h"

using namespace Qt::StringLiterals;

namespace orv {

EngineDescriptor voskEngine() {
    return {
        .id = u"vosk"_s,
        .name = u"Vosk"_s,
        .detailKey = u"settings.engine.vosk.detail"_s,
        .hintKey = u"settings.engine.vosk.hint"_s,
        .icon = u"server.rack"_s,
        .infoText =
            u"STT: Vosk (lokaler Server) · Translation: Mistral (Backend) · Backend erforderlich"_s,
        .translator = u"Mistral"_s,
        .fields = {{.kind = EngineField::Kind::Text,
                    .text = &TranslationSettings::voskHost,
                    .labelKey = u"settings.vrc.host"_s,
                    .message = u"engineHost"_s},
                   {.kind = EngineField::Kind::Port,
                    .number = &TranslationSettings::voskPort,
                    .labelKey = u"settings.vrc.port"_s,
                    .message = u"enginePort"_s}}};
}

} // namespace orv
