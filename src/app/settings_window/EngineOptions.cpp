#include "EngineOptions.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct EngineFacts {
    QString info;
    QString translator;
};

const QHash<QString, EngineFacts>& facts() {
    static const QHash<QString, EngineFacts> all = {
        {u"whisper"_s,
         {u"STT: Whisper (lokal) · Translation: Mistral (lokal) · Backend erforderlich"_s,
          u"Mistral"_s}},
        {u"google_rest"_s,
         {u"STT + Translation: Google Cloud (direkt, 2 API-Calls) · Kein Backend nötig"_s,
          u"Google Translate"_s}},
        {u"google_grpc"_s,
         {u"STT: Google gRPC Streaming (Backend) · Translation: Google Translate (direkt) · "
          "Backend erforderlich"_s,
          u"Google Translate"_s}},
        {u"deepgram"_s,
         {u"STT: Deepgram Echtzeit-Streaming (direkt) · Translation: Google Translate (API Key "
          "nötig)"_s,
          u"Google Translate"_s}},
        {u"assemblyai"_s,
         {u"STT: AssemblyAI Echtzeit-Streaming (direkt) · Translation: Google Translate (API Key "
          "nötig)"_s,
          u"Google Translate"_s}},
        {u"azure"_s,
         {u"STT + Translation: Azure Speech (direkt, 1 API-Call) · Kein Backend nötig"_s,
          u"Azure Speech"_s}},
        {u"vosk"_s,
         {u"STT: Vosk (lokaler Server) · Translation: Mistral (Backend) · Backend erforderlich"_s,
          u"Mistral"_s}},
    };
    return all;
}

} // namespace

std::span<const EngineOption> engineOptions() {
    static const EngineOption options[] = {
        {u"whisper"_s,
         {},
         u"settings.engine.whisper.name"_s,
         u"settings.engine.whisper.detail"_s,
         u"waveform.badge.mic"_s},
        {u"deepgram"_s,
         u"Deepgram"_s,
         {},
         u"settings.engine.deepgram.detail"_s,
         u"bolt.horizontal"_s},
        {u"assemblyai"_s,
         u"AssemblyAI"_s,
         {},
         u"settings.engine.assemblyai.detail"_s,
         u"bolt.fill"_s},
        {u"google_rest"_s,
         {},
         u"settings.engine.google_rest.name"_s,
         u"settings.engine.google_rest.detail"_s,
         u"cloud"_s},
        {u"google_grpc"_s,
         {},
         u"settings.engine.google_grpc.name"_s,
         u"settings.engine.google_grpc.detail"_s,
         u"cloud.bolt"_s},
        {u"azure"_s, u"Microsoft Azure"_s, {}, u"settings.engine.azure.detail"_s, u"cloud.fill"_s},
        {u"vosk"_s, u"Vosk"_s, {}, u"settings.engine.vosk.detail"_s, u"server.rack"_s},
    };
    return options;
}

QString engineInfoText(const QString& engineId) {
    return facts().value(engineId).info;
}

QString translatorName(const QString& engineId) {
    return facts().value(engineId).translator;
}

} // namespace orv
