#include "ConfigMessage.h"

#include "EngineCatalogue.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QString engineApiKey = u"engineApiKey"_s;

QJsonValue valueOf(const EngineField& field, const TranslationSettings& settings) {
    if (field.number != nullptr) {
        return static_cast<qint64>((settings.*field.number).get());
    }
    return (settings.*field.text).get();
}

/// Every message has a key, empty when the engine needs none.
QJsonObject membersOf(const EngineDescriptor* engine, const TranslationSettings& settings) {
    QJsonObject members{{engineApiKey, QString()}};
    if (engine != nullptr) {
        for (const EngineField& field : engine->fields) {
            if (!field.message.isEmpty()) {
                members[field.message] = valueOf(field, settings);
            }
        }
    }
    return members;
}

} // namespace

EngineChoice EngineChoice::fromSettings(const TranslationSettings& settings,
                                        const EngineCatalogue& engines) {
    ORV_ON_MAIN();
    const EngineDescriptor* engine = engines.find(settings.sttEngine.get());
    return {.sttEngine = settings.sttEngine.get(),
            .members = membersOf(engine, settings),
            .translatesOnClient = engine != nullptr && engine->translatesOnClient,
            .lacksCredentials = engine != nullptr && engine->missingCredential(settings) != nullptr,
            .fallback = engines.fallback().id,
            .whisperModel = settings.whisperModel.get()};
}

QByteArray configMessage(const RunConfiguration& run, const EngineChoice& engine) {
    QJsonObject message{
        {u"type"_s, u"config"_s},
        {u"sourceLang"_s, run.sourceLang},
        {u"targetLang"_s, run.targetLang},
        {u"saveTranscript"_s, run.saveTranscript},
        {u"saveSRT"_s, run.saveTranscript},
        {u"showOriginal"_s, run.showOriginal},
        {u"whisperModel"_s, engine.whisperModel},
    };
    if (engine.lacksCredentials) {
        message[u"sttEngine"_s] = engine.fallback;
        message[engineApiKey] = QString();
        return QJsonDocument(message).toJson(QJsonDocument::Compact);
    }
    message[u"sttEngine"_s] = engine.sttEngine;
    // Between equal languages there is nothing to translate; the backend then answers with the
    // text.
    message[u"skipTranslation"_s] = engine.translatesOnClient && run.sourceLang != run.targetLang;
    for (auto member = engine.members.begin(); member != engine.members.end(); ++member) {
        message[member.key()] = member.value();
    }
    return QJsonDocument(message).toJson(QJsonDocument::Compact);
}

AudioNotice missingCredentialsNotice(const EngineDescriptor& engine,
                                     const TranslationSettings& settings) {
    const EngineField* missing = engine.missingCredential(settings);
    if (missing != nullptr && missing->kind == EngineField::Kind::ServiceAccount) {
        return {AudioNotice::Kind::ServiceAccountMissing, {}};
    }
    return {AudioNotice::Kind::ApiKeyMissing, engine.id.left(1).toUpper() + engine.id.mid(1)};
}

} // namespace orv
