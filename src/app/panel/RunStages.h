#pragma once

#include "TextLookup.h"

#include <QList>
#include <QWidget>

class QLabel;

namespace orv {

class AudioManager;
class L10n;

/// The stages of a run in one quiet row: sound, speech, sent, answer, each above when it was last
/// reached, so that a user sees whether he is heard. Shown during a run.
class RunStages : public QWidget {
    Q_OBJECT

  public:
    /// The references outlive the line.
    RunStages(AudioManager& audio, L10n& l10n, QWidget* parent = nullptr);

  private:
    void refresh();

    AudioManager& audio_;
    L10n& l10n_;
    QList<QLabel*> stages_; ///< In the order of the sound's way.
};

} // namespace orv
