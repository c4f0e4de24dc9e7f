#pragma once

#include "Buttons.h"
#include "Card.h"

#include <QHash>
#include <QString>

class QLabel;
class QPushButton;

namespace orv {

class AudioManager;
class FieldCombo;
class L10n;
class LevelBar;
class SegmentedControl;
class SliderField;
class SwitchRow;
class ToneLabel;
class TranslationSettings;

/// The panel's card with the choice of what is listened to: the kind of source, the device or the
/// application, the level and the gain.
class SourceSection : public Card {
    Q_OBJECT

  public:
    /// The references outlive the section.
    SourceSection(AudioManager& audio, TranslationSettings& settings, L10n& l10n,
                  QWidget* parent = nullptr);

  private:
    void layOut();
    QWidget* makeListPage(FieldCombo* combo, IconButton* refresh);
    QWidget* makePermissionRow();
    QWidget* makeLevelRow();
    void connectFields();
    void translate();
    void showSource();
    void showGain();
    void refreshLists();
    void chooseApp(const QString& bundleId);

    AudioManager& audio_;
    TranslationSettings& settings_;
    L10n& l10n_;
    QLabel* heading_;
    SegmentedControl* sources_;
    FieldCombo* devices_;
    IconButton* refreshDevices_;
    QLabel* deviceHint_;
    QWidget* devicePage_;
    QLabel* systemHint_;
    FieldCombo* apps_;
    QHash<QString, QString> appNames_; ///< By identifier; also of those that play no longer.
    IconButton* refreshApps_;
    QLabel* appHint_;
    QWidget* appPage_;
    QWidget* permission_;
    ToneLabel* permissionText_;
    QPushButton* checkPermission_;
    QLabel* levelLabel_;
    LevelBar* level_;
    SwitchRow* autoGain_;
    SliderField* gain_; ///< Only while the gain does not follow by itself.
};

} // namespace orv
