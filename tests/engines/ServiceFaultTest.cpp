// What the services' refusals mean, without any service.

#include "ServiceFault.h"
#include "AssemblyAIMessages.h"
#include "AzureMessages.h"
#include "DeepgramMessages.h"
#include "GoogleCloudMessages.h"

#include <QSet>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using Kind = ServiceFault::Kind;

TEST(ServiceFault, blotsOutTheKeyAndIsNoLongerThanALine) {
    EXPECT_EQ(sayable(u" the key\nSECRET is\twrong "_s, u"SECRET"_s), u"the key … is wrong"_s);
    EXPECT_EQ(sayable(QString(1000, u'x'), {}).size(), 303);
    EXPECT_FALSE(sayable(QString(1000, u'x'), u"xxxxxxx..."_s).contains(u"xxxxxxx..."_s))
        << "not by the dots either";
    EXPECT_EQ(sayable(u"aa…bbb"_s, u"a…b"_s), u"b"_s) << "nor by what stands in its place";
    EXPECT_EQ(sayable(u"1…2"_s, u"…"_s), u"12"_s) << "and it ends";
    EXPECT_EQ(sayable(u"a"_s, QString()), u"a"_s);
}

TEST(ServiceFault, hasACodeOfItsOwnForEachKind) {
    QSet<QString> codes;
    for (int kind = 0; kind <= static_cast<int>(Kind::NotTranslated); ++kind) {
        const QString code = codeOf(static_cast<Kind>(kind));
        EXPECT_TRUE(code.startsWith(u"service."_s));
        EXPECT_FALSE(codes.contains(code));
        codes.insert(code);
    }
}

TEST(ServiceFault, isKnownByTheStatusAlone) {
    EXPECT_EQ(faultOfStatus(200), std::nullopt);
    EXPECT_EQ(faultOfStatus(204), std::nullopt);
    EXPECT_EQ(faultOfStatus(302), Kind::Unreadable);
    EXPECT_EQ(faultOfStatus(400), Kind::RequestRefused);
    EXPECT_EQ(faultOfStatus(401), Kind::KeyRefused);
    EXPECT_EQ(faultOfStatus(402), Kind::NoCredit);
    EXPECT_EQ(faultOfStatus(403), Kind::NotAllowed);
    EXPECT_EQ(faultOfStatus(429), Kind::TooManyRequests);
    EXPECT_EQ(faultOfStatus(500), Kind::ServiceFailed);
    EXPECT_EQ(faultOfStatus(503), Kind::ServiceFailed);
    EXPECT_EQ(faultOfStatus(504), Kind::TimedOut);
}

TEST(DeepgramFault, isReadFromTheHeaderAndTheContent) {
    const QByteArray body =
        R"({"err_code":"INVALID_AUTH","err_msg":"Invalid credentials.","request_id":"1"})";
    EXPECT_EQ(deepgramRefusal(401, "x", body),
              (ServiceFault{Kind::KeyRefused, u"Invalid credentials."_s}));
    EXPECT_EQ(deepgramRefusal(402, "No credit", {}),
              (ServiceFault{Kind::NoCredit, u"No credit"_s}));
    EXPECT_EQ(deepgramRefusal(401, {}, R"({"err_code":"INSUFFICIENT_PERMISSIONS"})").kind,
              Kind::NotAllowed);
    EXPECT_EQ(
        deepgramRefusal(400, "Bad Request: No such model/language/tier combination found.", {})
            .kind,
        Kind::LanguageUnknown);
    EXPECT_EQ(deepgramRefusal(400, "Failed to deserialize query parameters", {}).kind,
              Kind::RequestRefused);
    EXPECT_EQ(deepgramRefusal(429, {}, "<html>").kind, Kind::TooManyRequests);
    EXPECT_EQ(deepgramRefusal(200, {}, "<html>").kind, Kind::Unreadable);
    EXPECT_EQ(deepgramRefusal(302, {}, {}).kind, Kind::Unreadable);
}

TEST(DeepgramFault, isReadFromTheCloseCode) {
    EXPECT_EQ(deepgramClosing(1011, u"NET-0001"_s),
              (ServiceFault{Kind::ServiceFailed, u"NET-0001"_s}));
    EXPECT_EQ(deepgramClosing(1008, {}).kind, Kind::RequestRefused);
    EXPECT_EQ(deepgramClosing(1006, {}).kind, Kind::NetworkFailed);
}

TEST(AssemblyAIFault, isReadFromTheCloseCodeOrTheErrorBeforeIt) {
    EXPECT_EQ(
        assemblyaiClosing(1008, u"Unauthorized Connection: Missing Authorization header"_s).kind,
        Kind::KeyRefused);
    EXPECT_EQ(assemblyaiClosing(1008, u"Unauthorized Connection: insufficient balance"_s).kind,
              Kind::NoCredit);
    EXPECT_EQ(assemblyaiClosing(4002, {}).kind, Kind::NoCredit);
    EXPECT_EQ(assemblyaiClosing(3009, {}).kind, Kind::TooManyRequests);
    EXPECT_EQ(assemblyaiClosing(3008, {}).kind, Kind::ServiceFailed);
    EXPECT_EQ(assemblyaiClosing(1006, {}).kind, Kind::NetworkFailed);
    const auto told = assemblyaiError(
        R"({"type":"Error","error_code":3007,"error":"Input duration violation: 10 ms."})");
    EXPECT_EQ(told, (ServiceFault{Kind::RequestRefused, u"Input duration violation: 10 ms."_s}));
    EXPECT_EQ(assemblyaiError(R"({"type":"Turn","transcript":"error"})"), std::nullopt);
    EXPECT_EQ(assemblyaiError(R"({"type":"Turn","turn_order":0,"error":"Some remark"})"),
              std::nullopt);
    EXPECT_EQ(assemblyaiError(R"({"message_type":"FinalTranscript","error":"Some remark"})"),
              std::nullopt);
    EXPECT_EQ(assemblyaiError("not JSON"), std::nullopt);
}

TEST(AzureFault, isReadFromStatusAndContent) {
    EXPECT_EQ(azureFault(200, "<html>"), std::nullopt);
    const QByteArray denied =
        R"({"error":{"code":"401","message":"Access denied due to invalid subscription key."}})";
    EXPECT_EQ(
        azureFault(401, denied),
        (ServiceFault{Kind::KeyRefused, u"Access denied due to invalid subscription key."_s}));
    EXPECT_EQ(azureFault(403, R"({"error":{"message":"Out of call volume quota."}})")->kind,
              Kind::QuotaUsedUp);
    EXPECT_EQ(azureFault(403, "Forbidden")->kind, Kind::NotAllowed);
    EXPECT_EQ(azureFault(404, {})->kind, Kind::RequestRefused);
    EXPECT_EQ(azureFault(429, {})->kind, Kind::TooManyRequests);
    EXPECT_EQ(azureFault(503, "x")->kind, Kind::ServiceFailed);
}

TEST(AzureFault, isReadFromTheOutcomeOfARecognition) {
    const auto fault = [](const QByteArray& outcome) {
        return azureFault(200, R"({"RecognitionStatus":")" + outcome + R"("})");
    };
    EXPECT_EQ(fault("TooManyRequests")->kind, Kind::TooManyRequests);
    EXPECT_EQ(fault("Error")->kind, Kind::ServiceFailed);
    EXPECT_EQ(fault("Forbidden")->kind, Kind::NotAllowed);
    EXPECT_EQ(fault("BadRequest")->kind, Kind::RequestRefused);
    for (const char* heard : {"Success", "NoMatch", "InitialSilenceTimeout", "EndOfDictation"}) {
        EXPECT_EQ(fault(heard), std::nullopt) << heard;
    }
}

TEST(AzureTranslatorFault, isReadFromItsCode) {
    const auto fault = [](int status, const QByteArray& code) {
        return azureTranslatorFault(status, R"({"error":{"code":)" + code + R"(,"message":"m"}})");
    };
    EXPECT_EQ(fault(400, "400036"),
              (ServiceFault{Kind::LanguageUnknown, u"m"_s, u"Azure Translator"_s}));
    EXPECT_EQ(fault(403, "403001").kind, Kind::QuotaUsedUp);
    EXPECT_EQ(fault(401, "401015"), ServiceFault{Kind::NotTranslated});
    EXPECT_EQ(fault(401, "401000"), ServiceFault{Kind::NotTranslated});
    EXPECT_EQ(fault(429, "429001").kind, Kind::TooManyRequests);
    EXPECT_EQ(azureTranslatorFault(200, "<html>").kind, Kind::Unreadable);
}

QByteArray googleError(int code, const QByteArray& status, const QByteArray& message,
                       const QByteArray& reason) {
    return R"({"error":{"code":)" + QByteArray::number(code) + R"(,"message":")" + message +
           R"(","status":")" + status + R"(","details":[{"@type":"t","reason":")" + reason +
           R"("}]}})";
}

TEST(GoogleFault, ABadKeyIsAnErrorOfTheKeyAlthoughItIsCalledABadRequest) {
    const QByteArray body =
        googleError(400, "INVALID_ARGUMENT", "API key not valid. Please pass a valid API key.",
                    "API_KEY_INVALID");
    EXPECT_EQ(
        googleFault(400, body),
        (ServiceFault{Kind::KeyRefused, u"API key not valid. Please pass a valid API key."_s}));
    EXPECT_EQ(googleFault(401, googleError(401, "UNAUTHENTICATED", "API keys are not supported",
                                           "CREDENTIALS_MISSING"))
                  ->kind,
              Kind::KeyRefused);
}

TEST(GoogleFault, isReadFromItsReasonOrItsStatus) {
    EXPECT_EQ(googleFault(200, "{}"), std::nullopt);
    EXPECT_EQ(
        googleFault(403, googleError(403, "PERMISSION_DENIED", "m", "SERVICE_DISABLED"))->kind,
        Kind::NotAllowed);
    EXPECT_EQ(googleFault(403, R"({"error":{"code":403,"message":"Daily Limit Exceeded"}})")->kind,
              Kind::QuotaUsedUp);
    EXPECT_EQ(googleFault(429, googleError(429, "RESOURCE_EXHAUSTED", "m", ""))->kind,
              Kind::QuotaUsedUp);
    EXPECT_EQ(
        googleFault(400, R"({"error":{"code":400,"message":"Invalid language code: xx"}})")->kind,
        Kind::LanguageUnknown);
    EXPECT_EQ(googleFault(503, "<html>")->kind, Kind::ServiceFailed);
}

} // namespace
} // namespace orv
