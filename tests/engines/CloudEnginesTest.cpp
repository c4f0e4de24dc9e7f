// What the engines have in common.

#include "CloudEngines.h"
#include "AzureDirectEngine.h"
#include "GoogleCloudDirectEngine.h"
#include "RestSession.h"

#include <ostream>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using namespace test;

using Azure = RestSession<AzureDirectEngine>;
using Google = RestSession<GoogleCloudDirectEngine>;

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

} // namespace
} // namespace orv
