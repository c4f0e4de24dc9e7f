#pragma once

#include "AudioSourceType.h"
#include "DefaultsStore.h"
#include "RunningApp.h"
#include "Setting.h"
#include "SharedInstance.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace orv {

/// The user's choices, one observable object. Reading and assigning happens on the main thread.
/// Assigning a persisted setting publishes the change and writes it to the store at once under its
/// key (the field's name, but for `speakTranslation`).
class TranslationSettings : public QObject {
    Q_OBJECT

  public:
    /// Loads every persisted value from `store`, which must outlive the object, and prints one line
    /// at the end. A value that is taken over goes through the same path as an assignment, so it is
    /// written back as the object's own.
    /// `applyOverlaySettings` is called whenever a setting of the browser overlay server has been
    /// written, also during loading: while this constructor still runs, before later settings have
    /// their values, and twice when both settings are stored.
    explicit TranslationSettings(DefaultsStore& store,
                                 const std::function<void()>& applyOverlaySettings = {},
                                 QObject* parent = nullptr);

    /// The process-wide instance: the one there is. Nothing inside the libraries asks for it.
    static TranslationSettings& shared();

    /// The key in the store of every field that is persisted, in the order of the fields.
    const QStringList& persistedKeys() const { return persistedKeys_; }

    Setting<QString> sourceLang;
    Setting<QString> targetLang;
    Setting<bool> showOverlay;
    Setting<bool> showOriginal;
    Setting<bool> obsOverlayEnabled;
    Setting<std::int64_t> obsOverlayPort;
    Setting<bool> vrchatEnabled;
    Setting<QString> vrchatHost;
    Setting<std::int64_t> vrchatPort;
    Setting<std::int64_t> vrchatSendMode; ///< 0 source text, 1 translation, 2 both.
    Setting<bool> vrchatPlaySound;
    Setting<bool> saveTranscript;   ///< Not persisted: true at every launch.
    Setting<bool> speakTranslation; ///< Stored under "speakTranslations".
    Setting<AudioSourceType> audioSourceType;
    Setting<std::optional<QString>> selectedInputDevice;
    Setting<std::optional<RunningApp>> selectedApp; ///< Not persisted.
    Setting<std::optional<QString>> selectedAppBundleId;
    Setting<float> audioGain; ///< Linear factor.
    Setting<bool> autoGain;
    Setting<QString> whisperModel;
    Setting<bool> networkAccess;
    Setting<bool> vmixEnabled;
    Setting<QString> vmixHost;
    Setting<std::int64_t> vmixPort;
    Setting<QString> vmixInput; ///< Input number or name.
    Setting<QString> vmixFieldTranslation;
    Setting<QString> vmixFieldOriginal;
    Setting<bool> vmixShowConnectionWarnings;
    Setting<QString> sttEngine; ///< Engine identifier.
    Setting<QString> deepgramApiKey;
    Setting<QString> assemblyaiApiKey;
    Setting<QString> googleApiKey;
    Setting<QString> googleServiceAccountPath;
    Setting<QString> googleProjectId;
    Setting<QString> googleLocation;
    Setting<QString> azureApiKey;
    Setting<QString> azureRegion;
    Setting<QString> voskHost;
    Setting<std::int64_t> voskPort;

  Q_SIGNALS:
    /// A setting was assigned; `key` is the field's name. Emitted after the write.
    void changed(const QString& key);

  private:
    void attach(DefaultsStore& store, const std::function<void()>& applyOverlaySettings);
    void load(const DefaultsStore& store);

    QStringList persistedKeys_;
    SharedInstance<TranslationSettings> sharedInstance_{*this};
};

/// The values that answer for keys the user never touched, in the order of registration. The shell
/// registers them before the settings object is created.
QList<std::pair<QString, QJsonValue>> defaultSettings();
void registerDefaultSettings(DefaultsStore& store);

} // namespace orv
