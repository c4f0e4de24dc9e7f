#pragma once

#include <QWidget>

#include <functional>

class QLabel;
class QPushButton;

namespace orv {

class AudioManager;
class L10n;
class ResultSection;
class TranslationController;
class TranslationEngine;
class TranslationSettings;
class VmixTracking;

/// What the control panel shows and works on. The references outlive it.
struct PanelEnvironment {
    TranslationSettings& settings;
    AudioManager& audio;
    TranslationEngine& engine;
    TranslationController& controller;
    L10n& l10n;
    VmixTracking& vmix;
    /// Closes the panel and opens the settings window.
    std::function<void()> showSettings = {};
};

/// The panel from which everything is chosen, started and stopped. It only shows state and passes
/// on what the user does; choices are persisted as they are made.
class ControlPanel : public QWidget {
    Q_OBJECT

  public:
    explicit ControlPanel(PanelEnvironment environment, QWidget* parent = nullptr);

    /// Shows `text` as a line within the panel that the user can close.
    void showNotice(const QString& text);

  private:
    QWidget* makeHeader();
    QWidget* makeFooter();
    void connectState();
    void translate();
    void refreshRun();
    void startOrStop();

    PanelEnvironment environment_;
    QLabel* title_ = nullptr;
    QLabel* subtitle_ = nullptr;
    ResultSection* result_ = nullptr;
    QPushButton* startStop_ = nullptr;
    QPushButton* settings_ = nullptr;
    QPushButton* quit_ = nullptr;
};

} // namespace orv
