#include "AzureDirectEngine.h"

#include "RestSession.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using namespace test;

using Azure = RestSession<AzureDirectEngine>;

TEST(AzureDirectEngine, isWhatItSays) {
    const AzureDirectEngine engine;
    EXPECT_FALSE(engine.isStreaming());
    EXPECT_TRUE(engine.supportsTranslation());
    EXPECT_FALSE(engine.isActive());
}

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

TEST(AzureDirectEngine, sendsNothingForAnEmptyChunk) {
    Azure session;
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(finish(session.engine->sendAudio({})).error);
    EXPECT_EQ(session.service.count(u"request"_s), 0);
}

TEST(AzureDirectEngine, sendsNothingWhileNotActive) {
    Azure session;
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    session.connect(u"en"_s, u"de"_s);
    finish(session.engine->disconnect());
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.service.count(u"request"_s), 0);
}

TEST(AzureDirectEngine, deliversTheTextInPlaceOfAnEmptyTranslation) {
    Azure session;
    session.always(200, azureTranslation(u"Hello."_s, QString()));
    session.connect(u"en"_s, u"de"_s);
    finish(session.engine->sendAudio(chunk));
    EXPECT_EQ(session.reports.results, QStringList(u"Hello.|Hello."_s));
}

TEST(AzureDirectEngine, takesAResultWhateverTheStatus) {
    Azure session;
    session.always(500, azureTranslation(u"Hello."_s, u"Hallo."_s));
    session.connect(u"en"_s, u"de"_s);
    finish(session.engine->sendAudio(chunk));
    EXPECT_EQ(session.reports.results, QStringList(u"Hello.|Hallo."_s));
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

TEST(AzureDirectEngine, throwsForABodyCutInTheMiddle) {
    Azure session;
    session.service.command({{u"always"_s, true},
                             {u"body"_s, azureTranslation(u"Hello."_s, u"Hallo."_s)},
                             {u"cut"_s, 30}});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_TRUE(session.reports.results.isEmpty());
}

TEST(AzureDirectEngine, throwsForAnAnswerThatNeverComes) {
    Azure session({.recognition = 100ms});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_TRUE(session.engine->isActive());
}

TEST(AzureDirectEngine, throwsForAConnectionThatBreaks) {
    Azure session;
    session.service.command({{u"always"_s, true}, {u"abort"_s, true}});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
}

TEST(AzureDirectEngine, takesAnAnswerOf16Mebibytes) {
    Azure session;
    const QString body = azureTranslation(u"Hello."_s, u"Hallo."_s);
    session.service.command(
        {{u"always"_s, true}, {u"body"_s, body}, {u"fill"_s, 16'777'216 - body.toUtf8().size()}});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.reports.results.size(), 1);
}

TEST(AzureDirectEngine, throwsForAnAnswerBeyond16Mebibytes) {
    Azure session;
    const QString body = azureTranslation(u"Hello."_s, u"Hallo."_s);
    session.service.command({{u"always"_s, true}, {u"body"_s, body}, {u"fill"_s, 16'777'216}});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_EQ(finish(session.engine->sendAudio(chunk)).error, u"Antwort zu groß"_s);
    EXPECT_TRUE(session.reports.results.isEmpty());
}

TEST(AzureDirectEngine, throwsForTextThatIsNotUtf8) {
    Azure session;
    session.service.command(
        {{u"always"_s, true},
         {u"bodyBase64"_s,
          QString::fromLatin1(QByteArray("{\"RecognitionStatus\":\"\xff\xfe\"}").toBase64())}});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
}

TEST(AzureDirectEngine, doesNotCarryTheKeyToAnotherAddress) {
    Azure session;
    session.service.command(
        {{u"always"_s, true},
         {u"status"_s, 307},
         {u"body"_s, u"{}"_s},
         {u"headers"_s,
          QJsonObject{{u"Location"_s, QString(session.service.url(u"http"_s) + u"/x"_s)}}}});
    session.connect(u"en"_s, u"de"_s);
    finish(session.engine->sendAudio(chunk));
    EXPECT_EQ(session.service.count(u"request"_s), 1);
}

TEST(AzureDirectEngine, refusesARegionThatIsNone) {
    Azure session;
    CloudEngineConfig config = languages(u"en"_s, u"de"_s);
    config.region = u"evil.example/"_s;
    finish(session.engine->connect(config));
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.service.count(u"request"_s), 0);
}

TEST(AzureDirectEngine, stillDeliversTheRequestUnderWayAtItsEnd) {
    Azure session;
    session.connect(u"en"_s, u"de"_s);
    const auto sending = start(session.engine->sendAudio(chunk));
    ASSERT_TRUE(session.waitForRequests(1));
    EXPECT_FALSE(finish(session.engine->disconnect()).error);
    EXPECT_FALSE(sending->done);
    session.answer(0, azureTranslation(u"Hello."_s, u"Hallo."_s));
    ASSERT_TRUE(waitUntil([&] { return sending->done; }));
    EXPECT_FALSE(sending->error);
    EXPECT_EQ(session.reports.results, QStringList{u"Hello.|Hallo."_s});
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.service.count(u"request"_s), 1) << "nothing new is asked";
}

TEST(AzureDirectEngine, endsSilentlyWhenReleasedDuringARequest) {
    Azure session;
    session.connect(u"en"_s, u"de"_s);
    const auto sending = start(session.engine->sendAudio(chunk));
    ASSERT_TRUE(session.waitForRequests(1));
    session.engine.reset();
    EXPECT_TRUE(sending->done);
    EXPECT_FALSE(sending->error);
}

TEST(AzureDirectEngine, mayBeReleasedByItsOwnResult) {
    Azure session;
    session.always(200, azureTranslation(u"Hello."_s, u"Hallo."_s));
    session.connect(u"en"_s, u"de"_s);
    session.engine->onTranslation = [&](const QString&, const QString&) { session.engine.reset(); };
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_FALSE(session.engine);
}

TEST(AzureDirectEngine, doesNotTrustACertificateOfNobody) {
    Azure session({}, {u"--tls"_s}, u"https"_s);
    session.connect(u"en"_s, u"de"_s);
    const auto outcome = finish(session.engine->sendAudio(chunk));
    ASSERT_TRUE(outcome.error);
    EXPECT_TRUE(outcome.error->contains(u"self-signed"_s)) << outcome.error->toStdString();
    EXPECT_EQ(session.service.count(u"request"_s), 0);
}

TEST(AzureDirectEngine, speaksTlsToAServiceItTrusts) {
    Azure session({}, {u"--tls"_s}, u"https"_s);
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = before;
    trusting.addCaCertificates(session.service.certificate());
    QSslConfiguration::setDefaultConfiguration(trusting);
    session.always(200, azureTranslation(u"Hello."_s, u"Hallo."_s));
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    QSslConfiguration::setDefaultConfiguration(before);
    EXPECT_EQ(session.reports.results.size(), 1);
}

} // namespace
} // namespace orv
