#include "DirectEngineSetup.h"

#include "AudioEnvironment.h"
#include "DirectEngineTranscriptWriter.h"
#include "EngineCatalogue.h"
#include "Log.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Engines get the user's key for Google's translation, for what they do not translate themselves.
void handOverTranslationKey(CloudSTTEngine& engine, const QString& product, const QString& key) {
    if (key.isEmpty()) {
        return;
    }
    engine.setTranslationKey(key);
    if (!engine.supportsTranslation()) {
        logLine(u"🔌 "_s + product + u": Google Translate Key gesetzt für Übersetzung"_s);
    }
}

void logChosenEngine(const EngineDescriptor& chosen, const CloudSTTEngine& engine) {
    if (chosen.isAnnounced) {
        logLine(u"🔌 Direct Engine: "_s + engine.name() +
                (engine.isStreaming() ? u" (streaming)"_s : QString()));
    }
}

} // namespace

std::unique_ptr<DirectEngineSession> setupDirectEngine(const AudioEnvironment& environment,
                                                       const RunConfiguration& run) {
    ORV_ON_MAIN();
    const TranslationSettings& settings = environment.settings;
    const QString id = settings.sttEngine.get();
    logLine(u"🔌 setupDirectEngine: engine="_s + id);
    const EngineDescriptor* chosen = environment.engines.find(id);
    if (chosen == nullptr) {
        logLine(u"🔌 Direct Engine: NONE — unknown engine "_s + id);
        return nullptr;
    }
    if (!chosen->make) {
        return nullptr; // The backend recognises.
    }
    std::shared_ptr<CloudSTTEngine> engine =
        chosen->make(environment.endpoints, environment.engineTimings);
    handOverTranslationKey(*engine, chosen->name, settings.googleApiKey.get());
    logChosenEngine(*chosen, *engine);
    std::shared_ptr<DirectEngineTranscriptWriter> directTranscriptWriter;
    if (settings.saveTranscript.get()) {
        directTranscriptWriter = DirectEngineTranscriptWriter::open(environment.transcriptFolder,
                                                                    run.sourceLang, run.targetLang);
    }
    return std::make_unique<DirectEngineSession>(std::move(engine), chosen->productName(),
                                                 environment.engineTimings.oldestSpeech,
                                                 std::move(directTranscriptWriter));
}

CloudEngineConfig directEngineConfig(const AudioEnvironment& environment,
                                     const RunConfiguration& run) {
    ORV_ON_MAIN();
    const TranslationSettings& settings = environment.settings;
    CloudEngineConfig config;
    if (const EngineDescriptor* chosen = environment.engines.find(settings.sttEngine.get())) {
        config = chosen->configFrom(settings);
    }
    config.sourceLang = run.sourceLang;
    config.targetLang = run.targetLang;
    config.sampleRate = 48000;
    return config;
}

} // namespace orv
