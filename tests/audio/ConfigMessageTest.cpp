#include "ConfigMessage.h"

#include "DefaultsStore.h"
#include "EngineCatalogue.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

class ConfigMessage : public testing::Test {
  protected:
    EngineChoice choice(const QString& engine) {
        settings.sttEngine.set(engine);
        return EngineChoice::fromSettings(settings, engines);
    }

    QJsonObject message(const QString& engine) {
        return QJsonDocument::fromJson(configMessage(run, choice(engine))).object();
    }

    AudioNotice notice(const QString& engine) {
        return missingCredentialsNotice(*engines.find(engine), settings);
    }

    /// What the message holds for an engine that lacks its credentials.
    static QJsonObject whisperInstead() {
        return {{u"type"_s, u"config"_s},
                {u"sourceLang"_s, u"en"_s},
                {u"targetLang"_s, u"es"_s},
                {u"saveTranscript"_s, true},
                {u"saveSRT"_s, true},
                {u"showOriginal"_s, false},
                {u"whisperModel"_s, u"small"_s},
                {u"sttEngine"_s, u"whisper"_s},
                {u"engineApiKey"_s, QString()}};
    }

    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
    const EngineCatalogue engines;
    RunConfiguration run{u"en"_s, u"es"_s, true, false};

    void SetUp() override { settings.whisperModel.set(u"small"_s); }
};

TEST_F(ConfigMessage, carriesTheCommonKeysForWhisper) {
    QJsonObject wanted = whisperInstead();
    wanted[u"skipTranslation"_s] = false;
    EXPECT_EQ(message(u"whisper"_s), wanted);
}

TEST_F(ConfigMessage, carriesTheCommonKeysForAnEngineThatNobodyKnows) {
    QJsonObject wanted = whisperInstead();
    wanted[u"skipTranslation"_s] = false;
    wanted[u"sttEngine"_s] = u"telepathy"_s;
    EXPECT_EQ(message(u"telepathy"_s), wanted);
}

TEST_F(ConfigMessage, writesSubtitlesWheneverItWritesATranscript) {
    run.saveTranscript = false;
    const QJsonObject silent = message(u"whisper"_s);
    EXPECT_EQ(silent[u"saveTranscript"_s], false);
    EXPECT_EQ(silent[u"saveSRT"_s], false);
}

TEST_F(ConfigMessage, addsHostAndPortForVosk) {
    settings.voskHost.set(u"speech.local"_s);
    settings.voskPort.set(2701);
    QJsonObject wanted = whisperInstead();
    wanted[u"skipTranslation"_s] = false;
    wanted[u"sttEngine"_s] = u"vosk"_s;
    wanted[u"engineHost"_s] = u"speech.local"_s;
    wanted[u"enginePort"_s] = 2701;
    EXPECT_EQ(message(u"vosk"_s), wanted);
}

TEST_F(ConfigMessage, addsAccountProjectAndLocationForGoogleStreaming) {
    settings.googleServiceAccountPath.set(u"/keys/account.json"_s);
    settings.googleProjectId.set(u"project"_s);
    settings.googleLocation.set(u"eu"_s);
    settings.googleApiKey.set(u"for the translation"_s);
    QJsonObject wanted = whisperInstead();
    wanted[u"skipTranslation"_s] = true;
    wanted[u"sttEngine"_s] = u"google_grpc"_s;
    wanted[u"engineServiceAccountPath"_s] = u"/keys/account.json"_s;
    wanted[u"engineProjectId"_s] = u"project"_s;
    wanted[u"engineLocation"_s] = u"eu"_s;
    EXPECT_EQ(message(u"google_grpc"_s), wanted);
}

TEST_F(ConfigMessage, leavesTheTranslationToTheBackendBetweenEqualLanguages) {
    settings.googleServiceAccountPath.set(u"/keys/account.json"_s);
    run.targetLang = run.sourceLang;
    EXPECT_EQ(message(u"google_grpc"_s)[u"skipTranslation"_s], false);
}

TEST_F(ConfigMessage, addsTheRegionForAzure) {
    settings.azureApiKey.set(u"key"_s);
    settings.azureRegion.set(u"westeurope"_s);
    QJsonObject wanted = whisperInstead();
    wanted[u"skipTranslation"_s] = false;
    wanted[u"sttEngine"_s] = u"azure"_s;
    wanted[u"engineApiKey"_s] = u"key"_s;
    wanted[u"engineRegion"_s] = u"westeurope"_s;
    EXPECT_EQ(message(u"azure"_s), wanted);
}

TEST_F(ConfigMessage, carriesTheKeyOfTheChosenEngine) {
    settings.deepgramApiKey.set(u"D"_s);
    settings.assemblyaiApiKey.set(u"A"_s);
    settings.googleApiKey.set(u"G"_s);
    settings.azureApiKey.set(u"Z"_s);
    settings.googleServiceAccountPath.set(u"/account.json"_s);
    for (const auto& [engine, key] :
         {std::pair{u"deepgram"_s, u"D"_s}, std::pair{u"assemblyai"_s, u"A"_s},
          std::pair{u"google_rest"_s, u"G"_s}, std::pair{u"azure"_s, u"Z"_s},
          std::pair{u"whisper"_s, QString()}, std::pair{u"google_grpc"_s, QString()}}) {
        EXPECT_EQ(message(engine)[u"engineApiKey"_s], key) << engine.toStdString();
    }
}

class EngineWithoutCredentials : public ConfigMessage,
                                 public testing::WithParamInterface<const char*> {};

TEST_P(EngineWithoutCredentials, isReplacedByWhisperWithoutEngineKeys) {
    const QString engine = QString::fromLatin1(GetParam());
    EXPECT_TRUE(choice(engine).lacksCredentials);
    EXPECT_EQ(message(engine), whisperInstead());
}

INSTANTIATE_TEST_SUITE_P(AllCloudEngines, EngineWithoutCredentials,
                         testing::Values("deepgram", "assemblyai", "google_rest", "azure",
                                         "google_grpc"));

TEST_F(ConfigMessage, needsNoCredentialsForLocalAndUnknownEngines) {
    for (const auto& engine : {u"whisper"_s, u"vosk"_s, u"something"_s}) {
        EXPECT_FALSE(choice(engine).lacksCredentials) << engine.toStdString();
    }
}

TEST_F(ConfigMessage, missingCredentialsAreToldWithTheEnginesNameCapitalised) {
    EXPECT_EQ(notice(u"deepgram"_s),
              (AudioNotice{AudioNotice::Kind::ApiKeyMissing, u"Deepgram"_s}));
    EXPECT_EQ(notice(u"google_rest"_s),
              (AudioNotice{AudioNotice::Kind::ApiKeyMissing, u"Google_rest"_s}));
    EXPECT_EQ(notice(u"google_grpc"_s),
              (AudioNotice{AudioNotice::Kind::ServiceAccountMissing, {}}));
}

} // namespace
} // namespace orv
