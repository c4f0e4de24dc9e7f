#include "DirectEngineSetup.h"

#include "DirectEngineTranscriptWriter.h"
#include "Log.h"
#include "TranslationSettings.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

bool runsOnBackend(const QString& engine) {
    return engine == u"whisper" || engine == u"vosk" || engine == u"google_grpc";
}

/// Engines that do not translate get the user's key for Google's translation.
void handOverTranslationKey(CloudSTTEngine& engine, const QString& key) {
    if (engine.supportsTranslation() || key.isEmpty()) {
        return;
    }
    engine.setTranslationKey(key);
    const QString product = engine.id() == u"deepgram" ? u"Deepgram"_s : u"AssemblyAI"_s;
    logLine(u"🔌 "_s + product + u": Google Translate Key gesetzt für Übersetzung"_s);
}

void logChosenEngine(const CloudSTTEngine& engine) {
    if (engine.id() == u"deepgram") {
        return; // Told by its connection.
    }
    logLine(u"🔌 Direct Engine: "_s + engine.name() +
            (engine.isStreaming() ? u" (streaming)"_s : QString()));
}

} // namespace

std::unique_ptr<DirectEngineSession> setupDirectEngine(const TranslationSettings& settings,
                                                       const CloudEngineFactory& factory,
                                                       const RunConfiguration& run,
                                                       const QString& transcriptFolder,
                                                       DirectEngineSession::Handlers handlers) {
    const QString id = settings.sttEngine.get();
    logLine(u"🔌 setupDirectEngine: engine="_s + id);
    if (runsOnBackend(id)) {
        return nullptr;
    }
    std::shared_ptr<CloudSTTEngine> engine = factory ? factory(id) : nullptr;
    if (!engine) {
        logLine(u"🔌 Direct Engine: NONE — unknown engine "_s + id);
        return nullptr;
    }
    handOverTranslationKey(*engine, settings.googleApiKey.get());
    logChosenEngine(*engine);
    std::shared_ptr<DirectEngineTranscriptWriter> writer;
    if (settings.saveTranscript.get()) {
        writer =
            DirectEngineTranscriptWriter::open(transcriptFolder, run.sourceLang, run.targetLang);
    }
    return std::make_unique<DirectEngineSession>(std::move(engine), std::move(writer),
                                                 std::move(handlers));
}

CloudEngineConfig directEngineConfig(const TranslationSettings& settings,
                                     const RunConfiguration& run) {
    const EngineChoice choice = EngineChoice::fromSettings(settings);
    return {
        .sourceLang = run.sourceLang,
        .targetLang = run.targetLang,
        .apiKey = choice.apiKey,
        .region = choice.sttEngine == u"azure" ? choice.region : QString(),
        .sampleRate = 48000,
    };
}

} // namespace orv
