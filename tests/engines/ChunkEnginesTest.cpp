// What holds for every engine that sends chunks.

#include "AzureDirectEngine.h"
#include "GoogleCloudDirectEngine.h"
#include "RestSession.h"
#include "TrustedCertificate.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using namespace test;

template <typename Engine>
QString recognition(const QString& text);

template <>
QString recognition<AzureDirectEngine>(const QString& text) {
    return azureRecognition(text);
}

template <>
QString recognition<GoogleCloudDirectEngine>(const QString& text) {
    return googleRecognition(text);
}

/// Source and target are the same language, so that a chunk takes one request.
template <typename Engine>
class ChunkEngine : public testing::Test {
  protected:
    struct Session : RestSession<Engine> {
        using RestSession<Engine>::RestSession;

        void connect() { RestSession<Engine>::connect(u"de"_s, u"de"_s); }

        Outcome send(const QByteArray& pcm = chunk) { return finish(this->engine->sendAudio(pcm)); }

        int requests() { return static_cast<int>(this->service.count(u"request"_s)); }
    };

    /// For so many chunks: whom Azure refuses it asks in another way, too.
    static int requestsFor(int status, int chunks) {
        const bool asksTwice = std::is_same_v<Engine, AzureDirectEngine> && status >= 400;
        return asksTwice ? 2 * chunks : chunks;
    }

    const QString recognised = recognition<Engine>(u"Guten Tag."_s);
    const QStringList result{u"Guten Tag.|Guten Tag."_s};
};

struct EngineNames {
    template <typename Engine>
    static std::string GetName(int) {
        return std::is_same_v<Engine, AzureDirectEngine> ? "Azure" : "GoogleCloud";
    }
};

using Engines = testing::Types<AzureDirectEngine, GoogleCloudDirectEngine>;
TYPED_TEST_SUITE(ChunkEngine, Engines, EngineNames);

TYPED_TEST(ChunkEngine, isWhatItSays) {
    const TypeParam engine;
    EXPECT_FALSE(engine.isStreaming());
    EXPECT_TRUE(engine.supportsTranslation());
    EXPECT_FALSE(engine.isActive());
}

TYPED_TEST(ChunkEngine, sendsNothingForAnEmptyChunk) {
    typename TestFixture::Session session;
    session.connect();
    EXPECT_FALSE(session.send({}).error);
    EXPECT_EQ(session.requests(), 0);
}

TYPED_TEST(ChunkEngine, sendsNothingWhileNotActive) {
    typename TestFixture::Session session;
    EXPECT_FALSE(session.send().error);
    session.connect();
    finish(session.engine->disconnect());
    EXPECT_FALSE(session.send().error);
    EXPECT_EQ(session.requests(), 0);
}

TYPED_TEST(ChunkEngine, takesAResultWhateverTheStatus) {
    typename TestFixture::Session session;
    session.always(500, this->recognised);
    session.connect();
    EXPECT_FALSE(session.send().error);
    EXPECT_EQ(session.reports.results, this->result);
}

TYPED_TEST(ChunkEngine, takesAnAnswerWithoutAResultForNothingHeard) {
    struct {
        int status;
        const char16_t* body;
    } const answers[] = {{200, uR"({"RecognitionStatus":"NoMatch"})"},
                         {200, u"{}"},
                         {302, u"{}"},
                         {400, uR"({"error":{"code":400,"message":"bad"}})"},
                         {401, uR"({"error":{"code":"401","message":"denied"}})"},
                         {429, uR"({"error":{"code":"429","message":"slow down"}})"},
                         {500, uR"({"error":"internal"})"}};

    for (const auto& answer : answers) {
        typename TestFixture::Session session;
        session.always(answer.status, QString::fromUtf16(answer.body));
        for (const QString& target : {u"de"_s, u"en"_s}) {
            session.RestSession<TypeParam>::connect(u"de"_s, target);
            EXPECT_FALSE(session.send().error) << answer.status;
        }
        EXPECT_EQ(session.requests(), this->requestsFor(answer.status, 2)) << answer.status;
        EXPECT_TRUE(session.reports.results.isEmpty()) << answer.status;
        EXPECT_TRUE(session.engine->isActive()) << answer.status;
    }
}

TYPED_TEST(ChunkEngine, throwsForABodyCutInTheMiddle) {
    typename TestFixture::Session session;
    session.service.command({{u"always"_s, true}, {u"body"_s, this->recognised}, {u"cut"_s, 20}});
    session.connect();
    EXPECT_TRUE(session.send().error);
    EXPECT_TRUE(session.reports.results.isEmpty());
}

TYPED_TEST(ChunkEngine, throwsForAnAnswerThatNeverComesAndStaysActive) {
    typename TestFixture::Session session({.recognition = 100ms});
    session.connect();
    EXPECT_TRUE(session.send().error);
    EXPECT_TRUE(session.engine->isActive());
}

TYPED_TEST(ChunkEngine, throwsForAConnectionThatBreaks) {
    typename TestFixture::Session session;
    session.service.command({{u"always"_s, true}, {u"abort"_s, true}});
    session.connect();
    EXPECT_TRUE(session.send().error);
}

TYPED_TEST(ChunkEngine, takesAnAnswerOf16Mebibytes) {
    typename TestFixture::Session session;
    session.service.command({{u"always"_s, true},
                             {u"body"_s, this->recognised},
                             {u"fill"_s, 16'777'216 - this->recognised.toUtf8().size()}});
    session.connect();
    EXPECT_FALSE(session.send().error);
    EXPECT_EQ(session.reports.results, this->result);
}

TYPED_TEST(ChunkEngine, throwsForAnAnswerBeyond16Mebibytes) {
    typename TestFixture::Session session;
    session.service.command(
        {{u"always"_s, true}, {u"body"_s, this->recognised}, {u"fill"_s, 16'777'216}});
    session.connect();
    EXPECT_EQ(session.send().error, u"Antwort zu groß"_s);
    EXPECT_TRUE(session.reports.results.isEmpty());
}

TYPED_TEST(ChunkEngine, throwsForTextThatIsNotUtf8) {
    typename TestFixture::Session session;
    const QByteArray body("{\"RecognitionStatus\":\"\xff\xfe\"}");
    session.service.command(
        {{u"always"_s, true}, {u"bodyBase64"_s, QString::fromLatin1(body.toBase64())}});
    session.connect();
    EXPECT_TRUE(session.send().error);
}

TYPED_TEST(ChunkEngine, doesNotCarryTheKeyToAnotherAddress) {
    typename TestFixture::Session session;
    const QString elsewhere = session.service.url(u"http"_s) + u"/x"_s;
    session.service.command({{u"always"_s, true},
                             {u"status"_s, 307},
                             {u"body"_s, u"{}"_s},
                             {u"headers"_s, QJsonObject{{u"Location"_s, elsewhere}}}});
    session.connect();
    session.send();
    EXPECT_EQ(session.requests(), 1);
}

TYPED_TEST(ChunkEngine, stillDeliversTheRequestUnderWayAtItsEnd) {
    typename TestFixture::Session session;
    session.connect();
    const auto sending = start(session.engine->sendAudio(chunk));
    ASSERT_TRUE(session.waitForRequests(1));
    EXPECT_FALSE(finish(session.engine->disconnect()).error);
    EXPECT_FALSE(sending->done);
    session.answer(0, this->recognised);
    ASSERT_TRUE(waitUntil([&] { return sending->done; }));
    EXPECT_FALSE(sending->error);
    EXPECT_EQ(session.reports.results, this->result);
    EXPECT_FALSE(session.send().error);
    EXPECT_EQ(session.requests(), 1) << "nothing new is asked";
}

TYPED_TEST(ChunkEngine, endsSilentlyWhenReleasedDuringARequest) {
    typename TestFixture::Session session;
    session.connect();
    const auto sending = start(session.engine->sendAudio(chunk));
    ASSERT_TRUE(session.waitForRequests(1));
    session.engine.reset();
    EXPECT_TRUE(sending->done);
    EXPECT_FALSE(sending->error);
}

TYPED_TEST(ChunkEngine, mayBeReleasedByItsOwnResult) {
    typename TestFixture::Session session;
    session.always(200, this->recognised);
    session.connect();
    session.engine->onTranslation = [&](const QString&, const QString&) { session.engine.reset(); };
    EXPECT_FALSE(session.send().error);
    EXPECT_FALSE(session.engine);
}

TYPED_TEST(ChunkEngine, doesNotTrustACertificateOfNobody) {
    typename TestFixture::Session session({}, {u"--tls"_s}, u"https"_s);
    session.connect();
    const auto outcome = session.send();
    ASSERT_TRUE(outcome.error);
    EXPECT_TRUE(outcome.error->contains(u"self-signed"_s)) << outcome.error->toStdString();
    EXPECT_EQ(session.requests(), 0);
}

TYPED_TEST(ChunkEngine, speaksTlsToAServiceItTrusts) {
    typename TestFixture::Session session({}, {u"--tls"_s}, u"https"_s);
    const TrustedCertificate trusted(session.service.certificate());
    session.always(200, this->recognised);
    session.connect();
    EXPECT_FALSE(session.send().error);
    EXPECT_EQ(session.reports.results, this->result);
}

} // namespace
} // namespace orv
