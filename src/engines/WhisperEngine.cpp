#include "WhisperEngine.h"

#include "SettingsList.h"

using namespace Qt::StringLiterals;

namespace orv {

EngineDescriptor whisperEngine() {
    return {.id = defaultSttEngine,
            .nameKey = u"settings.engine.whisper.name"_s,
            .detailKey = u"settings.engine.whisper.detail"_s,
            .icon = u"waveform.badge.mic"_s,
            .infoText =
                u"STT: Whisper (lokal) · Translation: Mistral (lokal) · Backend erforderlich"_s,
            .translator = u"Mistral"_s};
}

} // namespace orv
