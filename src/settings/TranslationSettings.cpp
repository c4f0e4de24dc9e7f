#include "TranslationSettings.h"

#include "Log.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

// Typed writes by value, under one name for every type.
void put(DefaultsStore& store, const QString& key, const QString& value) {
    store.setString(key, value);
}

void put(DefaultsStore& store, const QString& key, bool value) {
    store.setBool(key, value);
}

void put(DefaultsStore& store, const QString& key, std::int64_t value) {
    store.setInteger(key, value);
}

void put(DefaultsStore& store, const QString& key, float value) {
    store.setFloat(key, value);
}

void put(DefaultsStore& store, const QString& key, AudioSourceType value) {
    store.setInteger(key, static_cast<std::int64_t>(value));
}

void put(DefaultsStore& store, const QString& key, const std::optional<QString>& value) {
    if (value) {
        store.setString(key, *value);
    } else {
        store.remove(key);
    }
}

// What is taken over from the store at load, and on which condition.
void take(Setting<QString>& setting, const std::optional<QString>& stored) {
    if (stored && !stored->isEmpty()) {
        setting.set(*stored);
    }
}

void take(Setting<std::optional<QString>>& setting, const std::optional<QString>& stored) {
    if (stored) {
        setting.set(stored);
    }
}

void take(Setting<bool>& setting, std::optional<bool> stored) {
    if (stored) {
        setting.set(*stored);
    }
}

void take(Setting<AudioSourceType>& setting, std::optional<std::int64_t> stored) {
    if (stored && *stored >= static_cast<int>(AudioSourceType::Microphone) &&
        *stored <= static_cast<int>(AudioSourceType::SingleApp)) {
        setting.set(static_cast<AudioSourceType>(*stored));
    }
}

void takePort(Setting<std::int64_t>& setting, std::optional<std::int64_t> stored) {
    if (stored && *stored >= 1) {
        setting.set(*stored);
    }
}

} // namespace

TranslationSettings::TranslationSettings(DefaultsStore& store,
                                         const std::function<void()>& applyOverlaySettings,
                                         QObject* parent)
    : QObject(parent)
    , sourceLang(u"auto"_s)
    , targetLang(u"de"_s)
    , showOverlay(true)
    , showOriginal(false)
    , obsOverlayEnabled(false)
    , obsOverlayPort(8077)
    , vrchatEnabled(false)
    , vrchatHost(u"127.0.0.1"_s)
    , vrchatPort(9000)
    , vrchatSendMode(2)
    , vrchatPlaySound(false)
    , saveTranscript(true)
    , speakTranslation(false)
    , audioSourceType(AudioSourceType::Microphone)
    , selectedInputDevice(std::nullopt)
    , selectedApp(std::nullopt)
    , selectedAppBundleId(std::nullopt)
    , audioGain(1.0F)
    , autoGain(false)
    , whisperModel(u"base"_s)
    , networkAccess(false)
    , vmixEnabled(false)
    , vmixHost(u"127.0.0.1"_s)
    , vmixPort(8088)
    , vmixInput(u"1"_s)
    , vmixFieldTranslation(u"Translation"_s)
    , vmixFieldOriginal(u"Original"_s)
    , vmixShowConnectionWarnings(true)
    , sttEngine(u"whisper"_s)
    , deepgramApiKey(QString())
    , assemblyaiApiKey(QString())
    , googleApiKey(QString())
    , googleServiceAccountPath(QString())
    , googleProjectId(QString())
    , googleLocation(u"global"_s)
    , azureApiKey(QString())
    , azureRegion(u"eastus"_s)
    , voskHost(u"localhost"_s)
    , voskPort(2700) {
    attach(store, applyOverlaySettings);
    load(store);
}

void TranslationSettings::attach(DefaultsStore& store,
                                 const std::function<void()>& applyOverlaySettings) {
    const auto publish = [this](auto& setting, const QString& field) {
        setting.onAssigned([this, field](const auto&) { Q_EMIT changed(field); });
    };
    const auto persist = [this, &store](auto& setting, const QString& field, const QString& key,
                                        std::function<void()> afterwards) {
        persistedKeys_.append(key);
        setting.setField(field);
        setting.onAssigned(
            [this, &store, field, key, afterwards = std::move(afterwards)](const auto& value) {
                put(store, key, value);
                Q_EMIT changed(field);
                if (afterwards) {
                    afterwards();
                }
            });
    };
    const auto persistAs = [&](auto& setting, const QString& name) {
        persist(setting, name, name, {});
    };

    persistAs(sourceLang, u"sourceLang"_s);
    persistAs(targetLang, u"targetLang"_s);
    persistAs(showOverlay, u"showOverlay"_s);
    persistAs(showOriginal, u"showOriginal"_s);
    persist(obsOverlayEnabled, u"obsOverlayEnabled"_s, u"obsOverlayEnabled"_s,
            applyOverlaySettings);
    persist(obsOverlayPort, u"obsOverlayPort"_s, u"obsOverlayPort"_s, applyOverlaySettings);
    persistAs(vrchatEnabled, u"vrchatEnabled"_s);
    persistAs(vrchatHost, u"vrchatHost"_s);
    persistAs(vrchatPort, u"vrchatPort"_s);
    persistAs(vrchatSendMode, u"vrchatSendMode"_s);
    persistAs(vrchatPlaySound, u"vrchatPlaySound"_s);
    publish(saveTranscript, u"saveTranscript"_s);
    // Deliberately another key than the field's name: files with it are in people's homes.
    persist(speakTranslation, u"speakTranslation"_s, u"speakTranslations"_s, {});
    persistAs(audioSourceType, u"audioSourceType"_s);
    persistAs(selectedInputDevice, u"selectedInputDevice"_s);
    publish(selectedApp, u"selectedApp"_s);
    persistAs(selectedAppBundleId, u"selectedAppBundleId"_s);
    persistAs(audioGain, u"audioGain"_s);
    persistAs(autoGain, u"autoGain"_s);
    persistAs(whisperModel, u"whisperModel"_s);
    persistAs(networkAccess, u"networkAccess"_s);
    persistAs(vmixEnabled, u"vmixEnabled"_s);
    persistAs(vmixHost, u"vmixHost"_s);
    persistAs(vmixPort, u"vmixPort"_s);
    persistAs(vmixInput, u"vmixInput"_s);
    persistAs(vmixFieldTranslation, u"vmixFieldTranslation"_s);
    persistAs(vmixFieldOriginal, u"vmixFieldOriginal"_s);
    persistAs(vmixShowConnectionWarnings, u"vmixShowConnectionWarnings"_s);
    persistAs(sttEngine, u"sttEngine"_s);
    persistAs(deepgramApiKey, u"deepgramApiKey"_s);
    persistAs(assemblyaiApiKey, u"assemblyaiApiKey"_s);
    persistAs(googleApiKey, u"googleApiKey"_s);
    persistAs(googleServiceAccountPath, u"googleServiceAccountPath"_s);
    persistAs(googleProjectId, u"googleProjectId"_s);
    persistAs(googleLocation, u"googleLocation"_s);
    persistAs(azureApiKey, u"azureApiKey"_s);
    persistAs(azureRegion, u"azureRegion"_s);
    persistAs(voskHost, u"voskHost"_s);
    persistAs(voskPort, u"voskPort"_s);
}

void TranslationSettings::load(const DefaultsStore& store) {
    take(sourceLang, store.string(u"sourceLang"_s));
    take(targetLang, store.string(u"targetLang"_s));
    take(showOverlay, store.boolean(u"showOverlay"_s));
    take(showOriginal, store.boolean(u"showOriginal"_s));
    take(obsOverlayEnabled, store.boolean(u"obsOverlayEnabled"_s));
    takePort(obsOverlayPort, store.integer(u"obsOverlayPort"_s));
    take(vrchatEnabled, store.boolean(u"vrchatEnabled"_s));
    take(vrchatHost, store.string(u"vrchatHost"_s));
    takePort(vrchatPort, store.integer(u"vrchatPort"_s));
    if (const auto mode = store.integer(u"vrchatSendMode"_s)) {
        vrchatSendMode.set(*mode);
    }
    take(vrchatPlaySound, store.boolean(u"vrchatPlaySound"_s));
    take(speakTranslation, store.boolean(u"speakTranslations"_s));
    take(audioSourceType, store.integer(u"audioSourceType"_s));
    take(selectedInputDevice, store.string(u"selectedInputDevice"_s));
    take(selectedAppBundleId, store.string(u"selectedAppBundleId"_s));
    if (const auto gain = store.floatValue(u"audioGain"_s); gain && *gain > 0.0F) {
        audioGain.set(*gain);
    }
    take(autoGain, store.boolean(u"autoGain"_s));
    take(whisperModel, store.string(u"whisperModel"_s));
    take(networkAccess, store.boolean(u"networkAccess"_s));
    take(vmixEnabled, store.boolean(u"vmixEnabled"_s));
    take(vmixHost, store.string(u"vmixHost"_s));
    takePort(vmixPort, store.integer(u"vmixPort"_s));
    take(vmixInput, store.string(u"vmixInput"_s));
    take(vmixFieldTranslation, store.string(u"vmixFieldTranslation"_s));
    take(vmixFieldOriginal, store.string(u"vmixFieldOriginal"_s));
    take(vmixShowConnectionWarnings, store.boolean(u"vmixShowConnectionWarnings"_s));
    take(sttEngine, store.string(u"sttEngine"_s));
    take(deepgramApiKey, store.string(u"deepgramApiKey"_s));
    take(assemblyaiApiKey, store.string(u"assemblyaiApiKey"_s));
    take(googleApiKey, store.string(u"googleApiKey"_s));
    take(googleServiceAccountPath, store.string(u"googleServiceAccountPath"_s));
    take(googleProjectId, store.string(u"googleProjectId"_s));
    take(googleLocation, store.string(u"googleLocation"_s));
    take(azureApiKey, store.string(u"azureApiKey"_s));
    take(azureRegion, store.string(u"azureRegion"_s));
    take(voskHost, store.string(u"voskHost"_s));
    takePort(voskPort, store.integer(u"voskPort"_s));

    logLine(u"📋 Einstellungen geladen: %1 → %2, Quelle: %3, Whisper: %4, Engine: %5"_s.arg(
        sourceLang.get(), targetLang.get(),
        QString::number(static_cast<int>(audioSourceType.get())), whisperModel.get(),
        sttEngine.get()));
}

TranslationSettings& TranslationSettings::shared() {
    return SharedInstance<TranslationSettings>::get();
}

QList<std::pair<QString, QJsonValue>> defaultSettings() {
    return {
        {u"showOverlay"_s, true},
        {u"speakTranslations"_s, false},
        {u"sourceLang"_s, u"auto"_s},
        {u"targetLang"_s, u"de"_s},
        {u"audioSourceType"_s, 0},
        {u"selectedInputDevice"_s, QString()},
        {u"selectedAppBundleId"_s, QString()},
        {u"audioGain"_s, 1.0},
        {u"autoGain"_s, true}, // Unlike the field's default: users start with auto-gain on.
        {u"autoStartBackend"_s, false},
        {u"autoStopBackend"_s, true},
    };
}

void registerDefaultSettings(DefaultsStore& store) {
    store.registerDefaults(defaultSettings());
}

} // namespace orv
