// What is taken over from the store, and on which condition.

#include "SettingsFixture.h"

using namespace Qt::StringLiterals;

namespace orv::test {

class SettingsLoadingTest : public SettingsFixture {};

/// Loads `key` = `value` and gives back whether the object took it over, that is, wrote it back
/// after the file's own value was taken away from under it.
bool isTakenOver(DefaultsStore& store, const QString& key, const QJsonValue& value) {
    store.remove(key);
    store.registerDefaults({{key, value}});
    const std::uint64_t before = store.generation();
    const TranslationSettings settings(store);
    store.registerDefaults({{key, QJsonValue::Undefined}});
    return store.generation() > before && store.object(key) == value;
}

TEST_F(SettingsLoadingTest, stringsAreTakenOverWhenPresentAndNotEmpty) {
    for (const char* name :
         {"sourceLang", "targetLang", "vrchatHost", "whisperModel", "vmixHost", "vmixInput",
          "vmixFieldTranslation", "vmixFieldOriginal", "sttEngine", "deepgramApiKey",
          "assemblyaiApiKey", "googleApiKey", "googleServiceAccountPath", "googleProjectId",
          "googleLocation", "azureApiKey", "azureRegion", "voskHost"}) {
        const QString key = QString::fromLatin1(name);
        EXPECT_TRUE(isTakenOver(open(), key, u"x"_s)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, QString())) << name;
        EXPECT_FALSE(isTakenOver(open(), key, 5)) << name;
    }
}

TEST_F(SettingsLoadingTest, bothChoicesOfASourceAreTakenOverAlsoWhenEmpty) {
    for (const char* name : {"selectedInputDevice", "selectedAppBundleId"}) {
        EXPECT_TRUE(isTakenOver(open(), QString::fromLatin1(name), u"x"_s)) << name;
        EXPECT_TRUE(isTakenOver(open(), QString::fromLatin1(name), QString())) << name;
    }
}

TEST_F(SettingsLoadingTest, boolsAreTakenOverWhenTheKeyIsPresent) {
    for (const char* name : {"showOverlay", "showOriginal", "obsOverlayEnabled", "vrchatEnabled",
                             "vrchatPlaySound", "speakTranslations", "autoGain", "networkAccess",
                             "vmixEnabled", "vmixShowConnectionWarnings"}) {
        const QString key = QString::fromLatin1(name);
        EXPECT_TRUE(isTakenOver(open(), key, true)) << name;
        EXPECT_TRUE(isTakenOver(open(), key, false)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, u"true"_s)) << name;
    }
}

TEST_F(SettingsLoadingTest, portsAreTakenOverFromOneUpwards) {
    for (const char* name : {"obsOverlayPort", "vrchatPort", "vmixPort", "voskPort"}) {
        const QString key = QString::fromLatin1(name);
        EXPECT_TRUE(isTakenOver(open(), key, 1)) << name;
        EXPECT_TRUE(isTakenOver(open(), key, 70000)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, 0)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, -1)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, u"8080"_s)) << name;
    }
}

TEST_F(SettingsLoadingTest, aStoredPortOfZeroOrBelowLeavesTheDefault) {
    const TranslationSettings& s =
        load(R"({"obsOverlayPort": 0, "vrchatPort": -1, "vmixPort": 0, "voskPort": -9000})");
    EXPECT_EQ(s.obsOverlayPort.get(), 8077);
    EXPECT_EQ(s.vrchatPort.get(), 9000);
    EXPECT_EQ(s.vmixPort.get(), 8088);
    EXPECT_EQ(s.voskPort.get(), 2700);
    EXPECT_EQ(applied_, 0);
}

TEST_F(SettingsLoadingTest, anyStoredSendModeIsTakenOver) {
    EXPECT_EQ(load(R"({"vrchatSendMode": 0})").vrchatSendMode.get(), 0);
    EXPECT_EQ(load(R"({"vrchatSendMode": 1})").vrchatSendMode.get(), 1);
    EXPECT_EQ(load(R"({"vrchatSendMode": 7})").vrchatSendMode.get(), 7);
}

TEST_F(SettingsLoadingTest, anUnknownAudioSourceLeavesTheMicrophone) {
    EXPECT_EQ(load(R"({"audioSourceType": 3})").audioSourceType.get(), AudioSourceType::Microphone);
    EXPECT_EQ(load(R"({"audioSourceType": -1})").audioSourceType.get(),
              AudioSourceType::Microphone);
    EXPECT_EQ(load(R"({"audioSourceType": 1})").audioSourceType.get(),
              AudioSourceType::SystemAudio);
    EXPECT_EQ(load(R"({"audioSourceType": 2})").audioSourceType.get(), AudioSourceType::SingleApp);
}

TEST_F(SettingsLoadingTest, aGainOfZeroOrBelowIsIgnored) {
    EXPECT_EQ(load(R"({"audioGain": 0})").audioGain.get(), 1.0F);
    EXPECT_EQ(load(R"({"audioGain": -2.5})").audioGain.get(), 1.0F);
    EXPECT_EQ(load(R"({"audioGain": 2})").audioGain.get(), 2.0F);
    EXPECT_EQ(load(R"({"audioGain": 0.1})").audioGain.get(), 0.1F);
}

TEST_F(SettingsLoadingTest, aPauseOfNothingAndALevelAboveNothingAreIgnored) {
    const TranslationSettings& s = load(R"({"vadSilenceDuration": 0, "vadThreshold": 1})");
    EXPECT_TRUE(s.vadEnabled.get());
    EXPECT_EQ(s.vadSilenceDuration.get(), 600.0);
    EXPECT_EQ(s.vadThreshold.get(), -35.0F);
    EXPECT_EQ(load(R"({"vadThreshold": 0})").vadThreshold.get(), -35.0F);
    EXPECT_EQ(load(R"({"vadSilenceDuration": -5})").vadSilenceDuration.get(), 600.0);
}

TEST_F(SettingsLoadingTest, whatOnlyAnAssignmentKeepsIsTakenOverAndNotWrittenBack) {
    DefaultsStore& store = open();
    store.registerDefaults({{u"uiLanguage"_s, u"pt"_s},
                            {u"autoStartBackend"_s, true},
                            {u"overlayBgColor"_s, QString()},
                            {u"overlayTextColor"_s, u"red"_s},
                            {u"overlayBorderEnabled"_s, false},
                            {u"overlayOpacity"_s, 7},
                            {u"vadEnabled"_s, false},
                            {u"vadSilenceDuration"_s, 700},
                            {u"vadThreshold"_s, -20}});
    const TranslationSettings s(store);
    EXPECT_EQ(s.uiLanguage.get(), u"pt"_s);
    EXPECT_TRUE(s.autoStartBackend.get());
    EXPECT_EQ(s.overlayBgColor.get(), QString());
    EXPECT_EQ(s.overlayTextColor.get(), u"red"_s);
    EXPECT_FALSE(s.overlayBorderEnabled.get());
    EXPECT_EQ(s.overlayOpacity.get(), 7.0);
    EXPECT_FALSE(s.vadEnabled.get());
    EXPECT_EQ(s.vadSilenceDuration.get(), 700.0);
    EXPECT_EQ(s.vadThreshold.get(), -20.0F);
    EXPECT_EQ(store.generation(), 0U);
}

TEST_F(SettingsLoadingTest, loadingEndsWithOneLine) {
    load(R"({"sourceLang": "en", "targetLang": "fr", "audioSourceType": 2, "whisperModel": "tiny",
             "sttEngine": "deepgram"})");
    EXPECT_EQ(log_.lines(),
              QStringList{u"📋 Einstellungen geladen: en → fr, Quelle: 2, Whisper: tiny, Engine: "
                          "deepgram"_s});
}

TEST_F(SettingsLoadingTest, theLineStandsBehindTheOverlayAndTypeLines) {
    load(R"({"targetLang": 5})");
    ASSERT_EQ(log_.lines().size(), 2);
    EXPECT_EQ(log_.lines().last(),
              u"📋 Einstellungen geladen: auto → de, Quelle: 0, Whisper: base, Engine: whisper"_s);
}

TEST_F(SettingsLoadingTest, aPlaceholderInAValueStaysAsItIsInTheLine) {
    load(R"({"sourceLang": "%2", "targetLang": "%1"})");
    EXPECT_EQ(log_.lines().last(),
              u"📋 Einstellungen geladen: %2 → %1, Quelle: 0, Whisper: base, Engine: whisper"_s);
}

TEST_F(SettingsLoadingTest, oneValueOfTheWrongTypeSpoilsNoOther) {
    const TranslationSettings& s =
        load(R"({"audioGain": "laut", "targetLang": "fr", "vmixPort": true, "voskPort": 2701})");
    EXPECT_EQ(s.audioGain.get(), 1.0F);
    EXPECT_EQ(s.vmixPort.get(), 8088);
    EXPECT_EQ(s.targetLang.get(), u"fr"_s);
    EXPECT_EQ(s.voskPort.get(), 2701);
}

TEST_F(SettingsLoadingTest, theElevenRegisteredValuesStandInTheirOrder) {
    const QList<std::pair<QString, QJsonValue>> expected = {
        {u"showOverlay"_s, true},
        {u"speakTranslations"_s, false},
        {u"sourceLang"_s, u"auto"_s},
        {u"targetLang"_s, u"de"_s},
        {u"audioSourceType"_s, 0},
        {u"selectedInputDevice"_s, QString()},
        {u"selectedAppBundleId"_s, QString()},
        {u"audioGain"_s, 1.0},
        {u"autoGain"_s, true},
        {u"autoStartBackend"_s, false},
        {u"autoStopBackend"_s, true},
    };
    EXPECT_EQ(defaultSettings(), expected);
}

TEST_F(SettingsLoadingTest, afterTheRegistrationAutoGainStartsOnAndNoDeviceIsAnEmptyName) {
    DefaultsStore& store = open();
    registerDefaultSettings(store);
    const TranslationSettings s(store);
    EXPECT_TRUE(s.autoGain.get());
    EXPECT_TRUE(s.showOverlay.get());
    EXPECT_EQ(s.selectedInputDevice.get(), QString());
    EXPECT_EQ(s.audioGain.get(), 1.0F);
    EXPECT_FALSE(s.autoStartBackend.get());
    EXPECT_TRUE(s.autoStopBackend.get());
    // Registered values count as present, so most of them become the object's own.
    ASSERT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(json().keys(),
              (QStringList{u"audioGain"_s, u"audioSourceType"_s, u"autoGain"_s,
                           u"selectedAppBundleId"_s, u"selectedInputDevice"_s, u"showOverlay"_s,
                           u"sourceLang"_s, u"speakTranslations"_s, u"targetLang"_s}));
}

TEST_F(SettingsLoadingTest, keysThatNobodyChoseStayAbsent) {
    DefaultsStore& store = open();
    registerDefaultSettings(store);
    const TranslationSettings s(store);
    for (const char* name :
         {"overlayBgColor", "overlayTextColor", "overlayBorderEnabled", "overlayBorderColor",
          "overlayOpacity", "uiLanguage", "vadEnabled", "vadSilenceDuration", "vadThreshold"}) {
        EXPECT_FALSE(store.contains(QString::fromLatin1(name))) << name;
    }
    EXPECT_TRUE(s.overlayBorderEnabled.get());
}

} // namespace orv::test
