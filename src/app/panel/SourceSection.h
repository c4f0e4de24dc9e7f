#pragma once

#include "AudioSourceType.h"

#include <QMap>
#include <QWidget>

class QButtonGroup;
class QLabel;
class QPushButton;
class QStackedWidget;
class QVBoxLayout;

namespace orv {

class AudioManager;
class FieldCombo;
class L10n;
class LevelBar;
class TranslationSettings;

/// What is listened to: the kind of source, the device or the application, and the level.
class SourceSection : public QWidget {
    Q_OBJECT

  public:
    /// The references outlive the section.
    SourceSection(AudioManager& audio, TranslationSettings& settings, L10n& l10n,
                  QWidget* parent = nullptr);

  private:
    void addSourceButtons(QVBoxLayout* layout);
    void addPages(QVBoxLayout* layout);
    QWidget* makeListPage(QLabel* label, FieldCombo* combo, QPushButton* refresh);
    QWidget* makePermissionRow();
    void connectFields();
    void translate();
    void showSource();
    void refreshLists();
    void chooseApp(const QString& bundleId);

    AudioManager& audio_;
    TranslationSettings& settings_;
    L10n& l10n_;
    QLabel* heading_;
    QButtonGroup* sources_;
    QMap<AudioSourceType, QPushButton*> sourceButtons_;
    QStackedWidget* pages_;
    QLabel* deviceLabel_;
    FieldCombo* devices_;
    QPushButton* refreshDevices_;
    QLabel* systemHint_;
    QLabel* appLabel_;
    FieldCombo* apps_;
    QPushButton* refreshApps_;
    QWidget* permission_;
    QLabel* permissionText_;
    QPushButton* checkPermission_;
    QLabel* levelLabel_;
    LevelBar* level_;
};

} // namespace orv
