#include "EngineOptions.h"

#include "L10n.h"

#include <QSet>
#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(EngineOptions, areTheSevenEnginesInTheirOrder) {
    QStringList rows;
    for (const EngineOption& option : engineOptions()) {
        rows.append(option.id + u'|' + option.name + option.nameKey + u'|' + option.detailKey);
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
}

TEST(EngineOptions, haveATextForEveryKeyAndAPictureOfTheirOwn) {
    const StringTable& texts = L10n::strings().at(UILanguage::English);
    QSet<QString> icons;
    for (const EngineOption& option : engineOptions()) {
        EXPECT_TRUE(texts.text(option.detailKey)) << qPrintable(option.detailKey);
        EXPECT_TRUE(option.nameKey.isEmpty() || texts.text(option.nameKey));
        EXPECT_NE(option.name.isEmpty(), option.nameKey.isEmpty());
        icons.insert(option.icon);
    }
    EXPECT_EQ(icons.size(), 7);
}

TEST(EngineInfoText, isTheGermanLineOfEachEngine) {
    EXPECT_EQ(engineInfoText(u"whisper"_s),
              u"STT: Whisper (lokal) · Translation: Mistral (lokal) · Backend erforderlich"_s);
    EXPECT_EQ(engineInfoText(u"google_rest"_s),
              u"STT + Translation: Google Cloud (direkt, 2 API-Calls) · Kein Backend nötig"_s);
    EXPECT_EQ(
        engineInfoText(u"google_grpc"_s),
        u"STT: Google gRPC Streaming (Backend) · Translation: Google Translate (direkt) · Backend erforderlich"_s);
    EXPECT_EQ(
        engineInfoText(u"deepgram"_s),
        u"STT: Deepgram Echtzeit-Streaming (direkt) · Translation: Google Translate (API Key nötig)"_s);
    EXPECT_EQ(
        engineInfoText(u"assemblyai"_s),
        u"STT: AssemblyAI Echtzeit-Streaming (direkt) · Translation: Google Translate (API Key nötig)"_s);
    EXPECT_EQ(engineInfoText(u"azure"_s),
              u"STT + Translation: Azure Speech (direkt, 1 API-Call) · Kein Backend nötig"_s);
    EXPECT_EQ(
        engineInfoText(u"vosk"_s),
        u"STT: Vosk (lokaler Server) · Translation: Mistral (Backend) · Backend erforderlich"_s);
}

TEST(EngineInfoText, isEmptyForAnUnknownEngine) {
    EXPECT_TRUE(engineInfoText(u"other"_s).isEmpty());
    EXPECT_TRUE(translatorName(u""_s).isEmpty());
}

} // namespace

} // namespace orv::test
