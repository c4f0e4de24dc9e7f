// What is said to and by the backend or the direct engine of a run.

#include "AudioManagerPrivate.h"
#include "DirectEngineSetup.h"
#include "Log.h"
#include "NotificationCentre.h"
#include "TranslationSettings.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QCoro::Task<> translateAndTell(TranslationClient* client, QString original, QString targetLang,
                               QString apiKey, std::function<void(QString, QString)> tell) {
    const QString translation = co_await client->googleTranslateText(original, targetLang, apiKey);
    tell(original, translation);
}

} // namespace

void AudioManager::Private::sendConfig(const RunConfiguration& configuration) {
    if (!link_ || !chunker.isConnected()) {
        pendingConfig = configuration;
        logLine(u"⚠️ WebSocket nicht verbunden, Config wird später gesendet");
        return;
    }
    configuration_ = configuration;
    const EngineChoice engine = EngineChoice::fromSettings(env.settings);
    if (engine.lacksCredentials()) {
        logLine(u"❌ Credentials fehlen für "_s + engine.sttEngine + u" — Whisper-Fallback"_s);
        if (env.showNotice) {
            target_.handle().post([this, notice = missingCredentialsNotice(engine.sttEngine)] {
                env.showNotice(notice);
            });
        }
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

std::optional<RunConfiguration> AudioManager::Private::nextConfiguration() const {
    return pendingConfig ? pendingConfig : configuration_;
}

BackendMessageHandler::Actions AudioManager::Private::messageActions() {
    return {
        .translatesOnClient =
            [this] {
                return env.settings.sttEngine.get() == u"google_grpc" &&
                       configuration().sourceLang != configuration().targetLang;
            },
        .translateOnClient = [this](const QString& original) { translateOnClient(original); },
        .fanOut = [this](const QString& original,
                         const QString& translation) { fanOut(original, translation); },
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

void AudioManager::Private::fanOut(const QString& original, const QString& translation) {
    currentOriginal = original;
    currentTranslation = translation;
    Q_EMIT q.resultChanged();
    env.notifications.post(notifications::showTranslation,
                           {{u"original"_s, original}, {u"translation"_s, translation}});
    if (env.sendToVmix) {
        env.sendToVmix(original, translation);
    }
}

void AudioManager::Private::translateOnClient(const QString& original) {
    const RunConfiguration run = configuration();
    logLine(u"📥 Client-side Google Translate: "_s + run.sourceLang + u" → "_s + run.targetLang);
    if (!translation_) {
        translation_ = std::make_unique<TranslationClient>(env.endpoints);
    }
    translateAndTell(
        translation_.get(), original, run.targetLang, env.settings.googleApiKey.get(),
        [this, target = target_.handle()](const QString& text, const QString& translation) {
            target.post([this, text, translation] { fanOut(text, translation); });
        });
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
        env.settings, env.engineFactory, run, env.transcriptFolder,
        {.result = [this](const QString& original,
                          const QString& translation) { fanOut(original, translation); },
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
    directEngine_->connect(directEngineConfig(env.settings, run));
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
