#include "EngineCatalogue.h"

#include "DefaultsStore.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QSet>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TEST(EngineCatalogue, offersTheSevenEnginesInTheirOrder) {
    QStringList rows;
    QSet<QString> icons;
    const EngineCatalogue catalogue;
    for (const EngineDescriptor& engine : catalogue.engines()) {
        rows.append(engine.id + u'|' + engine.name + engine.nameKey + u'|' + engine.detailKey);
        EXPECT_NE(engine.name.isEmpty(), engine.nameKey.isEmpty());
        icons.insert(engine.icon);
    }
    const QStringList wanted = {
        u"whisper|settings.engine.whisper.name|settings.engine.whisper.detail"_s,
        u"deepgram|Deepgram|settings.engine.deepgram.detail"_s,
        u"assemblyai|AssemblyAI|settings.engine.assemblyai.detail"_s,
        u"google_rest|settings.engine.google_rest.name|settings.engine.google_rest.detail"_s,
        u"google_grpc|settings.engine.google_grpc.name|settings.engine.google_grpc.detail"_s,
        u"azure|Microsoft Azure|settings.engine.azure.detail"_s,
        u"vosk|Vosk|settings.engine.vosk.detail"_s};
    EXPECT_EQ(rows, wanted);
    EXPECT_EQ(icons.size(), 7);
}

TEST(EngineCatalogue, makesTheDirectEnginesByTheirIdentifiers) {
    const EngineCatalogue catalogue;
    for (const auto& [id, name] : {std::pair{u"deepgram"_s, u"DeepgramDirectEngine"_s},
                                   std::pair{u"assemblyai"_s, u"AssemblyAIDirectEngine"_s},
                                   std::pair{u"azure"_s, u"AzureDirectEngine"_s},
                                   std::pair{u"google_rest"_s, u"GoogleCloudDirectEngine"_s}}) {
        const auto engine = catalogue.find(id)->make({}, {});
        EXPECT_EQ(engine->id(), id);
        EXPECT_EQ(engine->name(), name);
    }
    for (const auto& id : {u"whisper"_s, u"vosk"_s, u"google_grpc"_s}) {
        EXPECT_FALSE(catalogue.find(id)->make) << id.toStdString();
    }
}

TEST(EngineCatalogue, knowsNoOtherEngine) {
    const EngineCatalogue catalogue;
    EXPECT_EQ(catalogue.find(u"telepathy"_s), nullptr);
    EXPECT_EQ(catalogue.find(QString()), nullptr);
    EXPECT_EQ(catalogue.find(u"Azure"_s), nullptr);
}

TEST(EngineCatalogue, fallsBackToAnEngineWithoutCredentials) {
    const EngineCatalogue catalogue;
    EXPECT_EQ(catalogue.fallback().id, u"whisper"_s);
    EXPECT_TRUE(catalogue.fallback().fields.empty());
}

TEST(EngineDescriptor, tellsWhichCredentialIsMissing) {
    const QTemporaryDir folder;
    SerialQueue disk(u"test.disk"_s);
    DefaultsStore store(disk, folder.filePath(u"defaults.json"_s));
    TranslationSettings settings(store);
    const EngineCatalogue catalogue;
    const EngineDescriptor& google = *catalogue.find(u"google_grpc"_s);
    const EngineField* missing = google.missingCredential(settings);
    ASSERT_NE(missing, nullptr);
    EXPECT_EQ(missing->kind, EngineField::Kind::ServiceAccount);
    settings.googleServiceAccountPath.set(u"/account.json"_s);
    EXPECT_EQ(google.missingCredential(settings), nullptr);
    EXPECT_EQ(catalogue.find(u"vosk"_s)->missingCredential(settings), nullptr);
}

TEST(EngineInfoText, isTheGermanLineOfEachEngine) {
    const EngineCatalogue catalogue;
    const auto text = [&](const QString& id) { return engineInfoText(catalogue, id); };
    EXPECT_EQ(text(u"whisper"_s),
              u"STT: Whisper (lokal) · Translation: Mistral (lokal) · Backend erforderlich"_s);
    EXPECT_EQ(text(u"google_rest"_s),
              u"STT + Translation: Google Cloud (direkt, 2 API-Calls) · Kein Backend nötig"_s);
    EXPECT_EQ(text(u"google_grpc"_s), u"STT: Google gRPC Streaming (Backend) · Translation: Google "
                                      "Translate (direkt) · Backend erforderlich"_s);
    EXPECT_EQ(text(u"deepgram"_s), u"STT: Deepgram Echtzeit-Streaming (direkt) · Translation: "
                                   "Google Translate (API Key nötig)"_s);
    EXPECT_EQ(text(u"assemblyai"_s), u"STT: AssemblyAI Echtzeit-Streaming (direkt) · Translation: "
                                     "Google Translate (API Key nötig)"_s);
    EXPECT_EQ(text(u"azure"_s),
              u"STT + Translation: Azure Speech (direkt, 1 API-Call) · Kein Backend nötig"_s);
    EXPECT_EQ(text(u"vosk"_s), u"STT: Vosk (lokaler Server) · Translation: Mistral (Backend) · "
                               "Backend erforderlich"_s);
    EXPECT_TRUE(text(u"other"_s).isEmpty());
}

} // namespace
} // namespace orv
