#include "TranslationSettings.h"
#include "StoreFixture.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <functional>
#include <limits>

using namespace Qt::StringLiterals;

namespace orv::test {

class TranslationSettingsTest : public StoreFixture {
  protected:
    /// Settings over a file with `content`, as at a start of the program but for the registration.
    TranslationSettings& load(const QByteArray& content) {
        settings_.reset();
        place(content);
        return reload();
    }

    /// Closes the store and starts anew.
    TranslationSettings& reload() {
        settings_.reset();
        settings_ = std::make_unique<TranslationSettings>(open(), [this] { ++applied_; });
        return *settings_;
    }

    /// The stored value of a key, once all is written.
    QJsonValue stored(const QString& key) {
        EXPECT_TRUE(store_->waitUntilWritten());
        return json().value(key);
    }

    int applied_ = 0; ///< How often the overlay server was told of its settings.
    std::unique_ptr<TranslationSettings> settings_;
};

TEST_F(TranslationSettingsTest, everyFieldHasItsDefaultWhenNothingIsStored) {
    const TranslationSettings& s = load("{}");
    EXPECT_EQ(s.sourceLang.get(), u"auto"_s);
    EXPECT_EQ(s.targetLang.get(), u"de"_s);
    EXPECT_TRUE(s.showOverlay.get());
    EXPECT_FALSE(s.showOriginal.get());
    EXPECT_FALSE(s.obsOverlayEnabled.get());
    EXPECT_EQ(s.obsOverlayPort.get(), 8077);
    EXPECT_FALSE(s.vrchatEnabled.get());
    EXPECT_EQ(s.vrchatHost.get(), u"127.0.0.1"_s);
    EXPECT_EQ(s.vrchatPort.get(), 9000);
    EXPECT_EQ(s.vrchatSendMode.get(), 2);
    EXPECT_FALSE(s.vrchatPlaySound.get());
    EXPECT_TRUE(s.saveTranscript.get());
    EXPECT_FALSE(s.speakTranslation.get());
    EXPECT_EQ(s.audioSourceType.get(), AudioSourceType::Microphone);
    EXPECT_FALSE(s.selectedInputDevice.get());
    EXPECT_FALSE(s.selectedApp.get());
    EXPECT_FALSE(s.selectedAppBundleId.get());
    EXPECT_EQ(s.audioGain.get(), 1.0F);
    EXPECT_FALSE(s.autoGain.get());
    EXPECT_EQ(s.whisperModel.get(), u"base"_s);
    EXPECT_FALSE(s.networkAccess.get());
    EXPECT_FALSE(s.vmixEnabled.get());
    EXPECT_EQ(s.vmixHost.get(), u"127.0.0.1"_s);
    EXPECT_EQ(s.vmixPort.get(), 8088);
    EXPECT_EQ(s.vmixInput.get(), u"1"_s);
    EXPECT_EQ(s.vmixFieldTranslation.get(), u"Translation"_s);
    EXPECT_EQ(s.vmixFieldOriginal.get(), u"Original"_s);
    EXPECT_TRUE(s.vmixShowConnectionWarnings.get());
    EXPECT_EQ(s.sttEngine.get(), u"whisper"_s);
    EXPECT_EQ(s.deepgramApiKey.get(), QString());
    EXPECT_EQ(s.assemblyaiApiKey.get(), QString());
    EXPECT_EQ(s.googleApiKey.get(), QString());
    EXPECT_EQ(s.googleServiceAccountPath.get(), QString());
    EXPECT_EQ(s.googleProjectId.get(), QString());
    EXPECT_EQ(s.googleLocation.get(), u"global"_s);
    EXPECT_EQ(s.azureApiKey.get(), QString());
    EXPECT_EQ(s.azureRegion.get(), u"eastus"_s);
    EXPECT_EQ(s.voskHost.get(), u"localhost"_s);
    EXPECT_EQ(s.voskPort.get(), 2700);
}

TEST_F(TranslationSettingsTest, loadingFromAnEmptyStoreWritesNothingAndTellsTheOverlayNothing) {
    load("{}");
    EXPECT_EQ(store_->generation(), 0U);
    EXPECT_EQ(applied_, 0);
}

TEST_F(TranslationSettingsTest, everyPersistedFieldComesBackAndIsStoredWithItsType) {
    TranslationSettings& s = load("{}");
    s.sourceLang.set(u"en"_s);
    s.targetLang.set(u"fr"_s);
    s.showOverlay.set(false);
    s.showOriginal.set(true);
    s.obsOverlayEnabled.set(true);
    s.obsOverlayPort.set(8100);
    s.vrchatEnabled.set(true);
    s.vrchatHost.set(u"10.0.0.2"_s);
    s.vrchatPort.set(9001);
    s.vrchatSendMode.set(0);
    s.vrchatPlaySound.set(true);
    s.speakTranslation.set(true);
    s.audioSourceType.set(AudioSourceType::SingleApp);
    s.selectedInputDevice.set(u"mic-1"_s);
    s.selectedAppBundleId.set(u"org.example.player"_s);
    s.audioGain.set(0.1F);
    s.autoGain.set(true);
    s.whisperModel.set(u"large"_s);
    s.networkAccess.set(true);
    s.vmixEnabled.set(true);
    s.vmixHost.set(u"10.0.0.3"_s);
    s.vmixPort.set(8089);
    s.vmixInput.set(u"Titel"_s);
    s.vmixFieldTranslation.set(u"T"_s);
    s.vmixFieldOriginal.set(u"O"_s);
    s.vmixShowConnectionWarnings.set(false);
    s.sttEngine.set(u"azure"_s);
    s.deepgramApiKey.set(u"d"_s);
    s.assemblyaiApiKey.set(u"a"_s);
    s.googleApiKey.set(u"g"_s);
    s.googleServiceAccountPath.set(u"/home/x/konto.json"_s);
    s.googleProjectId.set(u"p"_s);
    s.googleLocation.set(u"eu"_s);
    s.azureApiKey.set(u"z"_s);
    s.azureRegion.set(u"westeurope"_s);
    s.voskHost.set(u"vosk.local"_s);
    s.voskPort.set(2701);
    ASSERT_TRUE(store_->waitUntilWritten());

    const QJsonObject expected = QJsonDocument::fromJson(R"({
        "sourceLang": "en", "targetLang": "fr", "showOverlay": false, "showOriginal": true,
        "obsOverlayEnabled": true, "obsOverlayPort": 8100, "vrchatEnabled": true,
        "vrchatHost": "10.0.0.2", "vrchatPort": 9001, "vrchatSendMode": 0, "vrchatPlaySound": true,
        "speakTranslations": true, "audioSourceType": 2, "selectedInputDevice": "mic-1",
        "selectedAppBundleId": "org.example.player", "audioGain": 0.10000000149011612,
        "autoGain": true, "whisperModel": "large", "networkAccess": true, "vmixEnabled": true,
        "vmixHost": "10.0.0.3", "vmixPort": 8089, "vmixInput": "Titel",
        "vmixFieldTranslation": "T", "vmixFieldOriginal": "O",
        "vmixShowConnectionWarnings": false, "sttEngine": "azure", "deepgramApiKey": "d",
        "assemblyaiApiKey": "a", "googleApiKey": "g",
        "googleServiceAccountPath": "/home/x/konto.json", "googleProjectId": "p",
        "googleLocation": "eu", "azureApiKey": "z", "azureRegion": "westeurope",
        "voskHost": "vosk.local", "voskPort": 2701})")
                                     .object();
    ASSERT_EQ(expected.size(), 37);
    EXPECT_EQ(json(), expected);

    const TranslationSettings& again = reload();
    EXPECT_EQ(again.sourceLang.get(), u"en"_s);
    EXPECT_EQ(again.showOverlay.get(), false);
    EXPECT_EQ(again.vrchatSendMode.get(), 0);
    EXPECT_EQ(again.speakTranslation.get(), true);
    EXPECT_EQ(again.audioSourceType.get(), AudioSourceType::SingleApp);
    EXPECT_EQ(again.selectedInputDevice.get(), u"mic-1"_s);
    EXPECT_EQ(again.audioGain.get(), 0.1F);
    EXPECT_EQ(again.voskPort.get(), 2701);
    // Written back unchanged, and complete: every field was loaded into the place it came from.
    TranslationSettings copy(*store_);
    const QStringList keys = expected.keys();
    for (const QString& key : keys) {
        EXPECT_EQ(store_->object(key), expected.value(key)) << key.toStdString();
    }
    EXPECT_EQ(store_->generation(), 0U);
}

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

TEST_F(TranslationSettingsTest, stringsAreTakenOverWhenPresentAndNotEmpty) {
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

TEST_F(TranslationSettingsTest, bothChoicesOfASourceAreTakenOverAlsoWhenEmpty) {
    for (const char* name : {"selectedInputDevice", "selectedAppBundleId"}) {
        EXPECT_TRUE(isTakenOver(open(), QString::fromLatin1(name), u"x"_s)) << name;
        EXPECT_TRUE(isTakenOver(open(), QString::fromLatin1(name), QString())) << name;
    }
}

TEST_F(TranslationSettingsTest, boolsAreTakenOverWhenTheKeyIsPresent) {
    for (const char* name : {"showOverlay", "showOriginal", "obsOverlayEnabled", "vrchatEnabled",
                             "vrchatPlaySound", "speakTranslations", "autoGain", "networkAccess",
                             "vmixEnabled", "vmixShowConnectionWarnings"}) {
        const QString key = QString::fromLatin1(name);
        EXPECT_TRUE(isTakenOver(open(), key, true)) << name;
        EXPECT_TRUE(isTakenOver(open(), key, false)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, u"true"_s)) << name;
    }
}

TEST_F(TranslationSettingsTest, portsAreTakenOverFromOneUpwards) {
    for (const char* name : {"obsOverlayPort", "vrchatPort", "vmixPort", "voskPort"}) {
        const QString key = QString::fromLatin1(name);
        EXPECT_TRUE(isTakenOver(open(), key, 1)) << name;
        EXPECT_TRUE(isTakenOver(open(), key, 70000)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, 0)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, -1)) << name;
        EXPECT_FALSE(isTakenOver(open(), key, u"8080"_s)) << name;
    }
}

TEST_F(TranslationSettingsTest, aStoredPortOfZeroOrBelowLeavesTheDefault) {
    const TranslationSettings& s =
        load(R"({"obsOverlayPort": 0, "vrchatPort": -1, "vmixPort": 0, "voskPort": -9000})");
    EXPECT_EQ(s.obsOverlayPort.get(), 8077);
    EXPECT_EQ(s.vrchatPort.get(), 9000);
    EXPECT_EQ(s.vmixPort.get(), 8088);
    EXPECT_EQ(s.voskPort.get(), 2700);
    EXPECT_EQ(applied_, 0);
}

TEST_F(TranslationSettingsTest, anyStoredSendModeIsTakenOver) {
    EXPECT_EQ(load(R"({"vrchatSendMode": 0})").vrchatSendMode.get(), 0);
    EXPECT_EQ(load(R"({"vrchatSendMode": 1})").vrchatSendMode.get(), 1);
    EXPECT_EQ(load(R"({"vrchatSendMode": 7})").vrchatSendMode.get(), 7);
}

TEST_F(TranslationSettingsTest, anUnknownAudioSourceLeavesTheMicrophone) {
    EXPECT_EQ(load(R"({"audioSourceType": 3})").audioSourceType.get(), AudioSourceType::Microphone);
    EXPECT_EQ(load(R"({"audioSourceType": -1})").audioSourceType.get(),
              AudioSourceType::Microphone);
    EXPECT_EQ(load(R"({"audioSourceType": 1})").audioSourceType.get(),
              AudioSourceType::SystemAudio);
    EXPECT_EQ(load(R"({"audioSourceType": 2})").audioSourceType.get(), AudioSourceType::SingleApp);
}

TEST_F(TranslationSettingsTest, aGainOfZeroOrBelowIsIgnored) {
    EXPECT_EQ(load(R"({"audioGain": 0})").audioGain.get(), 1.0F);
    EXPECT_EQ(load(R"({"audioGain": -2.5})").audioGain.get(), 1.0F);
    EXPECT_EQ(load(R"({"audioGain": 2})").audioGain.get(), 2.0F);
    EXPECT_EQ(load(R"({"audioGain": 0.1})").audioGain.get(), 0.1F);
}

TEST_F(TranslationSettingsTest, aFieldNameMayBeEmptyWhileRunningButNotAfterAStart) {
    TranslationSettings& s = load("{}");
    s.vmixFieldTranslation.set(QString());
    EXPECT_EQ(s.vmixFieldTranslation.get(), QString());
    EXPECT_EQ(stored(u"vmixFieldTranslation"_s), QJsonValue(QString()));
    EXPECT_EQ(reload().vmixFieldTranslation.get(), u"Translation"_s);
}

TEST_F(TranslationSettingsTest, speakTranslationIsStoredUnderItsPluralKey) {
    TranslationSettings& s = load("{}");
    s.speakTranslation.set(true);
    EXPECT_EQ(stored(u"speakTranslations"_s), QJsonValue(true));
    EXPECT_FALSE(store_->contains(u"speakTranslation"_s));
}

TEST_F(TranslationSettingsTest, whatIsNotPersistedStartsAnew) {
    TranslationSettings& s = load(R"({"saveTranscript": false})");
    EXPECT_TRUE(s.saveTranscript.get());
    s.saveTranscript.set(false);
    s.selectedApp.set(RunningApp{u"org.example"_s, u"Example"_s});
    EXPECT_EQ(store_->generation(), 0U);
    EXPECT_FALSE(store_->contains(u"selectedApp"_s));
    const TranslationSettings& again = reload();
    EXPECT_TRUE(again.saveTranscript.get());
    EXPECT_FALSE(again.selectedApp.get());
}

TEST_F(TranslationSettingsTest, noChoiceOfASourceRemovesTheKey) {
    TranslationSettings& s = load(R"({"selectedInputDevice": "m", "selectedAppBundleId": "a"})");
    s.selectedInputDevice.set(std::nullopt);
    s.selectedAppBundleId.set(std::nullopt);
    EXPECT_FALSE(store_->contains(u"selectedInputDevice"_s));
    EXPECT_FALSE(store_->contains(u"selectedAppBundleId"_s));
    EXPECT_FALSE(reload().selectedInputDevice.get());
}

TEST_F(TranslationSettingsTest, assigningWritesFirstThenPublishes) {
    TranslationSettings& s = load("{}");
    QStringList published;
    QObject::connect(&s, &TranslationSettings::changed, &s, [&](const QString& key) {
        published.append(key);
        EXPECT_EQ(store_->string(u"targetLang"_s), u"it"_s);
    });
    s.targetLang.set(u"it"_s);
    s.targetLang.set(u"it"_s);
    s.speakTranslation.set(true);
    s.saveTranscript.set(false);
    EXPECT_EQ(published, (QStringList{u"targetLang"_s, u"targetLang"_s, u"speakTranslation"_s,
                                      u"saveTranscript"_s}));
}

TEST_F(TranslationSettingsTest, onlyTheTwoOverlaySettingsReachTheOverlayServerAndAfterTheWrite) {
    place("{}");
    DefaultsStore& store = open();
    QList<QPair<bool, std::int64_t>> seen;
    TranslationSettings s(store, [&] {
        seen.append({store.boolean(u"obsOverlayEnabled"_s).value_or(false),
                     store.integer(u"obsOverlayPort"_s).value_or(-1)});
    });
    s.obsOverlayEnabled.set(true);
    s.obsOverlayPort.set(9100);
    s.obsOverlayEnabled.set(false);
    s.showOriginal.set(true);
    s.vrchatPort.set(1);
    s.vmixEnabled.set(true);
    EXPECT_EQ(seen, (QList<QPair<bool, std::int64_t>>{{true, -1}, {true, 9100}, {false, 9100}}));
}

TEST_F(TranslationSettingsTest, storedOverlaySettingsReachTheOverlayServerWhileLoading) {
    load(R"({"obsOverlayEnabled": true})");
    EXPECT_EQ(applied_, 1);
    applied_ = 0;
    load(R"({"obsOverlayPort": 8100})");
    EXPECT_EQ(applied_, 1);
    applied_ = 0;
    load(R"({"obsOverlayEnabled": false, "obsOverlayPort": 8100})");
    EXPECT_EQ(applied_, 2);
}

TEST_F(TranslationSettingsTest, loadingEndsWithOneLine) {
    load(R"({"sourceLang": "en", "targetLang": "fr", "audioSourceType": 2, "whisperModel": "tiny",
             "sttEngine": "deepgram"})");
    EXPECT_EQ(log_.lines(),
              QStringList{u"📋 Einstellungen geladen: en → fr, Quelle: 2, Whisper: tiny, Engine: "
                          "deepgram"_s});
}

TEST_F(TranslationSettingsTest, theLineStandsBehindTheOverlayAndTypeLines) {
    load(R"({"targetLang": 5})");
    ASSERT_EQ(log_.lines().size(), 2);
    EXPECT_EQ(log_.lines().last(),
              u"📋 Einstellungen geladen: auto → de, Quelle: 0, Whisper: base, Engine: whisper"_s);
}

TEST_F(TranslationSettingsTest, aPlaceholderInAValueStaysAsItIsInTheLine) {
    load(R"({"sourceLang": "%2", "targetLang": "%1"})");
    EXPECT_EQ(log_.lines().last(),
              u"📋 Einstellungen geladen: %2 → %1, Quelle: 0, Whisper: base, Engine: whisper"_s);
}

TEST_F(TranslationSettingsTest, oneValueOfTheWrongTypeSpoilsNoOther) {
    const TranslationSettings& s =
        load(R"({"audioGain": "laut", "targetLang": "fr", "vmixPort": true, "voskPort": 2701})");
    EXPECT_EQ(s.audioGain.get(), 1.0F);
    EXPECT_EQ(s.vmixPort.get(), 8088);
    EXPECT_EQ(s.targetLang.get(), u"fr"_s);
    EXPECT_EQ(s.voskPort.get(), 2701);
}

TEST_F(TranslationSettingsTest, theElevenRegisteredValuesStandInTheirOrder) {
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

TEST_F(TranslationSettingsTest, afterTheRegistrationAutoGainStartsOnAndNoDeviceIsAnEmptyName) {
    DefaultsStore& store = open();
    registerDefaultSettings(store);
    const TranslationSettings s(store);
    EXPECT_TRUE(s.autoGain.get());
    EXPECT_TRUE(s.showOverlay.get());
    EXPECT_EQ(s.selectedInputDevice.get(), QString());
    EXPECT_EQ(s.audioGain.get(), 1.0F);
    EXPECT_EQ(store.boolean(u"autoStartBackend"_s), false);
    EXPECT_EQ(store.boolean(u"autoStopBackend"_s), true);
    // Registered values count as present, so those that belong to a field become the object's own.
    ASSERT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(json().keys(),
              (QStringList{u"audioGain"_s, u"audioSourceType"_s, u"autoGain"_s,
                           u"selectedAppBundleId"_s, u"selectedInputDevice"_s, u"showOverlay"_s,
                           u"sourceLang"_s, u"speakTranslations"_s, u"targetLang"_s}));
}

TEST_F(TranslationSettingsTest, absentKeysOfOtherReadersAreAbsent) {
    DefaultsStore& store = open();
    registerDefaultSettings(store);
    const TranslationSettings s(store);
    for (const char* name : {"overlayBgColor", "overlayTextColor", "overlayBorderEnabled",
                             "overlayBorderColor", "overlayOpacity", "uiLanguage"}) {
        EXPECT_FALSE(store.contains(QString::fromLatin1(name))) << name;
    }
    EXPECT_TRUE(store.boolean(u"overlayBorderEnabled"_s).value_or(true));
}

TEST_F(TranslationSettingsTest, sharedIsTheOneThereIs) {
    const TranslationSettings& s = load("{}");
    EXPECT_EQ(&TranslationSettings::shared(), &s);
}

} // namespace orv::test
