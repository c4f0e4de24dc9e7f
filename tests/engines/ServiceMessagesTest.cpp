// What is said to the services and understood of their answers, without any of them.

#include "AssemblyAIMessages.h"
#include "AzureDirectEngine.h"
#include "AzureMessages.h"
#include "DeepgramMessages.h"
#include "EngineTimings.h"
#include "GoogleCloudMessages.h"
#include "GoogleStreamingEngine.h"
#include "ServiceEndpoints.h"
#include "ServiceLocales.h"
#include "ServiceRequests.h"
#include "TranslationMessages.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TEST(ServiceEndpoints, areThePublicHostsWithTls) {
    EXPECT_EQ(translationHost, u"https://translation.googleapis.com"_s);
    EXPECT_EQ(googleRecognitionHost, u"https://speech.googleapis.com"_s);
    EXPECT_EQ(azureRecognitionHost, u"https://{region}.stt.speech.microsoft.com"_s);
    EXPECT_EQ(azureTranslationHost, u"https://{region}.s2s.speech.microsoft.com"_s);
    EXPECT_EQ(deepgramHost, u"wss://api.deepgram.com"_s);
    EXPECT_EQ(assemblyaiHost, u"wss://api.assemblyai.com"_s);
}

TEST(ServiceEndpoints, leadToAHostOrToWhatStandsInForIt) {
    EXPECT_EQ(ServiceEndpoints().at(deepgramHost), deepgramHost);
    const ServiceEndpoints endpoints{{deepgramHost, u"ws://127.0.0.1:1"_s}};
    EXPECT_EQ(endpoints.at(deepgramHost), u"ws://127.0.0.1:1"_s);
    EXPECT_EQ(endpoints.at(assemblyaiHost), assemblyaiHost);
}

TEST(ServiceRequests, refuseAKeyThatWouldEndTheHeader) {
    EXPECT_EQ(headerValue(u"Token äb"_s), "Token \xC3\xA4"
                                          "b");
    EXPECT_TRUE(headerValue(u"key\r\nHost: elsewhere"_s).isNull());
    EXPECT_TRUE(headerValue(u"key\n"_s).isNull());
}

TEST(ServiceRequests, blotOutTheQueryInMessages) {
    const QUrl url(u"https://host/path?key=SECRET"_s);
    EXPECT_EQ(withoutQuery(u"cannot reach https://host/path?key=SECRET now"_s, url),
              u"cannot reach https://host/path?… now"_s);
    EXPECT_EQ(withoutQuery(u"refused"_s, url), u"refused"_s);
}

TEST(Deepgram, asksWithTheItemsInTheirOrder) {
    EXPECT_EQ(deepgramUrl(u"wss://host"_s, 48000, u"de"_s).toString(QUrl::FullyEncoded),
              u"wss://host/v1/listen?encoding=linear16&sample_rate=48000&channels=1&model=nova-2"
              u"&interim_results=true&punctuate=true&smart_format=true&language=de"_s);
}

TEST(Deepgram, leavesTheLanguageOutForAutomaticDetection) {
    EXPECT_FALSE(deepgramUrl(u"wss://host"_s, 48000, u"auto"_s).query().contains(u"language"_s));
}

TEST(Deepgram, keepsALanguageInsideItsItem) {
    EXPECT_TRUE(deepgramUrl(u"wss://host"_s, 16000, u"a&b=c"_s)
                    .toString(QUrl::FullyEncoded)
                    .endsWith(u"&language=a%26b%3Dc"_s));
}

TEST(Deepgram, hasNoAddressWithoutAHost) {
    EXPECT_FALSE(deepgramUrl(u"wss://not a host"_s, 48000, u"de"_s).isValid());
    EXPECT_FALSE(deepgramUrl(QString(), 48000, u"de"_s).isValid());
}

QByteArray deepgramResult(const QByteArray& transcript, const QByteArray& final) {
    return R"({"type":"Results","channel_index":[0,1],"duration":1.2,"start":0.0,"is_final":)" +
           final + R"(,"speech_final":true,"channel":{"alternatives":[{"transcript":")" +
           transcript + R"(","confidence":0.99,"words":[]},{"transcript":"other"}]}})";
}

TEST(Deepgram, takesTheFirstAlternativeOfAFinalResult) {
    EXPECT_EQ(deepgramTranscript(deepgramResult("Guten Tag.", "true")), u"Guten Tag."_s);
}

TEST(Deepgram, dropsInterimResultsEvenAtTheEndOfSpeech) {
    EXPECT_EQ(deepgramTranscript(deepgramResult("Guten", "false")), QString());
    EXPECT_EQ(
        deepgramTranscript(R"({"type":"Results","channel":{"alternatives":[{"transcript":"a"}]}})"),
        QString());
}

TEST(Deepgram, ignoresEverythingElse) {
    for (
        const char* message :
        {"", "{", "[]", "5", "<html>", R"({"type":"Metadata","request_id":"x"})",
         R"({"type":"UtteranceEnd","last_word_end":3.1})", R"({"type":"Results"})",
         R"({"type":"Results","is_final":true,"channel":[]})",
         R"({"type":"Results","is_final":true,"channel":{"alternatives":[]}})",
         R"({"type":"Results","is_final":true,"channel":{"alternatives":{"transcript":"a"}}})",
         R"({"type":"Results","is_final":true,"channel":{"alternatives":[{"transcript":"a"},7]}})",
         R"({"type":"Results","is_final":true,"channel":{"alternatives":[{"transcript":7}]}})",
         R"({"type":"Results","is_final":"true","channel":{"alternatives":[{"transcript":"a"}]}})",
         R"({"type":"results","is_final":true,"channel":{"alternatives":[{"transcript":"a"}]}})"}) {
        EXPECT_EQ(deepgramTranscript(message), QString()) << message;
    }
    EXPECT_EQ(deepgramTranscript(deepgramResult("", "true")), QString());
    EXPECT_EQ(deepgramTranscript(deepgramResult("a\xff\xfe", "true")), QString());
}

TEST(AssemblyAI, asksWithTheSampleRateAlone) {
    EXPECT_EQ(assemblyaiUrl(u"wss://host"_s, 48000).toString(),
              u"wss://host/v2/realtime/ws?sample_rate=48000"_s);
}

TEST(AssemblyAI, wrapsAudioWithoutSpacesIn17Bytes) {
    const QByteArray pcm(9600, '\xff');
    const QByteArray message = assemblyaiAudio(pcm);
    EXPECT_EQ(message.size(), 9600 / 3 * 4 + 17);
    EXPECT_FALSE(message.contains(' '));
    EXPECT_FALSE(message.contains('\n'));
    EXPECT_EQ(QJsonDocument::fromJson(message).object(),
              (QJsonObject{{u"audio_data"_s, QString::fromLatin1(pcm.toBase64())}}));
}

TEST(AssemblyAI, takesFinalTranscriptsOnly) {
    EXPECT_EQ(assemblyaiTranscript(R"({"message_type":"FinalTranscript","text":"Hi."})"), u"Hi."_s);
    for (const char* message :
         {R"({"message_type":"PartialTranscript","text":"Hi"})",
          R"({"message_type":"FinalTranscript","text":""})",
          R"({"message_type":"FinalTranscript","text":5})", R"({"message_type":"FinalTranscript"})",
          R"({"message_type":"SessionTerminated"})", R"({"error":"Not authorized"})", "[]", "",
          "{"}) {
        EXPECT_EQ(assemblyaiTranscript(message), QString()) << message;
    }
}

TEST(AssemblyAI, knowsTheBeginOfASession) {
    EXPECT_EQ(assemblyaiSession(R"({"message_type":"SessionBegins","session_id":"s-1"})"),
              u"s-1"_s);
    EXPECT_EQ(assemblyaiSession(R"({"message_type":"SessionBegins","session_id":1})"), QString());
    EXPECT_EQ(assemblyaiSession(R"({"message_type":"FinalTranscript","session_id":"s-1"})"),
              QString());
}

TEST(Azure, asksForATranslationInTheRegion) {
    EXPECT_EQ(azureTranslationUrl(u"https://{region}.host"_s, u"westeurope"_s, u"en-US"_s, u"de"_s)
                  .toString(QUrl::FullyEncoded),
              u"https://westeurope.host/speech/translation/cognitiveservices/v1"
              u"?from=en-US&to=de&api-version=3.0"_s);
}

TEST(Azure, asksForARecognitionInTheRegion) {
    EXPECT_EQ(azureRecognitionUrl(u"https://{region}.host"_s, u"eastus2"_s, u"de-DE"_s)
                  .toString(QUrl::FullyEncoded),
              u"https://eastus2.host/speech/recognition/conversation/cognitiveservices/v1"
              u"?language=de-DE&format=detailed"_s);
}

TEST(Azure, doesNotLetARegionChooseTheHost) {
    for (const QString& region : {u"evil.example/"_s, u"a@b"_s, u"a#"_s, u"a?b"_s, u""_s, u"ä"_s}) {
        EXPECT_FALSE(azureRecognitionUrl(u"https://{region}.host"_s, region, u"de-DE"_s).isValid())
            << region.toStdString();
    }
}

TEST(Azure, namesTheRateInTheContentType) {
    EXPECT_EQ(azureContentType(48000), "audio/wav; codecs=audio/pcm; samplerate=48000");
}

TEST(Azure, understandsADetailedRecognition) {
    EXPECT_EQ(parseAzureRecognition(
                  R"({"RecognitionStatus":"Success","Offset":100,"Duration":200,
                      "DisplayText":"Guten Tag.","NBest":[{"Confidence":0.9,"Lexical":"guten tag",
                      "Display":"Guten Tag."}]})"),
              u"Guten Tag."_s);
}

TEST(Azure, understandsATranslation) {
    EXPECT_EQ(parseAzureTranslation(
                  R"({"RecognitionStatus":"Success","DisplayText":"Hello.",
                      "Translations":[{"Language":"de","Text":"Hallo."},{"Text":"x"}]})"),
              (AzureResult{u"Hello."_s, u"Hallo."_s}));
}

TEST(Azure, yieldsNothingWhenNothingWasRecognised) {
    for (const char* body :
         {R"({"RecognitionStatus":"NoMatch","DisplayText":"x","Translations":[{"Text":"y"}]})",
          R"({"RecognitionStatus":"InitialSilenceTimeout"})", R"({"RecognitionStatus":"Success"})",
          R"({"DisplayText":"x"})", R"({"error":{"code":"401","message":"denied"}})", "{}", "[]"}) {
        EXPECT_EQ(parseAzureTranslation(body), AzureResult()) << body;
        EXPECT_EQ(parseAzureRecognition(body), QString()) << body;
    }
}

TEST(Azure, yieldsNothingWhenHalfOfATranslationIsMissing) {
    for (const char* body :
         {R"({"RecognitionStatus":"Success","DisplayText":"x"})",
          R"({"RecognitionStatus":"Success","DisplayText":"x","Translations":[]})",
          R"({"RecognitionStatus":"Success","DisplayText":"x","Translations":[{"Text":5}]})",
          R"({"RecognitionStatus":"Success","Translations":[{"Text":"y"}]})"}) {
        EXPECT_EQ(parseAzureTranslation(body), AzureResult()) << body;
    }
}

TEST(Azure, tellsWhatIsNotJson) {
    for (const char* body : {"", "<html></html>", R"({"RecognitionStatus":"Succ)"}) {
        EXPECT_FALSE(parseAzureTranslation(body)) << body;
        EXPECT_FALSE(parseAzureRecognition(body)) << body;
    }
}

TEST(GoogleCloud, asksWithTheKeyAsGiven) {
    EXPECT_EQ(googleRecognitionUrl(u"https://host"_s, u"K-1_2"_s).toString(),
              u"https://host/v1/speech:recognize?key=K-1_2"_s);
    EXPECT_FALSE(googleRecognitionUrl(u"https://host"_s, u"not a key"_s).isValid());
}

TEST(GoogleCloud, sendsTheRawPcmInBase64) {
    const QByteArray pcm("\x01\x02\xff\xfe", 4);
    const QJsonObject body =
        QJsonDocument::fromJson(googleRecognitionBody(pcm.toBase64(), u"de-DE"_s, 48000)).object();
    EXPECT_EQ(body,
              (QJsonObject{{u"config"_s, QJsonObject{{u"encoding"_s, u"LINEAR16"_s},
                                                     {u"sampleRateHertz"_s, 48000},
                                                     {u"languageCode"_s, u"de-DE"_s},
                                                     {u"enableAutomaticPunctuation"_s, true}}},
                           {u"audio"_s, QJsonObject{{u"content"_s, u"AQL//g=="_s}}}}));
}

TEST(GoogleCloud, trimsTheFirstResult) {
    EXPECT_EQ(parseGoogleRecognition(
                  R"({"results":[{"alternatives":[{"transcript":" Guten Tag.\n","confidence":0.9},
                      {"transcript":"x"}]},{"alternatives":[{"transcript":"second"}]}],
                      "totalBilledTime":"15s"})"),
              u"Guten Tag."_s);
}

TEST(GoogleCloud, yieldsNothingWhenSomethingIsMissing) {
    for (const char* body :
         {"{}", "[]", R"({"totalBilledTime":"15s"})", R"({"results":[]})", R"({"results":[{}]})",
          R"({"results":[{"alternatives":[]}]})", R"({"results":[{"alternatives":[{}]}]})",
          R"({"error":{"code":400,"message":"API key not valid","status":"INVALID_ARGUMENT"}})"}) {
        EXPECT_EQ(parseGoogleRecognition(body), QString()) << body;
    }
    EXPECT_FALSE(parseGoogleRecognition("<html>"));
    EXPECT_FALSE(parseGoogleRecognition(R"({"results":[{"alt)"));
}

TEST(Translation, isTheFirstOneOrNothing) {
    for (const char* body : {"", "[]", "{}", R"({"data":[]})", R"({"data":{"translations":{}}})",
                             R"({"data":{"translations":[]}})",
                             R"({"data":{"translations":[{"translatedText":5}]}})"}) {
        EXPECT_EQ(translatedTextFromResponse(body), QString()) << body;
    }
    EXPECT_EQ(translatedTextFromResponse(
                  R"({"data":{"translations":[{"translatedText":"a"},{"translatedText":"b"}]}})"),
              u"a"_s);
    EXPECT_FALSE(parseTranslation("<html>"));
}

TEST(Locales, ofAzure) {
    EXPECT_EQ(azureLocale(u"no"_s), u"nb-NO"_s);
    EXPECT_EQ(azureLocale(u"auto"_s), u"de-DE"_s);
    EXPECT_EQ(azureLocale(u"cs"_s), u"cs-CS"_s);
    QStringList locales;
    for (const char16_t* code :
         {u"de", u"en", u"es", u"fr", u"it", u"pt", u"nl", u"pl", u"ru", u"zh", u"ja", u"ko", u"ar",
          u"hi", u"tr", u"sv", u"da", u"fi", u"el"}) {
        locales.append(azureLocale(QString::fromUtf16(code)));
    }
    EXPECT_EQ(locales.join(u' '),
              u"de-DE en-US es-ES fr-FR it-IT pt-PT nl-NL pl-PL ru-RU zh-CN ja-JP ko-KR ar-SA "
              u"hi-IN tr-TR sv-SE da-DK fi-FI el-GR"_s);
}

TEST(Locales, ofGoogle) {
    EXPECT_EQ(googleLocale(u"auto"_s), u"de-DE"_s);
    EXPECT_EQ(googleLocale(u"sv"_s), u"sv-SV"_s);
    EXPECT_EQ(googleLocale(u"no"_s), u"no-NO"_s);
    QStringList locales;
    for (const char16_t* code : {u"de", u"en", u"es", u"fr", u"it", u"pt", u"nl", u"pl", u"ru",
                                 u"zh", u"ja", u"ko", u"ar", u"hi", u"tr"}) {
        locales.append(googleLocale(QString::fromUtf16(code)));
    }
    EXPECT_EQ(locales.join(u' '), u"de-DE en-US es-ES fr-FR it-IT pt-PT nl-NL pl-PL ru-RU zh-CN "
                                  u"ja-JP ko-KR ar-SA hi-IN tr-TR"_s);
}

TEST(Locales, compareTheirFirstTwoCharacters) {
    EXPECT_TRUE(isLanguageOf(u"de"_s, u"de-DE"_s));
    EXPECT_FALSE(isLanguageOf(u"no"_s, u"nb-NO"_s));
    EXPECT_FALSE(isLanguageOf(u"de-DE"_s, u"de-DE"_s));
}

/// One line for each: "identifier=display name".
QString listed(std::span<const ServiceRegion> regions) {
    QString lines;
    for (const ServiceRegion& region : regions) {
        lines += region.identifier + u'=' + region.displayName + u'\n';
    }
    return lines;
}

TEST(Regions, areTheOnesOfAzureInTheirOrder) {
    EXPECT_EQ(listed(azureRegions()), u"eastus=East US (Virginia)\n"
                                      u"eastus2=East US 2\n"
                                      u"centralus=Central US\n"
                                      u"northcentralus=North Central US\n"
                                      u"southcentralus=South Central US\n"
                                      u"westus=West US\n"
                                      u"westus2=West US 2\n"
                                      u"westus3=West US 3\n"
                                      u"canadacentral=Canada Central\n"
                                      u"northeurope=North Europe (Ireland)\n"
                                      u"westeurope=West Europe (Netherlands)\n"
                                      u"uksouth=UK South\n"
                                      u"francecentral=France Central\n"
                                      u"germanywestcentral=Germany West Central\n"
                                      u"switzerlandnorth=Switzerland North\n"
                                      u"norwayeast=Norway East\n"
                                      u"swedencentral=Sweden Central\n"
                                      u"eastasia=East Asia (Hong Kong)\n"
                                      u"southeastasia=Southeast Asia (Singapore)\n"
                                      u"japaneast=Japan East\n"
                                      u"japanwest=Japan West\n"
                                      u"koreacentral=Korea Central\n"
                                      u"australiaeast=Australia East\n"
                                      u"centralindia=Central India\n"
                                      u"southindia=South India\n"
                                      u"uaenorth=UAE North\n"
                                      u"southafricanorth=South Africa North\n"
                                      u"brazilsouth=Brazil South\n"_s);
}

TEST(Regions, areTheOnesOfGoogleInTheirOrder) {
    EXPECT_EQ(listed(googleLocations()), u"global=Global\n"
                                         u"us-central1=US Central (Iowa)\n"
                                         u"us-east1=US East (South Carolina)\n"
                                         u"us-west1=US West (Oregon)\n"
                                         u"europe-west1=Europe West (Belgium)\n"
                                         u"europe-west4=Europe West 4 (Netherlands)\n"
                                         u"europe-west3=Europe West 3 (Frankfurt)\n"
                                         u"asia-southeast1=Asia Southeast (Singapore)\n"
                                         u"asia-northeast1=Asia Northeast (Tokyo)\n"
                                         u"asia-south1=Asia South (Mumbai)\n"_s);
}

TEST(EngineTimings, areTheProgramsOwn) {
    using namespace std::chrono_literals;
    const EngineTimings timings;
    EXPECT_EQ(timings.streamRequest, 60s);
    EXPECT_EQ(timings.streamStall, 7s);
    EXPECT_EQ(timings.ping, 2s);
    EXPECT_EQ(timings.oldestSpeech, 15s);
    EXPECT_EQ(timings.keepAlive, 5s);
    EXPECT_EQ(timings.streamFarewell, 1s);
    EXPECT_EQ(timings.recognition, 15s);
    EXPECT_EQ(timings.translation, 10s);
}

} // namespace
} // namespace orv
