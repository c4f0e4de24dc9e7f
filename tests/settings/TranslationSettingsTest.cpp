#include "SettingsFixture.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace orv::test {

class TranslationSettingsTest : public SettingsFixture {};

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
    EXPECT_EQ(s.uiLanguage.get(), QString());
    EXPECT_FALSE(s.autoStartBackend.get());
    EXPECT_TRUE(s.autoStopBackend.get());
    EXPECT_EQ(s.overlayBgColor.get(), u"#90EE90"_s);
    EXPECT_EQ(s.overlayTextColor.get(), u"#000000"_s);
    EXPECT_TRUE(s.overlayBorderEnabled.get());
    EXPECT_EQ(s.overlayBorderColor.get(), u"#2E7D32"_s);
    EXPECT_EQ(s.overlayOpacity.get(), 0.85);
    EXPECT_TRUE(s.vadEnabled.get());
    EXPECT_EQ(s.vadSilenceDuration.get(), 600.0);
    EXPECT_EQ(s.vadThreshold.get(), -35.0F);
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
    s.uiLanguage.set(u"it"_s);
    s.autoStartBackend.set(true);
    s.autoStopBackend.set(false);
    s.overlayBgColor.set(u"#102030"_s);
    s.overlayTextColor.set(u"#FFFFFF"_s);
    s.overlayBorderEnabled.set(false);
    s.overlayBorderColor.set(u"#FF0000"_s);
    s.overlayOpacity.set(0.1);
    s.vadEnabled.set(false);
    s.vadSilenceDuration.set(750.5);
    s.vadThreshold.set(-40.5F);
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
        "voskHost": "vosk.local", "voskPort": 2701, "uiLanguage": "it", "autoStartBackend": true,
        "autoStopBackend": false, "overlayBgColor": "#102030", "overlayTextColor": "#FFFFFF",
        "overlayBorderEnabled": false, "overlayBorderColor": "#FF0000", "overlayOpacity": 0.1,
        "vadEnabled": false, "vadSilenceDuration": 750.5, "vadThreshold": -40.5})")
                                     .object();
    ASSERT_EQ(expected.size(), 48);
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
    EXPECT_EQ(again.uiLanguage.get(), u"it"_s);
    EXPECT_TRUE(again.autoStartBackend.get());
    EXPECT_FALSE(again.autoStopBackend.get());
    EXPECT_EQ(again.overlayBgColor.get(), u"#102030"_s);
    EXPECT_EQ(again.overlayTextColor.get(), u"#FFFFFF"_s);
    EXPECT_FALSE(again.overlayBorderEnabled.get());
    EXPECT_EQ(again.overlayBorderColor.get(), u"#FF0000"_s);
    EXPECT_EQ(again.overlayOpacity.get(), 0.1);
    EXPECT_FALSE(again.vadEnabled.get());
    EXPECT_EQ(again.vadSilenceDuration.get(), 750.5);
    EXPECT_EQ(again.vadThreshold.get(), -40.5F);
    // Written back unchanged, and complete: every field was loaded into the place it came from.
    TranslationSettings copy(*store_);
    const QStringList keys = expected.keys();
    for (const QString& key : keys) {
        EXPECT_EQ(store_->object(key), expected.value(key)) << key.toStdString();
    }
    EXPECT_EQ(store_->generation(), 0U);
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
    s.targetLang.watch(&s, [&](const QString& language) {
        published.append(language);
        EXPECT_EQ(store_->string(u"targetLang"_s), language);
    });
    s.speakTranslation.watch(&s, [&](bool on) {
        published.append(on ? u"speak"_s : u"silent"_s);
        EXPECT_EQ(store_->boolean(u"speakTranslations"_s), on);
    });
    s.saveTranscript.watch(
        &s, [&](bool on) { published.append(on ? u"transcript"_s : u"no transcript"_s); });
    s.targetLang.set(u"it"_s);
    s.targetLang.set(u"it"_s);
    s.speakTranslation.set(true);
    s.saveTranscript.set(false);
    EXPECT_EQ(published, (QStringList{u"it"_s, u"it"_s, u"speak"_s, u"no transcript"_s}));
}

TEST_F(TranslationSettingsTest, onlyTheTwoOverlaySettingsReachTheOverlayServerAndAfterTheWrite) {
    place("{}");
    DefaultsStore& store = open();
    QList<QPair<bool, std::int64_t>> seen;
    TranslationSettings s(store, [&](const TranslationSettings& /*settings*/) {
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

TEST_F(TranslationSettingsTest, theOverlayServerIsToldOnceEveryValueIsThere) {
    place(R"({"obsOverlayEnabled": true, "obsOverlayPort": 8100, "overlayBgColor": "#102030",
              "voskPort": 2701})");
    QStringList told;
    const TranslationSettings s(open(), [&](const TranslationSettings& settings) {
        told.append(u"%1 %2 %3"_s.arg(settings.obsOverlayPort.get())
                        .arg(settings.voskPort.get())
                        .arg(settings.overlayBgColor.get()));
    });
    EXPECT_EQ(told, (QStringList{u"8100 2701 #102030"_s, u"8100 2701 #102030"_s}));
}

TEST_F(TranslationSettingsTest, sharedIsTheOneThereIs) {
    const TranslationSettings& s = load("{}");
    EXPECT_EQ(&TranslationSettings::shared(), &s);
}

} // namespace orv::test
