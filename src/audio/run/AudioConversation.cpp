// What is said to and by the backend or the direct engine of a run.

#include "AudioManagerPrivate.h"
#include "DirectEngineSetup.h"
#include "EngineCatalogue.h"
#include "Log.h"
#include "TranslationSettings.h"

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

void AudioManager::Private::sendConfig(const RunConfiguration& configuration) {
    if (!link_ || !chunker.isConnected()) {
        pendingConfig = configuration;
        logLine(u"⚠️ WebSocket nicht verbunden, Config wird später gesendet");
        return;
    }
    configuration_ = configuration;
    const EngineChoice engine = EngineChoice::fromSettings(env.settings, env.engines);
    if (engine.lacksCredentials) {
        tellMissingCredentials(engine.sttEngine);
    }
    const QString languages = configuration.sourceLang + u" → "_s + configuration.targetLang;
    sender_.sendMessage(configMessage(configuration, engine), [languages](const QString& error) {
        if (error.isEmpty()) {
            logLine(u"✓ Config gesendet: "_s + languages);
        } else {
            logLine(u"❌ Config send error: "_s + error);
        }
    });
}

void AudioManager::Private::tellMissingCredentials(const QString& id) {
    logLine(u"❌ Credentials fehlen für "_s + id + u" — Whisper-Fallback"_s);
    const EngineDescriptor* engine = env.engines.find(id);
    if (engine == nullptr || !env.showNotice) {
        return;
    }
    target_.handle().post([this, notice = missingCredentialsNotice(*engine, env.settings)] {
        env.showNotice(notice);
    });
}

std::optional<RunConfiguration> AudioManager::Private::nextConfiguration() const {
    return pendingConfig ? pendingConfig : configuration_;
}

BackendMessageHandler::Actions AudioManager::Private::messageActions() {
    return {
        .translatesOnClient =
            [this] {
                const EngineDescriptor* engine = env.engines.find(env.settings.sttEngine.get());
                return engine != nullptr && engine->translatesOnClient &&
                       configuration().sourceLang != configuration().targetLang;
            },
        .translateOnClient = [this](const QString& original) { translateOnClient(original); },
        .publishResult = std::bind_front(&Private::publishResult, this),
        .publishStatus = [this](const StatusMessage& status) { publishStatus(status); },
        .showNotice =
            [this](const AudioNotice& notice) {
                if (env.showNotice) {
                    env.showNotice(notice);
                }
            },
        .flushed =
            [this] {
                if (gracefulStop_) {
                    gracefulStop_->flushed();
                }
            },
    };
}

void AudioManager::Private::publishResult(const Result& result) {
    currentResult = result;
    Q_EMIT q.resultChanged();
    Q_EMIT q.resultArrived(result);
}

void AudioManager::Private::translateOnClient(const QString& original) {
    const RunConfiguration run = configuration();
    logLine(u"📥 Client-side Google Translate: "_s + run.sourceLang + u" → "_s + run.targetLang);
    if (!translation_) {
        translation_ = std::make_unique<ClientTranslation>(
            env.endpoints, [this](const Result& result) { publishResult(result); });
    }
    translation_->translate(original, run.targetLang, env.settings.googleApiKey.get());
}

void AudioManager::Private::publishStatus(const StatusMessage& status) {
    backendStatus = status.message;
    isModelLoading = status.status == u"model_loading";
    if (status.status == u"error") {
        hasEngineError = true;
    } else if (status.status == u"engine_loading" || status.status == u"engine" ||
               status.status == u"model_loaded") {
        hasEngineError = false;
    }
    Q_EMIT q.statusChanged();
}

void AudioManager::Private::startDirectEngine() {
    const RunConfiguration run = nextConfiguration().value_or(RunConfiguration());
    directEngine_ = setupDirectEngine(
        env.settings,
        {.engines = env.engines,
         .endpoints = env.endpoints,
         .timings = env.engineTimings,
         .transcriptFolder = env.transcriptFolder},
        run,
        {.result = std::bind_front(&Private::publishResult, this),
         .status = [this](const QString& status,
                          const QString& message) { publishDirectEngineStatus(status, message); },
         .connectFailed = [this] { abandonDirectEngine(); }});
    if (!directEngine_) {
        return;
    }
    sender_.setPcmSink(
        [this, session = directEngine_.get(), target = target_.handle()](const QByteArray& pcm) {
            target.post([this, session, pcm] {
                if (directEngine_.get() == session || endedDirectEngine_.get() == session) {
                    session->sendAudio(pcm);
                }
            });
        });
    if (directEngine_->isStreaming()) {
        ingest.setStreamTap(
            [this](std::span<const float> samples) { sender_.streamBuffer(samples); });
    } else {
        chunker.setRoute(ChunkRoute::DirectEngine);
    }
    directEngine_->connect(directEngineConfig(env.settings, env.engines, run));
}

void AudioManager::Private::abandonDirectEngine() {
    ingest.endStreaming();
    chunker.setRoute(ChunkRoute::Backend);
    sender_.endPcmSink();
    directEngine_.reset();
}

void AudioManager::Private::publishDirectEngineStatus(const QString& status,
                                                      const QString& message) {
    backendStatus = message;
    if (status == u"error") {
        hasEngineError = true;
    } else if (status == u"connected") {
        hasEngineError = false;
    }
    Q_EMIT q.statusChanged();
}

} // namespace orv
