// What is said to and by the speech server or the direct engine of a run.

#include "AudioEnvironment.h"
#include "AudioRun.h"
#include "DirectEngineSetup.h"
#include "EngineCatalogue.h"
#include "Log.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"

#include <cstdint>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

void AudioRun::sendConfig() {
    ORV_ON_MAIN();
    const RunConfiguration run = configuration();
    const EngineChoice engine =
        EngineChoice::fromSettings(environment_.settings, environment_.engines);
    if (engine.lacksCredentials) {
        tellMissingCredentials(engine.sttEngine);
    }
    const QString languages = run.sourceLang + u" → "_s + run.targetLang;
    sound_.sender.sendMessage(configMessage(run, engine), [languages](const QString& error) {
        if (error.isEmpty()) {
            logLine(u"✓ Config gesendet: "_s + languages);
        } else {
            logLine(u"❌ Config send error: "_s + error);
        }
    });
}

void AudioRun::tellMissingCredentials(const QString& id) {
    logLine(u"❌ Credentials fehlen für "_s + id + u" — Whisper-Fallback"_s);
    if (const EngineDescriptor* engine = environment_.engines.find(id)) {
        Q_EMIT noticeRaised(missingCredentialsNotice(*engine, environment_.settings));
    }
}

void AudioRun::receiveResult(const Result& result) {
    ORV_ON_MAIN();
    noteResult();
    if (!result.original.isEmpty()) {
        logLine(u"📥 Original: "_s + result.original);
    }
    if (!result.translation.isEmpty()) {
        logLine(u"📥 Übersetzung: "_s + result.translation);
        Q_EMIT resultArrived(result);
    } else if (translatesOnClient()) {
        translateOnClient(result.original);
    }
}

bool AudioRun::translatesOnClient() const {
    const EngineDescriptor* engine =
        environment_.engines.find(environment_.settings.sttEngine.get());
    return engine != nullptr && engine->translatesOnClient &&
           configuration().sourceLang != configuration().targetLang;
}

void AudioRun::translateOnClient(const QString& original) {
    const RunConfiguration run = configuration();
    logLine(u"📥 Client-side Google Translate: "_s + run.sourceLang + u" → "_s + run.targetLang);
    if (!translation_) {
        translation_ = std::make_unique<ClientTranslation>(environment_.endpoints);
        connect(translation_.get(), &ClientTranslation::translated, this,
                [this](const Result& result) {
                    Q_EMIT serviceServed(result);
                    Q_EMIT resultArrived(result);
                });
        connect(translation_.get(), &ClientTranslation::faultArrived, this,
                &AudioRun::backendStatusArrived);
        connect(translation_.get(), &ClientTranslation::idle, this, &AudioRun::endWhenDone);
    }
    translation_->translate(original, run.targetLang, environment_.settings.googleApiKey.get());
}

void AudioRun::receiveStatus(const StatusMessage& status) {
    ORV_ON_MAIN();
    if (status.status == u"backend_version") {
        receiveVersion(status.version.value_or(0));
        return;
    }
    logLine(u"📋 Backend Status: ["_s + status.status + u"] "_s + status.message);
    noteEngine(status.status, status.message, RunTrouble::EngineRefused);
    Q_EMIT backendStatusArrived(status);
}

void AudioRun::receiveVersion(std::int64_t version) {
    if (version >= requiredBackendVersion) {
        logLine(u"✓ Backend-Version OK: v"_s + QString::number(version));
        return;
    }
    logLine(u"⚠️ Backend veraltet: v"_s + QString::number(version) + u", erwartet v"_s +
            QString::number(requiredBackendVersion));
    Q_EMIT noticeRaised({AudioNotice::Kind::BackendOutdated, QString::number(version)});
}

void AudioRun::receiveFlushed() {
    ORV_ON_MAIN();
    logLine(u"✓ Flush-Bestätigung vom Backend empfangen");
    if (flushCompletionHandler_ != nullptr) {
        flushCompletionHandler_->flushed();
    }
}

void AudioRun::startDirectEngine() {
    directEngine_ = setupDirectEngine(environment_, configuration());
    useDirectEngine_ = directEngine_ != nullptr;
    if (!useDirectEngine_) {
        return;
    }
    DirectEngineSession* const session = directEngine_.get();
    const RunTrouble onError =
        session->isStreaming() ? RunTrouble::EngineLost : RunTrouble::EngineRefused;
    connect(session, &DirectEngineSession::resultArrived, this, [this](const Result& result) {
        noteResult();
        watch_.engineServes();
        Q_EMIT serviceServed(result);
        Q_EMIT resultArrived(result);
    });
    connect(session, &DirectEngineSession::statusArrived, this,
            [this, onError](const QString& status, const QString& message) {
                noteEngine(status, message, onError);
                Q_EMIT engineStatusArrived(status, message);
            });
    connect(session, &DirectEngineSession::faultArrived, this, &AudioRun::receiveFault);
    connect(session, &DirectEngineSession::blockAccepted, this, &AudioRun::receiveProcessed);
    connect(session, &DirectEngineSession::openFailed, this, &AudioRun::abandonDirectEngine);
    connect(session, &DirectEngineSession::drained, this, [this] {
        directEngine_.reset();
        endWhenDone();
    });
    sound_.sender.setPcmSink(session->pcmSink());
    if (session->isStreaming()) {
        sound_.ingest.setStreamTap([&sender = sound_.sender](std::span<const float> samples) {
            sender.streamBuffer(samples);
        });
    } else {
        sound_.chunker.setRoute(ChunkRoute::DirectEngine);
    }
    session->open(directEngineConfig(environment_, configuration()));
}

void AudioRun::receiveFault(const StatusMessage& status) {
    ORV_ON_MAIN();
    // A streaming engine's end is told by itself.
    if (!directEngine_->isStreaming()) {
        noteEngine(status.status, status.message, RunTrouble::EngineRefused);
    }
    Q_EMIT backendStatusArrived(status);
}

void AudioRun::finishDirectEngine() {
    if (std::exchange(useDirectEngine_, false)) {
        directEngine_->finish();
        sound_.chunker.setRoute(ChunkRoute::Backend);
        logLine(u"🔌 Direct Engine disconnected");
    }
}

void AudioRun::abandonDirectEngine() {
    ORV_ON_MAIN();
    useDirectEngine_ = false;
    sound_.ingest.endStreaming();
    sound_.chunker.setRoute(ChunkRoute::Backend);
    sound_.sender.endPcmSink();
    directEngine_.reset();
    endWhenDone();
}

} // namespace orv
