// The engines that send chunks, in front of services in processes of their own.

#include "AzureDirectEngine.h"
#include "CloudEngines.h"
#include "EngineProbe.h"
#include "GoogleCloudDirectEngine.h"
#include "LogCapture.h"
#include "ServicePeer.h"

#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using test::EngineReports;
using test::finish;
using test::ServicePeer;
using test::start;
using test::waitUntil;

CloudEngineConfig languages(const QString& source, const QString& target) {
    return {.sourceLang = source,
            .targetLang = target,
            .apiKey = u"SECRET"_s,
            .region = u"westeurope"_s,
            .sampleRate = 48000};
}

template <typename Engine>
struct Session {
    explicit Session(EngineTimings timings = {}, const QStringList& arguments = {},
                     const QString& scheme = u"http"_s)
        : service(u"http_service.py"_s, arguments)
        , engine(std::make_unique<Engine>(
              ServiceEndpoints{.googleTranslate = service.url(scheme) + u"/translate"_s,
                               .googleSpeech = service.url(scheme),
                               .azureSpeechToText = service.url(scheme) + u"/{region}/stt"_s,
                               .azureSpeechTranslation = service.url(scheme) + u"/{region}/s2s"_s},
              timings))
        , reports(*engine) {}

    void connect(const QString& source, const QString& target) {
        EXPECT_FALSE(finish(engine->connect(languages(source, target))).error);
    }

    void always(int status, const QString& body) {
        service.command({{u"always"_s, true}, {u"status"_s, status}, {u"body"_s, body}});
    }

    void answer(int id, const QString& body) {
        service.command({{u"answer"_s, id}, {u"body"_s, body}});
    }

    bool waitForRequests(int count) {
        return waitUntil([this, count] { return service.count(u"request"_s) == count; });
    }

    QJsonObject request(int index) { return service.events(u"request"_s).value(index); }

    QByteArray body(int index) {
        return QByteArray::fromBase64(request(index)[u"body"_s].toString().toLatin1());
    }

    test::LogCapture log;
    ServicePeer service;
    std::unique_ptr<Engine> engine;
    EngineReports reports;
};

using Azure = Session<AzureDirectEngine>;
using Google = Session<GoogleCloudDirectEngine>;

const QByteArray chunk(96000, 'x');

QString azureTranslation(const QString& text, const QString& translation) {
    return uR"({"RecognitionStatus":"Success","Offset":1,"Duration":2,"DisplayText":"%1",)"
           uR"("Translations":[{"Language":"de","Text":"%2"}]})"_s.arg(text, translation);
}

QString azureRecognition(const QString& text) {
    return uR"({"RecognitionStatus":"Success","DisplayText":"%1","NBest":[{"Display":"%1"}]})"_s
        .arg(text);
}

QString googleRecognition(const QString& text) {
    return uR"({"results":[{"alternatives":[{"transcript":"%1","confidence":0.9}]}]})"_s.arg(text);
}

QString googleTranslation(const QString& text) {
    return uR"({"data":{"translations":[{"translatedText":"%1"}]}})"_s.arg(text);
}

TEST(CloudEngines, areMadeByTheirIdentifiers) {
    const CloudEngineFactory factory = makeCloudEngine();
    for (const auto& [id, name] : {std::pair{u"deepgram"_s, u"DeepgramDirectEngine"_s},
                                   std::pair{u"assemblyai"_s, u"AssemblyAIDirectEngine"_s},
                                   std::pair{u"azure"_s, u"AzureDirectEngine"_s},
                                   std::pair{u"google_rest"_s, u"GoogleCloudDirectEngine"_s}}) {
        const auto engine = factory(id);
        ASSERT_TRUE(engine) << id.toStdString();
        EXPECT_EQ(engine->id(), id);
        EXPECT_EQ(engine->name(), name);
    }
    EXPECT_FALSE(factory(u"google_grpc"_s));
    EXPECT_FALSE(factory(u"whisper"_s));
    EXPECT_FALSE(factory(QString()));
}

// Azure

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

struct FixedAnswer {
    int status;
    const char* body;

    friend void PrintTo(const FixedAnswer& answer, std::ostream* out) {
        *out << answer.status << " " << answer.body;
    }
};

class AnswersWithoutResult : public testing::TestWithParam<FixedAnswer> {};

TEST_P(AnswersWithoutResult, doNotFailAzure) {
    Azure session;
    session.always(GetParam().status, QString::fromUtf8(GetParam().body));
    for (const QString& target : {u"de"_s, u"en"_s}) {
        session.connect(u"en"_s, target);
        EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    }
    EXPECT_EQ(session.service.count(u"request"_s), 2);
    EXPECT_TRUE(session.reports.results.isEmpty());
    EXPECT_TRUE(session.engine->isActive());
}

TEST_P(AnswersWithoutResult, doNotFailGoogle) {
    Google session;
    session.always(GetParam().status, QString::fromUtf8(GetParam().body));
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.service.count(u"request"_s), 1);
    EXPECT_TRUE(session.reports.results.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Status, AnswersWithoutResult,
    testing::Values(FixedAnswer{200, R"({"RecognitionStatus":"NoMatch"})"}, FixedAnswer{200, "{}"},
                    FixedAnswer{400, R"({"error":{"code":400,"message":"bad"}})"},
                    FixedAnswer{401, R"({"error":{"code":"401","message":"denied"}})"},
                    FixedAnswer{429, R"({"error":{"code":"429","message":"slow down"}})"},
                    FixedAnswer{500, R"({"error":"internal"})"}, FixedAnswer{302, "{}"}));

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

// Google Cloud

TEST(GoogleCloudDirectEngine, isWhatItSays) {
    const GoogleCloudDirectEngine engine;
    EXPECT_FALSE(engine.isStreaming());
    EXPECT_TRUE(engine.supportsTranslation());
    EXPECT_FALSE(engine.isActive());
}

TEST(GoogleCloudDirectEngine, wantsAKey) {
    GoogleCloudDirectEngine engine;
    EngineReports reports(engine);
    const auto outcome = finish(engine.connect({}));
    EXPECT_EQ(outcome.error, u"Google Cloud API Key fehlt"_s);
    EXPECT_EQ(outcome.engineError, CloudEngineError::Kind::MissingApiKey);
    EXPECT_TRUE(reports.statuses.isEmpty());
}

TEST(GoogleCloudDirectEngine, recognisesAndThenTranslates) {
    Google session;
    session.connect(u"auto"_s, u"en"_s);
    EXPECT_EQ(session.reports.statuses,
              QStringList(u"connected: Google Cloud Speech ready (direct)"_s));
    const auto sending = start(session.engine->sendAudio(chunk));
    ASSERT_TRUE(session.waitForRequests(1));
    EXPECT_EQ(session.request(0)[u"path"_s].toString(), u"/v1/speech:recognize?key=SECRET"_s);
    EXPECT_EQ(session.request(0)[u"headers"_s][u"content-type"_s].toString(),
              u"application/json"_s);
    const QJsonObject body = QJsonDocument::fromJson(session.body(0)).object();
    EXPECT_EQ(body[u"config"_s][u"languageCode"_s].toString(), u"de-DE"_s);
    EXPECT_EQ(QByteArray::fromBase64(body[u"audio"_s][u"content"_s].toString().toLatin1()), chunk);
    session.answer(0, googleRecognition(u" Guten Tag. "_s));
    ASSERT_TRUE(session.waitForRequests(2));
    EXPECT_EQ(session.request(1)[u"path"_s].toString(),
              u"/translate/language/translate/v2?key=SECRET"_s);
    EXPECT_EQ(session.body(1), R"({"format":"text","q":"Guten Tag.","target":"en"})");
    session.answer(1, googleTranslation(u"Good day."_s));
    ASSERT_TRUE(waitUntil([&] { return sending->done; }));
    EXPECT_FALSE(sending->error);
    EXPECT_EQ(session.reports.results, QStringList(u"Guten Tag.|Good day."_s));
}

TEST(GoogleCloudDirectEngine, makesOneRequestForTheSameLanguage) {
    Google session;
    session.always(200, googleRecognition(u"Guten Tag."_s));
    session.connect(u"de"_s, u"de"_s);
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.reports.results, QStringList(u"Guten Tag.|Guten Tag."_s));
    EXPECT_EQ(session.service.count(u"request"_s), 1);
}

TEST(GoogleCloudDirectEngine, doesNotTranslateIntoAnyLanguage) {
    Google session;
    session.always(200, googleRecognition(u"Guten Tag."_s));
    session.connect(u"de"_s, u"auto"_s);
    finish(session.engine->sendAudio(chunk));
    EXPECT_EQ(session.reports.results, QStringList(u"Guten Tag.|Guten Tag."_s));
    EXPECT_EQ(session.service.count(u"request"_s), 1);
}

TEST(GoogleCloudDirectEngine, deliversTheTextInPlaceOfAnEmptyTranslation) {
    Google session;
    session.answer(0, googleRecognition(u"Guten Tag."_s));
    session.answer(1, u"{}"_s);
    session.connect(u"de"_s, u"en"_s);
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_EQ(session.reports.results, QStringList(u"Guten Tag.|Guten Tag."_s));
}

TEST(GoogleCloudDirectEngine, losesAChunkWhoseTranslationFails) {
    Google session;
    session.answer(0, googleRecognition(u"Guten Tag."_s));
    session.answer(1, u"<html></html>"_s);
    session.connect(u"de"_s, u"en"_s);
    EXPECT_EQ(finish(session.engine->sendAudio(chunk)).error,
              u"Google Cloud: Antwort ist kein JSON"_s);
    EXPECT_TRUE(session.reports.results.isEmpty());
}

TEST(GoogleCloudDirectEngine, throwsForABodyCutInTheMiddle) {
    Google session;
    session.service.command(
        {{u"always"_s, true}, {u"body"_s, googleRecognition(u"Hi"_s)}, {u"cut"_s, 20}});
    session.connect(u"de"_s, u"en"_s);
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
}

TEST(GoogleCloudDirectEngine, throwsForATranslationThatNeverComes) {
    Google session({.translation = 100ms});
    session.answer(0, googleRecognition(u"Guten Tag."_s));
    session.connect(u"de"_s, u"en"_s);
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_TRUE(session.reports.results.isEmpty());
    EXPECT_TRUE(session.engine->isActive());
}

TEST(GoogleCloudDirectEngine, namesNoKeyInWhatItThrows) {
    GoogleCloudDirectEngine nowhere({.googleSpeech = u"http://127.0.0.1:1"_s});
    finish(nowhere.connect(languages(u"de"_s, u"en"_s)));
    const auto refused = finish(nowhere.sendAudio(chunk));
    ASSERT_TRUE(refused.error);
    EXPECT_FALSE(refused.error->contains(u"SECRET"_s)) << refused.error->toStdString();
}

TEST(GoogleCloudDirectEngine, throwsForAKeyThatFormsNoAddress) {
    Google session;
    CloudEngineConfig config = languages(u"de"_s, u"en"_s);
    config.apiKey = u"not a key"_s;
    finish(session.engine->connect(config));
    EXPECT_EQ(finish(session.engine->sendAudio(chunk)).error, u"Google Cloud: Ungültige Adresse"_s);
}

TEST(GoogleCloudDirectEngine, stillDeliversTheTranslationUnderWayAtItsEnd) {
    Google session;
    session.answer(0, googleRecognition(u"Guten Tag."_s));
    session.connect(u"de"_s, u"en"_s);
    const auto sending = start(session.engine->sendAudio(chunk));
    ASSERT_TRUE(session.waitForRequests(2));
    EXPECT_FALSE(finish(session.engine->disconnect()).error);
    EXPECT_FALSE(sending->done);
    session.answer(1, googleTranslation(u"Good day."_s));
    ASSERT_TRUE(waitUntil([&] { return sending->done; }));
    EXPECT_FALSE(sending->error);
    EXPECT_EQ(session.reports.results, QStringList{u"Guten Tag.|Good day."_s});
}

TEST(GoogleCloudDirectEngine, endsSilentlyWhenReleasedDuringARequest) {
    Google session;
    session.connect(u"de"_s, u"en"_s);
    const auto sending = start(session.engine->sendAudio(chunk));
    ASSERT_TRUE(session.waitForRequests(1));
    session.engine.reset();
    EXPECT_TRUE(sending->done);
    EXPECT_FALSE(sending->error);
}

TEST(GoogleCloudDirectEngine, mayBeReleasedByItsOwnResult) {
    Google session;
    session.always(200, googleRecognition(u"Guten Tag."_s));
    session.connect(u"de"_s, u"de"_s);
    session.engine->onTranslation = [&](const QString&, const QString&) { session.engine.reset(); };
    EXPECT_FALSE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_FALSE(session.engine);
}

} // namespace
} // namespace orv
