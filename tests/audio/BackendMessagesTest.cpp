#include "BackendMessages.h"

#include "DefaultsStore.h"
#include "TranslationSettings.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

const RunConfiguration run{u"en"_s, u"es"_s, true, false};

QJsonObject parsed(const QByteArray& message) {
    return QJsonDocument::fromJson(message).object();
}

EngineChoice engine(const QString& name) {
    EngineChoice choice;
    choice.sttEngine = name;
    choice.whisperModel = u"small"_s;
    return choice;
}

TEST(ConfigMessage, carriesTheCommonKeysForWhisper) {
    EXPECT_EQ(parsed(configMessage(run, engine(u"whisper"_s))),
              (QJsonObject{{u"type"_s, u"config"_s},
                           {u"sourceLang"_s, u"en"_s},
                           {u"targetLang"_s, u"es"_s},
                           {u"saveTranscript"_s, true},
                           {u"saveSRT"_s, true},
                           {u"showOriginal"_s, false},
                           {u"whisperModel"_s, u"small"_s},
                           {u"sttEngine"_s, u"whisper"_s},
                           {u"engineApiKey"_s, QString()},
                           {u"skipTranslation"_s, false}}));
}

TEST(ConfigMessage, writesSubtitlesWheneverItWritesATranscript) {
    RunConfiguration silent = run;
    silent.saveTranscript = false;
    const QJsonObject message = parsed(configMessage(silent, engine(u"whisper"_s)));
    EXPECT_EQ(message[u"saveTranscript"_s], false);
    EXPECT_EQ(message[u"saveSRT"_s], false);
}

TEST(ConfigMessage, addsHostAndPortForVosk) {
    EngineChoice vosk = engine(u"vosk"_s);
    vosk.host = u"speech.local"_s;
    vosk.port = 2701;
    const QJsonObject message = parsed(configMessage(run, vosk));
    EXPECT_EQ(message[u"engineHost"_s], u"speech.local"_s);
    EXPECT_EQ(message[u"enginePort"_s], 2701);
    EXPECT_FALSE(message.contains(u"engineRegion"_s));
}

TEST(ConfigMessage, addsAccountProjectAndLocationForGoogleStreaming) {
    EngineChoice google = engine(u"google_grpc"_s);
    google.serviceAccountPath = u"/keys/account.json"_s;
    google.projectId = u"project"_s;
    google.location = u"eu"_s;
    const QJsonObject message = parsed(configMessage(run, google));
    EXPECT_EQ(message[u"engineServiceAccountPath"_s], u"/keys/account.json"_s);
    EXPECT_EQ(message[u"engineProjectId"_s], u"project"_s);
    EXPECT_EQ(message[u"engineLocation"_s], u"eu"_s);
    EXPECT_EQ(message[u"skipTranslation"_s], true);
}

TEST(ConfigMessage, leavesTheTranslationToTheBackendBetweenEqualLanguages) {
    EngineChoice google = engine(u"google_grpc"_s);
    google.serviceAccountPath = u"/keys/account.json"_s;
    const RunConfiguration same{u"en"_s, u"en"_s, true, false};
    EXPECT_EQ(parsed(configMessage(same, google))[u"skipTranslation"_s], false);
}

TEST(ConfigMessage, addsTheRegionForAzure) {
    EngineChoice azure = engine(u"azure"_s);
    azure.apiKey = u"key"_s;
    azure.region = u"westeurope"_s;
    const QJsonObject message = parsed(configMessage(run, azure));
    EXPECT_EQ(message[u"engineRegion"_s], u"westeurope"_s);
    EXPECT_EQ(message[u"engineApiKey"_s], u"key"_s);
}

class EngineWithoutCredentials : public testing::TestWithParam<const char*> {};

TEST_P(EngineWithoutCredentials, isReplacedByWhisperWithoutEngineKeys) {
    const EngineChoice choice = engine(QString::fromLatin1(GetParam()));
    EXPECT_TRUE(choice.lacksCredentials());
    EXPECT_EQ(parsed(configMessage(run, choice)), (QJsonObject{{u"type"_s, u"config"_s},
                                                               {u"sourceLang"_s, u"en"_s},
                                                               {u"targetLang"_s, u"es"_s},
                                                               {u"saveTranscript"_s, true},
                                                               {u"saveSRT"_s, true},
                                                               {u"showOriginal"_s, false},
                                                               {u"whisperModel"_s, u"small"_s},
                                                               {u"sttEngine"_s, u"whisper"_s},
                                                               {u"engineApiKey"_s, QString()}}));
}

INSTANTIATE_TEST_SUITE_P(AllCloudEngines, EngineWithoutCredentials,
                         testing::Values("deepgram", "assemblyai", "google_rest", "azure",
                                         "google_grpc"));

TEST(EngineChoice, needsNoCredentialsForLocalAndUnknownEngines) {
    for (const auto& name : {u"whisper"_s, u"vosk"_s, u"something"_s}) {
        EXPECT_FALSE(engine(name).lacksCredentials()) << name.toStdString();
    }
}

TEST(EngineChoice, takesTheKeyOfTheChosenEngineFromTheSettings) {
    const QTemporaryDir folder;
    DefaultsStore store(folder.filePath(u"defaults.json"_s));
    TranslationSettings settings(store);
    settings.deepgramApiKey.set(u"D"_s);
    settings.assemblyaiApiKey.set(u"A"_s);
    settings.googleApiKey.set(u"G"_s);
    settings.azureApiKey.set(u"Z"_s);
    const std::array<std::pair<QString, QString>, 6> expected{{{u"deepgram"_s, u"D"_s},
                                                               {u"assemblyai"_s, u"A"_s},
                                                               {u"google_rest"_s, u"G"_s},
                                                               {u"azure"_s, u"Z"_s},
                                                               {u"whisper"_s, QString()},
                                                               {u"google_grpc"_s, QString()}}};
    for (const auto& [name, key] : expected) {
        settings.sttEngine.set(name);
        EXPECT_EQ(EngineChoice::fromSettings(settings).apiKey, key) << name.toStdString();
    }
}

TEST(MissingCredentials, areToldWithTheEnginesNameCapitalised) {
    EXPECT_EQ(missingCredentialsNotice(u"deepgram"_s),
              (AudioNotice{AudioNotice::Kind::ApiKeyMissing, u"Deepgram"_s}));
    EXPECT_EQ(missingCredentialsNotice(u"google_rest"_s),
              (AudioNotice{AudioNotice::Kind::ApiKeyMissing, u"Google_rest"_s}));
    EXPECT_EQ(missingCredentialsNotice(u"google_grpc"_s),
              (AudioNotice{AudioNotice::Kind::ServiceAccountMissing, {}}));
}

TEST(AudioMessage, carriesRateFormatAndLittleEndianSamples) {
    const std::vector<float> samples{0.0F, 1.0F, -1.0F, 0.5F};
    const QByteArray message = audioMessage(samples, 48000);
    EXPECT_EQ(parsed(message),
              (QJsonObject{
                  {u"type"_s, u"audio"_s},
                  {u"sample_rate"_s, 48000},
                  {u"format"_s, u"int16"_s},
                  {u"data"_s, QString::fromLatin1(
                                  QByteArray("\x00\x00\xff\x7f\x01\x80\xff\x3f", 8).toBase64())}}));
    EXPECT_FALSE(message.contains('\n'));
}

TEST(FlushAndStop, areBareTypes) {
    EXPECT_EQ(parsed(flushMessage()), (QJsonObject{{u"type"_s, u"flush"_s}}));
    EXPECT_EQ(parsed(stopMessage()), (QJsonObject{{u"type"_s, u"stop"_s}}));
}

TEST(Downstream, understandsAResult) {
    EXPECT_EQ(parseDownstream(R"({"type":"translation","original":"Hi","translation":"Hola"})"),
              DownstreamMessage(ResultMessage{u"Hi"_s, u"Hola"_s}));
}

TEST(Downstream, countsMissingAndMistypedTextsAsEmpty) {
    EXPECT_EQ(parseDownstream(R"({"type":"translation","original":7})"),
              DownstreamMessage(ResultMessage{}));
    EXPECT_EQ(parseDownstream(R"({"type":"status"})"), DownstreamMessage(StatusMessage{}));
}

TEST(Downstream, understandsAStatus) {
    EXPECT_EQ(parseDownstream(R"({"type":"status","status":"model_loading","message":"Lade"})"),
              DownstreamMessage(StatusMessage{u"model_loading"_s, u"Lade"_s, std::nullopt}));
}

TEST(Downstream, readsTheVersionOnlyAsAnInteger) {
    const auto version = [](const char* value) {
        const QByteArray message =
            QByteArray(R"({"type":"status","status":"backend_version","version":)") + value + "}";
        return std::get<StatusMessage>(parseDownstream(message)).version;
    };
    EXPECT_EQ(version("4"), 4);
    EXPECT_EQ(version("\"4\""), std::nullopt);
    EXPECT_EQ(version("4.5"), std::nullopt);
    EXPECT_EQ(version("null"), std::nullopt);
    EXPECT_EQ(version("-1"), -1);
}

TEST(Downstream, understandsTheFlushConfirmation) {
    EXPECT_EQ(parseDownstream(R"({"type":"flushed"})"), DownstreamMessage(FlushedMessage{}));
}

TEST(Downstream, ignoresWhatIsNotAnObjectWithAKnownType) {
    for (const char* message :
         {"", "{", "[]", "7", "null", "\"translation\"", "{}", R"({"type":7})",
          R"({"type":"else"})", R"({"Type":"flushed"})", "\xff\xfe", "{\"type\":\"flushed\"} x"}) {
        EXPECT_EQ(parseDownstream(message), DownstreamMessage()) << message;
    }
}

TEST(Downstream, survivesDeepNesting) {
    const QByteArray deep = QByteArray(100'000, '[');
    EXPECT_EQ(parseDownstream(deep), DownstreamMessage());
}

} // namespace
} // namespace orv
