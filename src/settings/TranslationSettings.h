#pragma once

#include "DefaultsStore.h"
#include "SettingsList.h"
#include "SharedInstance.h"

#include <QJsonValue>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <utility>

namespace orv {

/// The user's choices, one observable object: the list of settings, tied to a store. Reading,
/// assigning and watching happens on the main thread. Assigning a setting that is kept writes it to
/// the store at once under its key and then tells who watches it.
class TranslationSettings : public QObject, public SettingsList {
    Q_OBJECT

  public:
    using ApplyOverlaySettings = std::function<void(const TranslationSettings& settings)>;

    /// Loads every kept value from `store`, which must outlive the object, and prints one line at
    /// the end. All values are there before the first one is told and written back, which goes the
    /// way of an assignment.
    /// `applyOverlaySettings` is called whenever a setting of the browser overlay server has been
    /// written, also during loading: while this constructor still runs, and twice when both
    /// settings are stored.
    explicit TranslationSettings(DefaultsStore& store,
                                 const ApplyOverlaySettings& applyOverlaySettings = {},
                                 QObject* parent = nullptr);

    /// The process-wide instance: the one there is. Nothing inside the libraries asks for it.
    static TranslationSettings& shared();

  private:
    void load(DefaultsStore& store);

    SharedInstance<TranslationSettings> sharedInstance_{*this};
};

/// The values that answer for keys the user never touched, in the order of registration. The shell
/// registers them before the settings object is created.
QList<std::pair<QString, QJsonValue>> defaultSettings();
void registerDefaultSettings(DefaultsStore& store);

} // namespace orv
