#pragma once

#include "WhisperModelManager.h"
#include "WhisperModels.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace orv {

class Bindings;
class ToneLabel;

/// One model of the local recognition: its name and size, what it is good for, whether it is on
/// this computer or how far it has come, and a button that fetches or removes it. The reason of a
/// failure is shown by the mouse, and told to assistive programs.
class WhisperModelRow : public QWidget {
    Q_OBJECT

  public:
    WhisperModelRow(const WhisperModel& model, WhisperModelManager& models, Bindings& bindings,
                    QWidget* parent = nullptr);

  private:
    void refresh();
    void showAction();
    void act();

    const WhisperModel model_;
    WhisperModelManager& models_;
    Bindings& bindings_;
    QLabel* size_;
    QLabel* detail_;
    ToneLabel* state_;
    QPushButton* action_;
};

} // namespace orv
