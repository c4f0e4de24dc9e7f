#include "BackendMessages.h"

#include "Pcm16.h"
#include "TranslationSettings.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

bool needsApiKey(const QString& engine) {
    return engine == u"deepgram" || engine == u"assemblyai" || engine == u"google_rest" ||
           engine == u"azure";
}

QString apiKeyOf(const TranslationSettings& settings) {
    const QString engine = settings.sttEngine.get();
    if (engine == u"deepgram") {
        return settings.deepgramApiKey.get();
    }
    if (engine == u"assemblyai") {
        return settings.assemblyaiApiKey.get();
    }
    if (engine == u"google_rest") {
        return settings.googleApiKey.get();
    }
    if (engine == u"azure") {
        return settings.azureApiKey.get();
    }
    return {};
}

/// The client translates what Google's streaming recognition hears; between equal languages there
/// is nothing to translate, and the backend answers with the text itself.
bool translatesOnClient(const RunConfiguration& run, const EngineChoice& engine) {
    return engine.sttEngine == u"google_grpc" && run.sourceLang != run.targetLang;
}

std::optional<std::int64_t> wholeNumber(const QJsonValue& value) {
    constexpr std::int64_t notAnInteger = -1;
    constexpr std::int64_t notAnIntegerEither = -2;
    const std::int64_t number = value.toInteger(notAnInteger);
    if (!value.isDouble() || number != value.toInteger(notAnIntegerEither)) {
        return std::nullopt;
    }
    return number;
}

DownstreamMessage parseStatus(const QJsonObject& object) {
    StatusMessage status;
    status.status = object[u"status"_s].toString();
    status.message = object[u"message"_s].toString();
    if (status.status == u"backend_version") {
        status.version = wholeNumber(object[u"version"_s]);
    }
    return status;
}

} // namespace

EngineChoice EngineChoice::fromSettings(const TranslationSettings& settings) {
    return {
        .sttEngine = settings.sttEngine.get(),
        .whisperModel = settings.whisperModel.get(),
        .apiKey = apiKeyOf(settings),
        .region = settings.azureRegion.get(),
        .serviceAccountPath = settings.googleServiceAccountPath.get(),
        .projectId = settings.googleProjectId.get(),
        .location = settings.googleLocation.get(),
        .host = settings.voskHost.get(),
        .port = settings.voskPort.get(),
    };
}

bool EngineChoice::lacksCredentials() const {
    if (sttEngine == u"google_grpc") {
        return serviceAccountPath.isEmpty();
    }
    return needsApiKey(sttEngine) && apiKey.isEmpty();
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
    if (engine.lacksCredentials()) {
        message[u"sttEngine"_s] = u"whisper"_s;
        message[u"engineApiKey"_s] = QString();
        return QJsonDocument(message).toJson(QJsonDocument::Compact);
    }
    message[u"sttEngine"_s] = engine.sttEngine;
    message[u"engineApiKey"_s] = engine.apiKey;
    message[u"skipTranslation"_s] = translatesOnClient(run, engine);
    if (engine.sttEngine == u"vosk") {
        message[u"engineHost"_s] = engine.host;
        message[u"enginePort"_s] = static_cast<qint64>(engine.port);
    } else if (engine.sttEngine == u"google_grpc") {
        message[u"engineServiceAccountPath"_s] = engine.serviceAccountPath;
        message[u"engineProjectId"_s] = engine.projectId;
        message[u"engineLocation"_s] = engine.location;
    } else if (engine.sttEngine == u"azure") {
        message[u"engineRegion"_s] = engine.region;
    }
    return QJsonDocument(message).toJson(QJsonDocument::Compact);
}

AudioNotice missingCredentialsNotice(const QString& sttEngine) {
    if (sttEngine == u"google_grpc") {
        return {AudioNotice::Kind::ServiceAccountMissing, {}};
    }
    return {AudioNotice::Kind::ApiKeyMissing, sttEngine.left(1).toUpper() + sttEngine.mid(1)};
}

QByteArray audioMessage(std::span<const float> samples, int sampleRate) {
    const QByteArray data = pcm16(samples).toBase64();
    QByteArray message;
    message.reserve(data.size() + 96);
    message.append(R"({"type":"audio","sample_rate":)");
    message.append(QByteArray::number(sampleRate));
    message.append(R"(,"format":"int16","data":")");
    message.append(data);
    message.append(R"("})");
    return message;
}

QByteArray flushMessage() {
    return QByteArrayLiteral(R"({"type":"flush"})");
}

QByteArray stopMessage() {
    return QByteArrayLiteral(R"({"type":"stop"})");
}

DownstreamMessage parseDownstream(const QByteArray& utf8) {
    const QJsonDocument document = QJsonDocument::fromJson(utf8);
    if (!document.isObject()) {
        return {};
    }
    const QJsonObject object = document.object();
    const QString type = object[u"type"_s].toString();
    if (type == u"translation") {
        return ResultMessage{object[u"original"_s].toString(), object[u"translation"_s].toString()};
    }
    if (type == u"status") {
        return parseStatus(object);
    }
    if (type == u"flushed") {
        return FlushedMessage{};
    }
    return {};
}

} // namespace orv
