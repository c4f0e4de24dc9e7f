#pragma once

#include <QWidget>

class QCheckBox;
class QLabel;

namespace orv {

class AudioManager;
class L10n;
class TranslationSettings;

/// The switches of a run.
class OptionsSection : public QWidget {
    Q_OBJECT

  public:
    /// The references outlive the section.
    OptionsSection(AudioManager& audio, TranslationSettings& settings, L10n& l10n,
                   QWidget* parent = nullptr);

  private:
    void translate();
    void refresh();

    AudioManager& audio_;
    TranslationSettings& settings_;
    L10n& l10n_;
    QCheckBox* pauseDetection_;
    QLabel* pauseState_;
    QCheckBox* overlay_;
    QCheckBox* original_;
    QCheckBox* transcript_;
    QCheckBox* speak_;
};

} // namespace orv
