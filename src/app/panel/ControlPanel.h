#pragma once

#include "AudioNotice.h"

#include <QTimer>
#include <QWidget>

#include <optional>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace orv {

class AudioManager;
class BackendCard;
class EngineCatalogue;
class L10n;
class NoticeCard;
class PanelHeader;
class ResultSection;
class RunRecovery;
class TranslationController;
class TranslationEngine;
class TranslationSettings;
class VmixTracking;

/// What the control panel shows and works on. The references outlive it.
struct PanelEnvironment {
    TranslationSettings& settings;
    const EngineCatalogue& engines;
    AudioManager& audio;
    TranslationEngine& engine;
    TranslationController& controller;
    RunRecovery& recovery;
    L10n& l10n;
    VmixTracking& vmix;
};

/// The control panel: the widget from which everything is chosen, started and stopped. It only
/// shows state and passes on what the user does; choices are persisted as they are made.
class ControlPanel : public QWidget {
    Q_OBJECT

  public:
    explicit ControlPanel(const PanelEnvironment& environment, QWidget* parent = nullptr);

    /// Shows `notice` as a line within the panel that the user can close.
    void showNotice(const AudioNotice& notice);

    /// Without a tray the panel tells that its window is the only way in.
    void setHasTray(bool hasTray);

  Q_SIGNALS:
    /// The user asks for the settings window.
    void settingsWanted();

  private:
    QWidget* makeSections();
    void connectState();
    void addKeys();
    void translate();
    void translateNotice();
    void refreshRun();
    void showStatus();
    void showResult();
    void startOrStop();
    QString text(const QString& key) const;

    PanelEnvironment environment_;
    PanelHeader* header_;
    std::optional<AudioNotice> latestNotice_;
    NoticeCard* notice_ = nullptr;
    BackendCard* backendCard_ = nullptr;
    QWidget* stages_ = nullptr;
    ResultSection* result_ = nullptr;
    QTimer resultDelay_; ///< Whoever waits for a result comes first, the panel a frame later.
    QPushButton* startStop_ = nullptr;
    QLabel* noTray_ = nullptr;
};

} // namespace orv
