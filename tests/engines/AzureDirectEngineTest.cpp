#include "AzureDirectEngine.h"

#include "RestSession.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using namespace test;

using Azure = RestSession<AzureDirectEngine>;

TEST(AzureDirectEngine, wantsAKeyAndARegion) {
    AzureDirectEngine engine;
    EngineReports reports(engine);
    CloudEngineConfig config = languages(u"en"_s, u"de"_s);
    config.apiKey.clear();
    auto outcome = finish(engine.connect(config));
    EXPECT_EQ(outcome.error, u"Azure Subscription Key fehlt"_s);
    EXPECT_EQ(outcome.engineError, CloudEngineError::Kind::MissingApiKey);
    config = languages(u"en"_s, u"de"_s);
    config.region.clear();
    outcome = finish(engine.connect(config));
    EXPECT_EQ(outcome.error, u"Azure Region fehlt"_s);
    EXPECT_EQ(outcome.engineError, CloudEngineError::Kind::MissingApiKey);
    EXPECT_TRUE(reports.statuses.isEmpty());
}

TEST(AzureDirectEngine, isReadyWithoutAnyRequest) {
    Azure session;
    session.connect(u"en"_s, u"de"_s);
    EXPECT_EQ(session.reports.statuses,
              QStringList(u"connected: Azure Speech ready (westeurope, direct)"_s));
    EXPECT_EQ(session.service.count(u"request"_s), 0);
}

TEST(AzureDirectEngine, translatesAChunkWithOneRequest) {
    Azure session;
    session.always(200, azureTranslation(u"Hello."_s, u"Hallo."_s));
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.reports.results, QStringList(u"Hello.|Hallo."_s));
    ASSERT_EQ(session.service.count(u"request"_s), 1);
    const QJsonObject request = session.request(0);
    EXPECT_EQ(request[u"method"_s].toString(), u"POST"_s);
    EXPECT_EQ(request[u"path"_s].toString(),
              u"/westeurope/s2s/speech/translation/cognitiveservices/v1"
              u"?from=en-US&to=de&api-version=3.0"_s);
    const QJsonObject headers = request[u"headers"_s].toObject();
    EXPECT_EQ(headers[u"ocp-apim-subscription-key"_s].toString(), u"SECRET"_s);
    EXPECT_EQ(headers[u"content-type"_s].toString(),
              u"audio/wav; codecs=audio/pcm; samplerate=48000"_s);
}

TEST(AzureDirectEngine, sendsAWaveFileThatOthersAccept) {
    Azure session;
    session.always(200, azureRecognition(u"x"_s));
    session.connect(u"de"_s, u"de"_s);
    finish(session.engine->sendAudio(chunk));
    const QByteArray wav = session.body(0);
    EXPECT_EQ(wav.size(), 96044);
    EXPECT_EQ(wav.mid(44), chunk);
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"chunk.wav"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(wav);
    file.close();
    QProcess soxi;
    soxi.start(u"soxi"_s, {u"-D"_s, file.fileName()});
    ASSERT_TRUE(soxi.waitForFinished());
    EXPECT_EQ(soxi.exitCode(), 0);
    EXPECT_DOUBLE_EQ(soxi.readAllStandardOutput().trimmed().toDouble(), 1.0);
}

TEST(AzureDirectEngine, onlyRecognisesForTheSameLanguage) {
    Azure session;
    session.always(200, azureRecognition(u"Guten Tag."_s));
    session.connect(u"auto"_s, u"de"_s);
    finish(session.engine->sendAudio(chunk));
    EXPECT_EQ(session.reports.results, QStringList(u"Guten Tag.|Guten Tag."_s));
    EXPECT_EQ(session.request(0)[u"path"_s].toString(),
              u"/westeurope/stt/speech/recognition/conversation/cognitiveservices/v1"
              u"?language=de-DE&format=detailed"_s);
}

TEST(AzureDirectEngine, deliversTheTextInPlaceOfAnEmptyTranslation) {
    Azure session;
    session.always(200, azureTranslation(u"Hello."_s, QString()));
    session.connect(u"en"_s, u"de"_s);
    finish(session.engine->sendAudio(chunk));
    EXPECT_EQ(session.reports.results, QStringList(u"Hello.|Hello."_s));
}

TEST(AzureDirectEngine, throwsForAPageInsteadOfJsonAndGoesOn) {
    Azure session;
    session.connect(u"en"_s, u"de"_s);
    const auto first = start(session.engine->sendAudio(chunk));
    session.answer(0, u"<html><body>Bad Gateway</body></html>"_s);
    ASSERT_TRUE(waitUntil([&] { return first->done; }));
    EXPECT_EQ(first->error, u"Azure: Antwort ist kein JSON"_s);
    session.answer(1, azureTranslation(u"Hello."_s, u"Hallo."_s));
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.reports.results, QStringList(u"Hello.|Hallo."_s));
}

TEST(AzureDirectEngine, refusesARegionThatIsNone) {
    Azure session;
    CloudEngineConfig config = languages(u"en"_s, u"de"_s);
    config.region = u"evil.example/"_s;
    finish(session.engine->connect(config));
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.service.count(u"request"_s), 0);
}

} // namespace
} // namespace orv
