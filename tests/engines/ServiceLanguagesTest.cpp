// What the services really call the languages that can be chosen.

#include "ServiceLanguages.h"
#include "AssemblyAIMessages.h"
#include "AzureMessages.h"
#include "DeepgramMessages.h"
#include "GoogleCloudMessages.h"
#include "LanguageManager.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TEST(ServiceLanguages, knowsEveryLanguageThatCanBeChosen) {
    for (const Language& language : LanguageManager::allLanguages()) {
        EXPECT_EQ(serviceLanguage(language.code) == nullptr, language.code == u"auto")
            << qPrintable(language.code);
    }
}

TEST(ServiceLanguages, areNotWhatTheRuleWouldMakeOfThem) {
    EXPECT_EQ(azureSpokenLocale(u"cs"_s), u"cs-CZ"_s);
    EXPECT_EQ(azureSpokenLocale(u"he"_s), u"he-IL"_s);
    EXPECT_EQ(azureSpokenLocale(u"el"_s), u"el-GR"_s);
    EXPECT_EQ(azureSpokenLocale(u"no"_s), u"nb-NO"_s);
    EXPECT_EQ(googleSpokenLocale(u"he"_s), u"iw-IL"_s);
    EXPECT_EQ(googleSpokenLocale(u"uk"_s), u"uk-UA"_s);
    EXPECT_EQ(googleSpokenLocale(u"vi"_s), u"vi-VN"_s);
    EXPECT_EQ(googleSpokenLocale(u"yue"_s), u"yue-Hant-HK"_s);
}

TEST(ServiceLanguages, areEmptyWhereTheServiceLacksThem) {
    EXPECT_EQ(azureSpokenLocale(u"la"_s), QString());
    EXPECT_EQ(googleSpokenLocale(u"cy"_s), QString());
    EXPECT_FALSE(deepgramOffers(u"eu"_s));
    EXPECT_TRUE(deepgramOffers(u"af"_s)) << "by detection";
}

TEST(ServiceLanguages, aCodeThatNobodyKnowsFollowsTheRule) {
    EXPECT_EQ(azureSpokenLocale(u"xx"_s), u"xx-XX"_s);
    EXPECT_EQ(googleSpokenLocale(u"xx"_s), u"xx-XX"_s);
}

TEST(ServiceLanguages, chooseDeepgramsModel) {
    const auto query = [](const QString& language) {
        return deepgramStreamUrl(deepgramHost, 48000, language).query();
    };
    EXPECT_TRUE(query(u"cs"_s).contains(u"model=nova-2&"_s));
    EXPECT_TRUE(query(u"cs"_s).endsWith(u"language=cs"_s));
    EXPECT_TRUE(query(u"he"_s).contains(u"model=nova-3&"_s));
    EXPECT_TRUE(query(u"he"_s).contains(u"language=he"_s));
    for (const QString& detected : {u"auto"_s, u"af"_s}) {
        EXPECT_TRUE(query(detected).contains(u"model=nova-3&"_s)) << qPrintable(detected);
        EXPECT_TRUE(query(detected).contains(u"language=multi"_s)) << qPrintable(detected);
    }
}

TEST(ServiceLanguages, chooseAssemblyAIsModel) {
    const auto query = [](const QString& language) {
        return assemblyaiStreamUrl(assemblyaiStreamingHost, 48000, language)
            .query(QUrl::FullyDecoded);
    };
    EXPECT_TRUE(query(u"en"_s).contains(u"speech_model=universal-streaming-english"_s));
    EXPECT_TRUE(query(u"de"_s).contains(u"speech_model=universal-3-5-pro"_s));
    EXPECT_TRUE(query(u"de"_s).contains(uR"(language_codes=["de"])"_s));
    EXPECT_TRUE(query(u"auto"_s).contains(u"speech_model=universal-3-5-pro"_s));
    EXPECT_FALSE(query(u"auto"_s).contains(u"language_codes"_s));
    EXPECT_TRUE(query(u"cy"_s).contains(u"speech_model=whisper-rt"_s));
}

TEST(AzureTranslator, isAskedInItsOwnNamesOfTheLanguages) {
    EXPECT_EQ(azureTranslatorUrl(azureTranslatorHost, u"auto"_s, u"zh"_s).query(),
              u"api-version=3.0&to=zh-Hans"_s);
    EXPECT_EQ(azureTranslatorUrl(azureTranslatorHost, u"no"_s, u"sr"_s).query(),
              u"api-version=3.0&to=sr-Cyrl&from=nb"_s);
}

TEST(AzureTranslator, saysTheFirstTranslationOrNothing) {
    EXPECT_EQ(parseAzureTranslator(R"([{"translations":[{"text":"Hola","to":"es"}]}])"), u"Hola"_s);
    for (const char* body : {"", "[]", "{}", "<html>", "[[]]", R"([{"translations":[]}])",
                             R"([{"translations":[{"text":5}]}])"}) {
        EXPECT_FALSE(parseAzureTranslator(body)) << body;
    }
}

} // namespace
} // namespace orv
