#include "BackendMessages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QJsonObject parsed(const QByteArray& message) {
    return QJsonDocument::fromJson(message).object();
}

TEST(AudioMessage, carriesRateFormatAndLittleEndianSamples) {
    const std::vector<float> samples{0.0F, 1.0F, -1.0F, 0.5F};
    const QByteArray message = audioMessage(samples, 48000);
    EXPECT_EQ(parsed(message),
              (QJsonObject{
                  {u"type"_s, u"audio"_s},
                  {u"sample_rate"_s, 48000},
                  {u"format"_s, u"int16"_s},
                  {u"data"_s, QString::fromLatin1(
                                  QByteArray("\x00\x00\xff\x7f\x01\x80\xff\x3f", 8).toBase64())}}));
    EXPECT_FALSE(message.contains('\n'));
}

TEST(FlushAndStop, areBareTypes) {
    EXPECT_EQ(parsed(flushMessage()), (QJsonObject{{u"type"_s, u"flush"_s}}));
    EXPECT_EQ(parsed(stopMessage()), (QJsonObject{{u"type"_s, u"stop"_s}}));
}

TEST(Downstream, understandsAResult) {
    EXPECT_EQ(parseDownstream(R"({"type":"translation","original":"Hi","translation":"Hola"})"),
              DownstreamMessage(Result{u"Hi"_s, u"Hola"_s}));
}

TEST(Downstream, countsMissingAndMistypedTextsAsEmpty) {
    EXPECT_EQ(parseDownstream(R"({"type":"translation","original":7})"),
              DownstreamMessage(Result{}));
    EXPECT_EQ(parseDownstream(R"({"type":"status"})"), DownstreamMessage(StatusMessage{}));
}

TEST(Downstream, understandsAStatus) {
    EXPECT_EQ(parseDownstream(R"({"type":"status","status":"model_loading","message":"Lade"})"),
              DownstreamMessage(StatusMessage{u"model_loading"_s, u"Lade"_s, std::nullopt}));
}

TEST(Downstream, readsTheVersionOnlyAsAnInteger) {
    const auto version = [](const char* value) {
        const QByteArray message =
            QByteArray(R"({"type":"status","status":"backend_version","version":)") + value + "}";
        return std::get<StatusMessage>(parseDownstream(message)).version;
    };
    EXPECT_EQ(version("4"), 4);
    EXPECT_EQ(version("\"4\""), std::nullopt);
    EXPECT_EQ(version("4.5"), std::nullopt);
    EXPECT_EQ(version("null"), std::nullopt);
    EXPECT_EQ(version("-1"), -1);
}

StatusMessage status(const QByteArray& message) {
    return std::get<StatusMessage>(parseDownstream(message));
}

TEST(Downstream, readsTheCodeAndItsParameters) {
    const StatusMessage told = status(
        R"({"type":"status","status":"overloaded","message":"Zu viel","code":"session.behind",)"
        R"("parameters":{"seconds":12,"rate":1.5,"engine":"Vosk","translator":""}})");
    EXPECT_EQ(told.message, u"Zu viel"_s);
    EXPECT_EQ(told.notice, (BackendNotice{.code = u"session.behind"_s,
                                          .parameters = {{u"seconds"_s, u"12"_s},
                                                         {u"rate"_s, u"1.5"_s},
                                                         {u"engine"_s, u"Vosk"_s},
                                                         {u"translator"_s, QString()}}}));
    EXPECT_TRUE(told.notice.parameters.contains(u"translator"_s));
}

TEST(Downstream, readsWhatThereIsToTellAboutWhoServes) {
    const StatusMessage told = status(
        R"({"type":"status","status":"engine","message":"x","code":"engine.serving",)"
        R"("parameters":{"recogniser":"A"},"recognition":[{"code":"r","parameters":{"n":1}}],)"
        R"("translation":[{"code":"t"},{"code":"u","parameters":{}}]})");
    EXPECT_EQ(told.recognition, (QList<BackendNotice>{{u"r"_s, {{u"n"_s, u"1"_s}}}}));
    EXPECT_EQ(told.translation, (QList<BackendNotice>{{u"t"_s, {}}, {u"u"_s, {}}}));
}

TEST(Downstream, ignoresNoticesOfTheWrongType) {
    for (const char* rest : {R"("code":7)", R"("code":null,"parameters":[])",
                             R"("parameters":"x","recognition":{},"translation":7)",
                             R"("recognition":[7,null,[],"x",{},{"code":1},{"code":""}])"}) {
        const StatusMessage told =
            status(QByteArray(R"({"type":"status","status":"s","message":"m",)") + rest + "}");
        EXPECT_EQ(told, (StatusMessage{u"s"_s, u"m"_s, std::nullopt})) << rest;
    }
    const StatusMessage told = status(
        R"({"type":"status","code":"c","parameters":{"a":true,"b":null,"c":[1],"d":{},"e":"f"}})");
    EXPECT_EQ(told.notice.parameters, (QMap<QString, QString>{{u"e"_s, u"f"_s}}));
}

TEST(Downstream, readsNoMoreNoticesThanAnybodyReads) {
    QJsonArray many;
    for (int i = 0; i < 1000; ++i) {
        many.append(QJsonObject{{u"code"_s, u"c"_s}});
    }
    const QJsonObject message{{u"type"_s, u"status"_s}, {u"translation"_s, many}};
    EXPECT_EQ(status(QJsonDocument(message).toJson()).translation.size(), mostNotices);
}

TEST(Downstream, understandsTheFlushConfirmation) {
    EXPECT_EQ(parseDownstream(R"({"type":"flushed"})"), DownstreamMessage(FlushedMessage{}));
}

TEST(Downstream, ignoresWhatIsNotAnObjectWithAKnownType) {
    for (const char* message :
         {"", "{", "[]", "7", "null", "\"translation\"", "{}", R"({"type":7})",
          R"({"type":"else"})", R"({"Type":"flushed"})", "\xff\xfe", "{\"type\":\"flushed\"} x"}) {
        EXPECT_EQ(parseDownstream(message), DownstreamMessage()) << message;
    }
}

TEST(Downstream, survivesDeepNesting) {
    const QByteArray deep = QByteArray(100'000, '[');
    EXPECT_EQ(parseDownstream(deep), DownstreamMessage());
}

} // namespace
} // namespace orv
