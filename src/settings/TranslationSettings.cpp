#include "TranslationSettings.h"

#include "Log.h"
#include "ThreadChecks.h"

#include <map>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv {

TranslationSettings::TranslationSettings(DefaultsStore& store,
                                         const ApplyOverlaySettings& applyOverlaySettings,
                                         QObject* parent)
    : QObject(parent) {
    if (applyOverlaySettings) {
        watchAll({&obsOverlayEnabled, &obsOverlayPort}, this,
                 [this, applyOverlaySettings] { applyOverlaySettings(*this); });
    }
    load(store);
}

void TranslationSettings::load(DefaultsStore& store) {
    ORV_ON_MAIN();
    std::vector<AnySetting*> toWriteBack;
    for (AnySetting* setting : all()) {
        setting->keepIn(store);
        if (setting->takeStored() && setting->keeping() == Keeping::WrittenBack) {
            toWriteBack.push_back(setting);
        }
    }
    for (AnySetting* setting : toWriteBack) {
        setting->assignAgain();
    }

    logLine(u"📋 Einstellungen geladen: %1 → %2, Quelle: %3, Whisper: %4, Engine: %5"_s.arg(
        sourceLang.get(), targetLang.get(),
        QString::number(static_cast<int>(audioSourceType.get())), whisperModel.get(),
        sttEngine.get()));
}

TranslationSettings& TranslationSettings::shared() {
    return SharedInstance<TranslationSettings>::get();
}

QList<std::pair<QString, QJsonValue>> defaultSettings() {
    const SettingsList list;
    std::map<int, std::pair<QString, QJsonValue>> inOrder;
    for (const AnySetting* setting : list.all()) {
        if (const auto registered = setting->registered()) {
            inOrder.insert({registered->position, {setting->key(), registered->value}});
        }
    }
    QList<std::pair<QString, QJsonValue>> values;
    for (const auto& [position, value] : inOrder) {
        values.append(value);
    }
    return values;
}

void registerDefaultSettings(DefaultsStore& store) {
    store.registerDefaults(defaultSettings());
}

} // namespace orv
