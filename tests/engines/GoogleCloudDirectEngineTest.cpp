#include "GoogleCloudDirectEngine.h"

#include "RestSession.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using namespace test;

using Google = RestSession<GoogleCloudDirectEngine>;

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

TEST(GoogleCloudDirectEngine, throwsForATranslationThatNeverComes) {
    Google session({.translation = 100ms});
    session.answer(0, googleRecognition(u"Guten Tag."_s));
    session.connect(u"de"_s, u"en"_s);
    EXPECT_TRUE(finish(session.engine->sendAudio(chunk)).error);
    EXPECT_TRUE(session.reports.results.isEmpty());
    EXPECT_TRUE(session.engine->isActive());
}

TEST(GoogleCloudDirectEngine, namesNoKeyInWhatItThrows) {
    GoogleCloudDirectEngine nowhere({{googleRecognitionHost, u"http://127.0.0.1:1"_s}});
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

} // namespace
} // namespace orv
